#include "groundwork/tuexceptions.h"
#include "support/memorystreams.h"
#include "tacompression/tacompressrangecoder.h"
#include "tacompression/tadecompressrangecoder.h"

#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::size_t kMostItems = 3000;
constexpr std::uint32_t kOwnSymbolCount = 100;

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

struct SModels
{
    // Of few and many symbols, which adapt fast and slowly.
    TuSmartPointer<TaProbabilityModelQuasiStatic> models[5]
        = { TuMake<TaProbabilityModelQuasiStatic>(2u, 3u, 1u),
              TuMake<TaProbabilityModelQuasiStatic>(3u, 16u, 131071u),
              TuMake<TaProbabilityModelQuasiStatic>(64u, 8u, 31u),
              TuMake<TaProbabilityModelQuasiStatic>(1000u, 12u, 1024u),
              TuMake<TaProbabilityModelQuasiStatic>(2000u, 16u, 1024u) };
};

/// The lowest three bits of an operation say what it is, the others how wide or large.
std::uint32_t readItem(TaDecompressRangeCoder& coder, const SModels& own, unsigned char operation)
{
    const std::uint32_t kind = operation & 7;
    unsigned char byte = 0;
    if (kind < 5) {
        TaProbabilityModelQuasiStatic& model = *own.models[kind];
        const std::uint32_t symbol = coder.ReadSymbol(model);
        require(symbol < model.GetSymbolCount());
        return symbol;
    }
    if (kind == 5) {
        return coder.ReadRawBits((operation >> 3) + 1);
    }
    if (kind == 6) {
        coder.ReadRaw(&byte, 1);
    } else {
        coder >> byte;
        require(byte < kOwnSymbolCount);
    }
    return byte;
}

/// Returns what a reader then finds.
std::uint32_t writeItem(
    TaCompressRangeCoder& coder, const SModels& own, unsigned char operation, std::uint32_t value)
{
    const std::uint32_t kind = operation & 7;
    const auto byte = static_cast<unsigned char>(value);
    if (kind < 5) {
        coder.WriteSymbol(value, *own.models[kind]);
    } else if (kind == 5) {
        const std::uint32_t width = (operation >> 3) + 1;
        coder.WriteRawBits(value, width); // damaged data give more bits, which it leaves out
        return width == 32 ? value : value & ((1U << width) - 1);
    } else if (kind == 6) {
        coder.WriteRaw(&byte, 1);
    } else {
        coder << byte;
    }
    return value;
}

} // namespace

/// The first byte says how many operations follow, which are repeated; the rest is the block. What
/// could be read is written, and must come back.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0 || data[0] == 0 || size <= data[0]) {
        return 0;
    }
    const auto operations = std::span(data + 1, data[0]);
    const Bytes block(data + 1 + data[0], data + size);
    std::vector<std::uint32_t> values;
    try {
        PlainStreamRead source(block);
        TaDecompressRangeCoder coder(source, kOwnSymbolCount);
        const SModels models;
        while (values.size() < kMostItems) {
            const unsigned char operation = operations[values.size() % operations.size()];
            values.push_back(readItem(coder, models, operation));
        }
    } catch (const TuException&) { // how hostile input is refused; anything else is a fault
    }

    const Bytes written = WriteToBytes([&](TuStreamWriteBinary& target) {
        TaCompressRangeCoder coder(target, kOwnSymbolCount, 0);
        const SModels models;
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] = writeItem(coder, models, operations[i % operations.size()], values[i]);
        }
    });
    require(ReadFromBytes(written, [&](TuStreamReadBinary& source) {
        TaDecompressRangeCoder coder(source, kOwnSymbolCount);
        const SModels models;
        for (std::size_t i = 0; i < values.size(); ++i) {
            require(readItem(coder, models, operations[i % operations.size()]) == values[i]);
        }
    }));
    return 0;
}
