#include "support/memorystreams.h"
#include "tacompression/referencerangecoder.h"
#include "tacompression/tacompressrangecoder.h"
#include "tacompression/tadecompressrangecoder.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <memory>
#include <random>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;
using Model = TaProbabilityModelQuasiStatic;

/// Some items of a kind.
struct SRun
{
    enum EKind
    {
        eK_Symbols,
        eK_SymbolsAtOnce,
        eK_RawBits,
        eK_Bytes
    };

    EKind kind;
    std::size_t model;
    std::uint32_t width;
    std::vector<std::uint32_t> values;
};

struct SArguments
{
    std::uint32_t symbolCount, totalBits, targetRescale;
};

std::vector<SArguments> makeArguments()
{
    std::vector<SArguments> result;
    for (const auto& [symbolCount, fewestBits] : { std::pair(2U, 3U), std::pair(3U, 4U),
             std::pair(64U, 8U), std::pair(1000U, 12U), std::pair(16384U, 16U) }) {
        const auto totalBits = *rc::gen::inRange(fewestBits, 17u);
        const auto bound = *rc::gen::element(16u, 2U << totalBits);
        result.push_back({ symbolCount, totalBits, *rc::gen::inRange(1u, bound) });
    }
    return result;
}

std::vector<SRun> makeRuns(const std::vector<SArguments>& models)
{
    std::vector<SRun> runs(*rc::gen::inRange<std::size_t>(0, 20));
    for (SRun& run : runs) {
        run.kind = *rc::gen::element(
            SRun::eK_Symbols, SRun::eK_SymbolsAtOnce, SRun::eK_RawBits, SRun::eK_Bytes);
        run.model = *rc::gen::inRange<std::size_t>(0, models.size());
        run.width = run.kind == SRun::eK_Bytes ? 8 : *rc::gen::inRange(0u, 33u);
        run.values.resize(*rc::gen::inRange<std::size_t>(0, 3000));
        std::mt19937 random(*rc::gen::arbitrary<unsigned int>());
        const bool isSkewed = *rc::gen::arbitrary<bool>();
        const std::uint32_t count = models[run.model].symbolCount;
        for (std::uint32_t& value : run.values) {
            const auto number = static_cast<std::uint32_t>(random());
            value = run.kind >= SRun::eK_RawBits
                ? static_cast<std::uint32_t>(number & ((1ULL << run.width) - 1))
                : number % (isSkewed ? number / count % count + 1 : count);
        }
    }
    return runs;
}

/// With either coder, and its models.
template <class Coder, class AnyModel>
void write(Coder& coder, const SRun& run, const std::vector<std::unique_ptr<AnyModel>>& models)
{
    if (run.kind == SRun::eK_Bytes) {
        const Bytes bytes(run.values.begin(), run.values.end());
        coder.WriteRaw(bytes.data(), bytes.size());
        return;
    }
    if constexpr (std::is_same_v<Coder, TaCompressRangeCoder>) {
        if (run.kind == SRun::eK_SymbolsAtOnce) {
            coder.WriteSymbols(run.values, *models[run.model]);
            return;
        }
    }
    for (const std::uint32_t value : run.values) {
        if (run.kind == SRun::eK_RawBits) {
            coder.WriteRawBits(value, run.width);
        } else {
            coder.WriteSymbol(value, *models[run.model]);
        }
    }
}

std::vector<std::uint32_t> read(TaDecompressRangeCoder& coder, const SRun& run, Model& model)
{
    std::vector<std::uint32_t> values(run.values.size());
    Bytes bytes(values.size());
    switch (run.kind) {
    case SRun::eK_Symbols:
        coder.ReadSymbols(values, model);
        break;
    case SRun::eK_Bytes:
        coder.ReadExactly(bytes.data(), bytes.size());
        values.assign(bytes.begin(), bytes.end());
        break;
    default:
        for (std::uint32_t& value : values) {
            value = run.kind == SRun::eK_RawBits ? coder.ReadRawBits(run.width)
                                                 : coder.ReadSymbol(model);
        }
    }
    return values;
}

template <class AnyModel>
std::vector<std::unique_ptr<AnyModel>> makeModels(const std::vector<SArguments>& arguments)
{
    std::vector<std::unique_ptr<AnyModel>> models;
    for (const auto& [symbolCount, totalBits, targetRescale] : arguments) {
        models.push_back(std::make_unique<AnyModel>(symbolCount, totalBits, targetRescale));
    }
    return models;
}

RC_GTEST_PROP(TaRangeCoderProperties, AnyItemsHaveTheBytesOfThePlainCoderAndComeBack, ())
{
    const auto arguments = makeArguments();
    const auto runs = makeRuns(arguments);
    const auto models = makeModels<Model>(arguments);
    const auto referenceModels = makeModels<ReferenceModel>(arguments);
    ReferenceEncoder reference;
    const Bytes bytes = WriteToBytes([&](TuStreamWriteBinary& target) {
        TaCompressRangeCoder coder(target, 2, *rc::gen::inRange(0u, 100'000u));
        for (const SRun& run : runs) {
            write(coder, run, models);
            write(reference, run, referenceModels);
        }
    });
    RC_ASSERT(bytes == reference.Finish());
    const auto fresh = makeModels<Model>(arguments);
    RC_ASSERT(ReadFromBytes(bytes, [&](TuStreamReadBinary& source) {
        TaDecompressRangeCoder coder(source, 2);
        for (const SRun& run : runs) { // symbols at once where they were written one by one
            RC_ASSERT(read(coder, run, *fresh[run.model]) == run.values);
        }
    }));
}

} // namespace
