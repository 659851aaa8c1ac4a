// Blocks of text and of a mesh to zlib streams and back: ours is to cost nothing over zlib itself.
// libdeflate (the same format) and Zstandard (its own) show what else there is, all of them at
// their default levels. Each keeps its buffers from call to call.

#include "tacompression/tacompresszip.h"
#include "tacompression/tadecompresszip.h"

#include <benchmark/benchmark.h>
#include <zlib.h>
#if defined(TA_PEER_LIBDEFLATE)
#include <libdeflate.h>
#endif
#if defined(TA_PEER_ZSTD)
#include <zstd.h>
#endif

#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

/// Words of a small language, the frequent ones far more often than the rare ones.
Bytes makeText(std::size_t size)
{
    std::mt19937 random(1);
    std::vector<std::string> words(5000);
    for (std::string& word : words) {
        for (std::uint32_t length = 2 + random() % 8; length != 0; --length) {
            word += static_cast<char>('a' + random() % 26);
        }
    }
    Bytes text;
    text.reserve(size + 16);
    while (text.size() < size) {
        const double uniform = static_cast<double>(random()) / 4294967296.0;
        const auto rank = static_cast<std::size_t>(std::pow(5000.0, uniform)) - 1;
        text.insert(text.end(), words[rank].begin(), words[rank].end());
        text.push_back(random() % 12 == 0 ? '\n' : ' ');
    }
    text.resize(size);
    return text;
}

/// The floats of a wavy surface with some noise, then the corners of its triangles.
Bytes makeMesh(std::size_t size)
{
    std::mt19937 random(1);
    const auto width = static_cast<std::uint32_t>(std::sqrt(static_cast<double>(size) / 36)) + 1;
    Bytes mesh;
    mesh.reserve(std::size_t{ 36 } * width * width);
    const auto append = [&mesh](const auto& value) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(&value);
        mesh.insert(mesh.end(), bytes, bytes + sizeof value);
    };
    for (std::uint32_t i = 0; i < width * width; ++i) {
        const float x = static_cast<float>(i % width) * 0.01f;
        const float y = static_cast<float>(i / width) * 0.01f;
        append(x);
        append(y);
        append(std::sin(x) * std::cos(y) + static_cast<float>(random() % 1024) * 1e-6f);
    }
    for (std::uint32_t i = 0; i + width + 1 < width * width; ++i) {
        for (const std::uint32_t corner :
            { i, i + 1, i + width, i + 1, i + width + 1, i + width }) {
            append(corner);
        }
    }
    mesh.resize(size);
    return mesh;
}

/// What a codec has written: its output, until the next call.
struct SBlock
{
    const unsigned char* data;
    std::size_t size;
};

class TaZIP
{
public:
    SBlock Compress(const Bytes& data)
    {
        m_compress.Compress(data.data(), static_cast<unsigned long>(data.size()));
        return { m_compress.GetOutputBuffer(), m_compress.GetOutputSize() };
    }
    SBlock Decompress(const Bytes& packed, std::size_t size)
    {
        m_decompress.Decompress(packed.data(), static_cast<unsigned long>(packed.size()),
            static_cast<unsigned long>(size));
        return { m_decompress.GetOutputBuffer(), m_decompress.GetOutputSize() };
    }

private:
    TaCompressZIP m_compress;
    TaDecompressZIP m_decompress;
};

/// A buffer that is as large as the largest output so far.
class Buffer
{
public:
    unsigned char* Get(std::size_t size)
    {
        if (m_bytes.size() < size) {
            m_bytes.resize(size);
        }
        return m_bytes.data();
    }

private:
    Bytes m_bytes;
};

class Zlib
{
public:
    SBlock Compress(const Bytes& data)
    {
        uLongf size = compressBound(static_cast<uLong>(data.size()));
        unsigned char* const buffer = m_buffer.Get(size);
        compress(buffer, &size, data.data(), static_cast<uLong>(data.size()));
        return { buffer, size };
    }
    SBlock Decompress(const Bytes& packed, std::size_t expectedSize)
    {
        uLongf size = static_cast<uLongf>(expectedSize);
        unsigned char* const buffer = m_buffer.Get(size);
        uncompress(buffer, &size, packed.data(), static_cast<uLong>(packed.size()));
        return { buffer, size };
    }

private:
    Buffer m_buffer;
};

#if defined(TA_PEER_LIBDEFLATE)
class Libdeflate
{
public:
    SBlock Compress(const Bytes& data)
    {
        const std::size_t bound = libdeflate_zlib_compress_bound(m_compressor.get(), data.size());
        unsigned char* const buffer = m_buffer.Get(bound);
        return { buffer,
            libdeflate_zlib_compress(m_compressor.get(), data.data(), data.size(), buffer, bound) };
    }
    SBlock Decompress(const Bytes& packed, std::size_t size)
    {
        unsigned char* const buffer = m_buffer.Get(size);
        const libdeflate_result result = libdeflate_zlib_decompress(
            m_decompressor.get(), packed.data(), packed.size(), buffer, size, nullptr);
        return { buffer, result == LIBDEFLATE_SUCCESS ? size : 0 };
    }

private:
    struct SFree
    {
        void operator()(libdeflate_compressor* coder) { libdeflate_free_compressor(coder); }
        void operator()(libdeflate_decompressor* coder) { libdeflate_free_decompressor(coder); }
    };

    std::unique_ptr<libdeflate_compressor, SFree> m_compressor{ libdeflate_alloc_compressor(6) };
    std::unique_ptr<libdeflate_decompressor, SFree> m_decompressor{
        libdeflate_alloc_decompressor()
    };
    Buffer m_buffer;
};
#endif

#if defined(TA_PEER_ZSTD)
class Zstd
{
public:
    SBlock Compress(const Bytes& data)
    {
        const std::size_t bound = ZSTD_compressBound(data.size());
        unsigned char* const buffer = m_buffer.Get(bound);
        return { buffer,
            ZSTD_compress(buffer, bound, data.data(), data.size(), ZSTD_CLEVEL_DEFAULT) };
    }
    SBlock Decompress(const Bytes& packed, std::size_t size)
    {
        unsigned char* const buffer = m_buffer.Get(size);
        return { buffer, ZSTD_decompress(buffer, size, packed.data(), packed.size()) };
    }

private:
    Buffer m_buffer;
};
#endif

using MakeData = Bytes (*)(std::size_t);

template <class Codec> void compressBlock(benchmark::State& state, MakeData make)
{
    const Bytes data = make(static_cast<std::size_t>(state.range(0)));
    Codec codec;
    const std::size_t size = codec.Compress(data).size; // its buffer is there from now on
    for (auto step : state) {
        benchmark::DoNotOptimize(codec.Compress(data).data);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
    state.counters["percent"]
        = 100.0 * static_cast<double>(size) / static_cast<double>(data.size());
}

template <class Codec> void decompressBlock(benchmark::State& state, MakeData make)
{
    const Bytes data = make(static_cast<std::size_t>(state.range(0)));
    Codec codec;
    const SBlock block = codec.Compress(data);
    const Bytes packed(block.data, block.data + block.size);
    const SBlock back = codec.Decompress(packed, data.size()); // its buffer is there from now on
    if (back.size != data.size() || std::memcmp(back.data, data.data(), back.size) != 0) {
        state.SkipWithError("the data did not come back");
        return;
    }
    for (auto step : state) {
        benchmark::DoNotOptimize(codec.Decompress(packed, data.size()).data);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

#define ZIP_BENCHMARK(Codec, Direction, function, Data)                                            \
    void BM_##Codec##_##Direction##Data(benchmark::State& state)                                   \
    {                                                                                              \
        function<Codec>(state, make##Data);                                                        \
    }                                                                                              \
    BENCHMARK(BM_##Codec##_##Direction##Data)                                                      \
        ->RangeMultiplier(10)                                                                      \
        ->Range(10'000, 10'000'000)                                                                \
        ->Unit(benchmark::kMillisecond)
#define ZIP_BENCHMARKS(Codec)                                                                      \
    ZIP_BENCHMARK(Codec, Compress, compressBlock, Text);                                           \
    ZIP_BENCHMARK(Codec, Compress, compressBlock, Mesh);                                           \
    ZIP_BENCHMARK(Codec, Decompress, decompressBlock, Text);                                       \
    ZIP_BENCHMARK(Codec, Decompress, decompressBlock, Mesh)

ZIP_BENCHMARKS(TaZIP);
ZIP_BENCHMARKS(Zlib);
#if defined(TA_PEER_LIBDEFLATE)
ZIP_BENCHMARKS(Libdeflate);
#endif
#if defined(TA_PEER_ZSTD)
ZIP_BENCHMARKS(Zstd);
#endif

} // namespace
