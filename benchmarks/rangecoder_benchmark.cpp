// Symbols of a skewed source: the range coder with an adaptive model beside general codecs, which
// get the same symbols as bytes, and beside the entropy. The counter "bytes" is per symbol.

#include "bytecodecs.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tabase/tastreamwritebinarybuffer.h"
#include "tacompression/tacompressrangecoder.h"
#include "tacompression/tadecompressrangecoder.h"
#include "tacompression/talocalcopy.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr std::uint32_t kSymbolCount = 64;

struct SSymbols
{
    std::vector<std::uint32_t> numbers;
    std::vector<unsigned char> bytes;
};

/// Each symbol is e^(1/8) times as frequent as the next. The last size stays, so that it is made
/// once and not once a measurement.
const SSymbols& getSymbols(std::int64_t count)
{
    static SSymbols s_symbols;
    if (std::ssize(s_symbols.numbers) != count) {
        constexpr double kDecay = 8;
        std::array<double, kSymbolCount> weights;
        for (std::uint32_t symbol = 0; symbol < kSymbolCount; ++symbol) {
            weights[symbol] = std::exp(-static_cast<double>(symbol) / kDecay);
        }
        std::mt19937 random(1);
        std::discrete_distribution<std::uint32_t> draw(weights.begin(), weights.end());
        s_symbols = {};
        s_symbols.numbers.resize(static_cast<std::size_t>(count));
        for (std::uint32_t& number : s_symbols.numbers) {
            number = draw(random);
        }
        s_symbols.bytes.assign(s_symbols.numbers.begin(), s_symbols.numbers.end());
    }
    return s_symbols;
}

void setCounters(benchmark::State& state, std::size_t encodedSize)
{
    const auto count = static_cast<double>(state.range(0));
    state.counters["bytes"] = static_cast<double>(encodedSize) / count;
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void encodeBulk(std::span<const std::uint32_t> symbols, TuStreamWriteBinary& stream)
{
    TaCompressRangeCoder coder(stream, kSymbolCount, static_cast<std::uint32_t>(symbols.size()));
    coder.WriteSymbols(symbols);
    coder.Finish();
}

void encodeSingle(std::span<const std::uint32_t> symbols, TuStreamWriteBinary& stream)
{
    TaCompressRangeCoder coder(stream, kSymbolCount, static_cast<std::uint32_t>(symbols.size()));
    for (const std::uint32_t symbol : symbols) {
        coder << symbol;
    }
    coder.Finish();
}

void decodeBulk(TuStreamReadBinary& stream, std::span<std::uint32_t> symbols)
{
    TaDecompressRangeCoder coder(stream, kSymbolCount);
    coder.ReadSymbols(symbols);
}

void decodeSingle(TuStreamReadBinary& stream, std::span<std::uint32_t> symbols)
{
    TaDecompressRangeCoder coder(stream, kSymbolCount);
    for (std::uint32_t& symbol : symbols) {
        coder >> symbol;
    }
}

template <auto encode> void BM_Encode(benchmark::State& state)
{
    const SSymbols& symbols = getSymbols(state.range(0));
    TaStreamWriteBinaryBuffer stream;
    for (auto _ : state) {
        stream.Clear();
        encode(symbols.numbers, stream);
    }
    setCounters(state, stream.GetSize());
}

template <auto decode> void BM_Decode(benchmark::State& state)
{
    const SSymbols& symbols = getSymbols(state.range(0));
    TaStreamWriteBinaryBuffer encoded;
    encodeBulk(symbols.numbers, encoded);
    std::vector<std::uint32_t> decoded(symbols.numbers.size());
    for (auto _ : state) {
        TaStreamReadBinaryBuffer stream(encoded);
        decode(stream, decoded);
    }
    if (decoded != symbols.numbers) {
        state.SkipWithError("other symbols came back");
    }
    setCounters(state, encoded.GetSize());
}

template <class Codec> void BM_EncodeBytes(benchmark::State& state)
{
    const SSymbols& symbols = getSymbols(state.range(0));
    EncodedBytes encoded;
    for (auto _ : state) {
        Codec::Encode(symbols.bytes, encoded);
    }
    setCounters(state, encoded.GetSize());
}

template <class Codec> void BM_DecodeBytes(benchmark::State& state)
{
    const SSymbols& symbols = getSymbols(state.range(0));
    EncodedBytes encoded;
    Codec::Encode(symbols.bytes, encoded);
    std::vector<unsigned char> decoded(symbols.bytes.size());
    for (auto _ : state) {
        Codec::Decode(encoded.Get(), decoded);
    }
    if (decoded != symbols.bytes) {
        state.SkipWithError("other symbols came back");
    }
    setCounters(state, encoded.GetSize());
}

/// The limit of the size: what a coder needs that knows the frequencies from the start. The time is
/// that of counting.
void BM_Entropy_Encode(benchmark::State& state)
{
    const SSymbols& symbols = getSymbols(state.range(0));
    double bits = 0;
    for (auto _ : state) {
        std::array<std::uint32_t, kSymbolCount> counts{};
        for (const unsigned char symbol : symbols.bytes) {
            ++counts[symbol];
        }
        bits = 0;
        for (const std::uint32_t count : counts) {
            if (count != 0) {
                bits += count * std::log2(static_cast<double>(state.range(0)) / count);
            }
        }
    }
    setCounters(state, static_cast<std::size_t>(std::ceil(bits / 8)));
}

/// As little of a model as the loop over symbols needs, with intervals of one length. It is there
/// with and without the comparison of each symbol to the count, for what that costs.
template <bool kIsChecked> class MinimalModel
{
public:
    MinimalModel()
    {
        m_newFreq.fill(kTotal / kSymbolCount);
        update();
    }

    void GetFrequencies(std::uint32_t symbol, std::uint32_t& low, std::uint32_t& frequency)
    {
        if constexpr (kIsChecked) {
            if (symbol >= m_symbolCount) [[unlikely]] {
                throwUnknownSymbol(symbol);
            }
        }
        low = m_cumFreq[symbol];
        frequency = m_cumFreq[symbol + 1] - low;
        m_newFreq[symbol] += m_increment;
        if (--m_left == 0) [[unlikely]] {
            update();
        }
    }

    static constexpr std::uint32_t kTotalBits = 16;

private:
    static constexpr std::uint32_t kTotal = 1U << kTotalBits;
    static constexpr std::uint32_t kInterval = 1024;

    [[noreturn, gnu::noinline]] static void throwUnknownSymbol(std::uint32_t symbol)
    {
        throw std::out_of_range("no symbol: " + std::to_string(symbol));
    }

    /// The increments of an interval leave the last symbol what they do not use up.
    [[gnu::noinline]] void update()
    {
        std::uint32_t cumulative = 0;
        std::uint32_t kept = 0;
        for (std::uint32_t symbol = 0; symbol < kSymbolCount; ++symbol) {
            m_cumFreq[symbol] = cumulative;
            cumulative += m_newFreq[symbol];
            m_newFreq[symbol] = std::max(m_newFreq[symbol] >> 1, 1U);
            kept += m_newFreq[symbol];
        }
        m_cumFreq[kSymbolCount] = kTotal;
        m_increment = (kTotal - kept) / kInterval;
        m_newFreq[kSymbolCount - 1] += (kTotal - kept) % kInterval;
        m_left = kInterval;
    }

    std::uint32_t m_symbolCount = kSymbolCount;
    std::uint32_t m_increment = 0;
    std::uint32_t m_left = 0;
    std::array<std::uint32_t, kSymbolCount + 1> m_cumFreq;
    std::array<std::uint32_t, kSymbolCount> m_newFreq;
};

template <bool kIsChecked> void BM_MinimalModel(benchmark::State& state)
{
    const SSymbols& symbols = getSymbols(state.range(0));
    EncodedBytes encoded;
    for (auto _ : state) {
        MinimalModel<kIsChecked> model;
        benchmark::DoNotOptimize(model); // the count of symbols is no constant
        TaRangeEncoder encoder;
        unsigned char* const begin
            = encoded.Provide(symbols.numbers.size() + TaRangeEncoder::kItemRoom).data();
        encoder.next = begin;
        for (const std::uint32_t symbol : symbols.numbers) {
            std::uint32_t cumulative = 0;
            std::uint32_t frequency = 0;
            model.GetFrequencies(symbol, cumulative, frequency);
            encoder.Encode(cumulative, frequency, model.kTotalBits);
        }
        encoded.SetSize(static_cast<std::size_t>(encoder.next - begin));
    }
    setCounters(state, encoded.GetSize());
}

#define RANGE_CODER_BENCHMARK(name, ...)                                                           \
    BENCHMARK_TEMPLATE(__VA_ARGS__)                                                                \
        ->Name("BM_" #name)                                                                        \
        ->Unit(benchmark::kMillisecond)                                                            \
        ->Arg(10'000)                                                                              \
        ->Arg(1'000'000)                                                                           \
        ->Arg(10'000'000)

RANGE_CODER_BENCHMARK(TaRangeCoder_EncodeBulk, BM_Encode, encodeBulk)->Arg(100'000'000);
RANGE_CODER_BENCHMARK(TaRangeCoder_Encode, BM_Encode, encodeSingle);
RANGE_CODER_BENCHMARK(TaRangeCoder_DecodeBulk, BM_Decode, decodeBulk)->Arg(100'000'000);
RANGE_CODER_BENCHMARK(TaRangeCoder_Decode, BM_Decode, decodeSingle);
RANGE_CODER_BENCHMARK(MinimalModelChecked_Encode, BM_MinimalModel, true);
RANGE_CODER_BENCHMARK(MinimalModel_Encode, BM_MinimalModel, false);
BENCHMARK(BM_Entropy_Encode)->Arg(10'000)->Arg(1'000'000)->Arg(10'000'000);

#if defined(TA_PEER_LZMA)
RANGE_CODER_BENCHMARK(Lzma0_Encode, BM_EncodeBytes, Lzma0);
RANGE_CODER_BENCHMARK(Lzma0_Decode, BM_DecodeBytes, Lzma0);
#endif
#if defined(TA_PEER_ZLIB)
RANGE_CODER_BENCHMARK(Zlib6_Encode, BM_EncodeBytes, Zlib6);
RANGE_CODER_BENCHMARK(Zlib6_Decode, BM_DecodeBytes, Zlib6);
#endif
#if defined(TA_PEER_ZSTD)
RANGE_CODER_BENCHMARK(Zstd3_Encode, BM_EncodeBytes, Zstd3);
RANGE_CODER_BENCHMARK(Zstd3_Decode, BM_DecodeBytes, Zstd3);
#endif

} // namespace
