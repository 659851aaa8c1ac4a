// Reading 50 MB of numbers as text, from a file and from memory.

#include "tabase/tastreamreadasciifile.h"
#include "tabase/tastreamreadasciistring.h"

#include <benchmark/benchmark.h>
#if defined(TA_PEER_FASTFLOAT)
#include <fast_float/fast_float.h>
#endif

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <sstream>
#include <string>

namespace {

/// Numbers as files of meshes and measurements hold them: half with up to six decimals, a fifth
/// with all digits of a double, the rest whole; separated by blanks and line ends.
struct SText
{
    std::string bytes;
    int count = 0;

    explicit SText(std::size_t size)
    {
        constexpr unsigned int kSeed = 20261121;
        std::mt19937 random(kSeed);
        std::uniform_real_distribution<double> real(-100.0, 100.0);
        std::uniform_int_distribution<int> whole(-100000, 100000);
        bytes.reserve(size + 32);
        while (bytes.size() < size) {
            char word[32];
            char* end = word;
            const auto kind = random() % 10;
            if (kind < 5) {
                const double rounded
                    = static_cast<double>(static_cast<long long>(real(random) * 1e6)) / 1e6;
                end = std::to_chars(word, std::end(word), rounded).ptr;
            } else if (kind < 7) {
                end = std::to_chars(word, std::end(word), real(random) / 100).ptr;
            } else {
                end = std::to_chars(word, std::end(word), whole(random)).ptr;
            }
            bytes.append(word, end);
            bytes += ++count % 3 == 0 ? '\n' : ' ';
        }
    }
};

const SText& textOf(const benchmark::State& state)
{
    static std::map<std::size_t, SText> s_texts; // by size: repetitions of all sizes are mixed
    const auto size = static_cast<std::size_t>(state.range(0));
    return s_texts.try_emplace(size, size).first->second;
}

/// The text as a file, gone at the end.
class TextFile
{
public:
    explicit TextFile(const SText& text)
        : m_path(std::filesystem::temp_directory_path() / "tabase-textreader-benchmark.txt")
    {
        std::ofstream(m_path, std::ios::binary) << text.bytes;
    }
    ~TextFile()
    {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    std::string GetPath() const { return m_path.string(); }

private:
    std::filesystem::path m_path;
};

/// `next` reads one number into a double.
template <class Next> void sumUp(int count, Next&& next)
{
    double sum = 0.0;
    double value = 0.0;
    for (int i = 0; i < count; ++i) {
        next(value);
        sum += value;
    }
    benchmark::DoNotOptimize(sum);
}

void countBytes(benchmark::State& state)
{
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void BM_TaStreamReadASCII_File(benchmark::State& state)
{
    const SText& text = textOf(state);
    const TextFile file(text);
    const CString path = CString::FromUtf8(file.GetPath());
    for (auto _ : state) {
        TaStreamReadASCIIFile stream(path);
        sumUp(text.count, [&](double& value) { stream >> value; });
    }
    countBytes(state);
}

void BM_fscanf_File(benchmark::State& state)
{
    const SText& text = textOf(state);
    const TextFile file(text);
    for (auto _ : state) {
        std::FILE* stream = std::fopen(file.GetPath().c_str(), "r");
        sumUp(text.count, [&](double& value) {
            if (std::fscanf(stream, "%lf", &value) != 1) {
                state.SkipWithError("no number");
            }
        });
        std::fclose(stream);
    }
    countBytes(state);
}

void BM_ifstream_File(benchmark::State& state)
{
    const SText& text = textOf(state);
    const TextFile file(text);
    for (auto _ : state) {
        std::ifstream stream(file.GetPath());
        sumUp(text.count, [&](double& value) { stream >> value; });
    }
    countBytes(state);
}

void BM_TaStreamReadASCII_Memory(benchmark::State& state)
{
    const SText& text = textOf(state);
    const CStringA content(text.bytes);
    for (auto _ : state) {
        TaStreamReadASCIIString stream(content);
        sumUp(text.count, [&](double& value) { stream >> value; });
    }
    countBytes(state);
}

void BM_istringstream_Memory(benchmark::State& state)
{
    const SText& text = textOf(state);
    std::istringstream stream(text.bytes);
    for (auto _ : state) {
        stream.clear();
        stream.seekg(0);
        sumUp(text.count, [&](double& value) { stream >> value; });
    }
    countBytes(state);
}

#if defined(TA_PEER_FASTFLOAT)
/// The limit: a loop over a buffer that checks nothing.
void BM_FastFloat_Memory(benchmark::State& state)
{
    const SText& text = textOf(state);
    for (auto _ : state) {
        const char* next = text.bytes.data();
        const char* end = next + text.bytes.size();
        sumUp(text.count,
            [&](double& value) { next = fast_float::from_chars(next, end, value).ptr + 1; });
    }
    countBytes(state);
}
#endif

#define TA_READER_BENCHMARK(function)                                                              \
    BENCHMARK(function)->Name(#function "/quick")->Arg(10'000);                                    \
    BENCHMARK(function)                                                                            \
        ->Name(#function "/full")                                                                  \
        ->Arg(5'000'000)                                                                           \
        ->Arg(50'000'000)                                                                          \
        ->Arg(500'000'000)                                                                         \
        ->Unit(benchmark::kMillisecond)

TA_READER_BENCHMARK(BM_TaStreamReadASCII_File);
TA_READER_BENCHMARK(BM_fscanf_File);
TA_READER_BENCHMARK(BM_ifstream_File);
TA_READER_BENCHMARK(BM_TaStreamReadASCII_Memory);
TA_READER_BENCHMARK(BM_istringstream_Memory);
#if defined(TA_PEER_FASTFLOAT)
TA_READER_BENCHMARK(BM_FastFloat_Memory);
#endif

} // namespace
