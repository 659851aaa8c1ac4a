#include "groundwork/tuexceptions.h"
#include "support/memorystreams.h"
#include "tacompression/referencerangecoder.h"
#include "tacompression/tacompressrangecoder.h"
#include "tacompression/tadecompressrangecoder.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <memory>
#include <optional>
#include <random>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;
using Model = TaProbabilityModelQuasiStatic;
template <class AnyModel> using Models = std::vector<std::unique_ptr<AnyModel>>;

struct SArguments
{
    std::uint32_t symbolCount, totalBits, targetRescale;
};

/// Some items of a kind, by one call or by one each.
struct SRun
{
    enum EKind
    {
        eK_Symbols,
        eK_RawBits,
        eK_Bytes
    };

    EKind kind;
    std::size_t model;
    std::uint32_t width;
    bool isBulk;
    std::vector<std::uint32_t> values;
};

std::vector<SArguments> makeArguments()
{
    std::vector<SArguments> result;
    for (const std::uint32_t symbolCount : { 2U, 3U, 64U, 1000U, 16384U }) {
        std::uint32_t fewestBits = 3;
        while ((1U << fewestBits) < 4 * symbolCount) {
            ++fewestBits;
        }
        const auto totalBits = *rc::gen::inRange(fewestBits, 17u);
        const auto bound = 2U << totalBits;
        const auto targetRescale
            = *rc::gen::oneOf(rc::gen::inRange(1u, 16u), rc::gen::inRange(1u, bound));
        result.push_back({ symbolCount, totalBits, std::min(targetRescale, bound - 1) });
    }
    return result;
}

std::vector<SRun> makeRuns(const std::vector<SArguments>& models)
{
    std::vector<SRun> runs(*rc::gen::inRange<std::size_t>(0, 20));
    for (SRun& run : runs) {
        run.kind = *rc::gen::element(SRun::eK_Symbols, SRun::eK_RawBits, SRun::eK_Bytes);
        run.model = *rc::gen::inRange<std::size_t>(0, models.size());
        run.width = *rc::gen::inRange(0u, 33u);
        run.isBulk = *rc::gen::arbitrary<bool>();
        run.values.resize(*rc::gen::inRange<std::size_t>(0, 3000));
        std::mt19937 random(*rc::gen::arbitrary<unsigned int>());
        const bool isSkewed = *rc::gen::arbitrary<bool>();
        const std::uint32_t count = models[run.model].symbolCount;
        for (std::uint32_t& value : run.values) {
            const auto number = static_cast<std::uint32_t>(random());
            switch (run.kind) {
            case SRun::eK_Symbols:
                value = isSkewed ? number % (number / count % count + 1) : number % count;
                break;
            case SRun::eK_RawBits: // of all widths
                value = run.width == 0 ? 0 : number >> (32 - run.width);
                break;
            case SRun::eK_Bytes:
                value = number & 0xFF;
            }
        }
    }
    return runs;
}

template <class AnyModel> Models<AnyModel> makeModels(const std::vector<SArguments>& arguments)
{
    Models<AnyModel> models;
    for (const SArguments& model : arguments) {
        models.push_back(
            std::make_unique<AnyModel>(model.symbolCount, model.totalBits, model.targetRescale));
    }
    return models;
}

/// With either coder, and its models.
template <class Coder, class AnyModel>
void writeItem(Coder& coder, const SRun& run, std::uint32_t value, const Models<AnyModel>& models)
{
    const auto byte = static_cast<unsigned char>(value);
    switch (run.kind) {
    case SRun::eK_Symbols:
        coder.WriteSymbol(value, *models[run.model]);
        break;
    case SRun::eK_RawBits:
        coder.WriteRawBits(value, run.width);
        break;
    case SRun::eK_Bytes:
        coder.WriteRaw(&byte, 1);
    }
}

template <class Coder, class AnyModel>
std::uint32_t readItem(Coder& coder, const SRun& run, const Models<AnyModel>& models)
{
    unsigned char byte = 0;
    switch (run.kind) {
    case SRun::eK_Symbols:
        return coder.ReadSymbol(*models[run.model]);
    case SRun::eK_RawBits:
        return coder.ReadRawBits(run.width);
    case SRun::eK_Bytes:
        coder.ReadRaw(&byte, 1);
    }
    return byte;
}

void write(TaCompressRangeCoder& coder, const SRun& run, const Models<Model>& models)
{
    if (run.kind == SRun::eK_Symbols && run.isBulk) {
        coder.WriteSymbols(run.values, *models[run.model]);
    } else if (run.kind == SRun::eK_Bytes && run.isBulk) {
        const Bytes bytes(run.values.begin(), run.values.end());
        coder.WriteRaw(bytes.data(), bytes.size());
    } else {
        for (const std::uint32_t value : run.values) {
            writeItem(coder, run, value, models);
        }
    }
}

std::vector<std::uint32_t> read(
    TaDecompressRangeCoder& coder, const SRun& run, const Models<Model>& models)
{
    std::vector<std::uint32_t> values(run.values.size());
    if (run.kind == SRun::eK_Symbols && run.isBulk) {
        coder.ReadSymbols(values, *models[run.model]);
    } else if (run.kind == SRun::eK_Bytes && run.isBulk) {
        Bytes bytes(values.size());
        coder.ReadExactly(bytes.data(), bytes.size());
        values.assign(bytes.begin(), bytes.end());
    } else {
        for (std::uint32_t& value : values) {
            value = readItem(coder, run, models);
        }
    }
    return values;
}

Bytes makeReferenceBlock(const std::vector<SArguments>& arguments, const std::vector<SRun>& runs)
{
    const auto models = makeModels<ReferenceModel>(arguments);
    ReferenceEncoder coder;
    for (const SRun& run : runs) {
        for (const std::uint32_t value : run.values) {
            writeItem(coder, run, value, models);
        }
    }
    return coder.Finish();
}

RC_GTEST_PROP(TaRangeCoderProperties, AnyItemsHaveTheBytesOfThePlainCoderAndComeBack, ())
{
    const auto arguments = makeArguments();
    auto runs = makeRuns(arguments);
    const auto models = makeModels<Model>(arguments);
    Bytes bytes = WriteToBytes([&](TuStreamWriteBinary& target) {
        TaCompressRangeCoder coder(target, 2, *rc::gen::inRange(0u, 100'000u));
        for (const SRun& run : runs) {
            write(coder, run, models);
        }
    });
    RC_ASSERT(bytes == makeReferenceBlock(arguments, runs));

    bytes.insert(bytes.end(), 8, 0xFF); // which belong to somebody else
    PlainStreamRead source(bytes);
    const auto fresh = makeModels<Model>(arguments);
    TaDecompressRangeCoder coder(source, 2);
    for (SRun& run : runs) {
        run.isBulk = *rc::gen::arbitrary<bool>(); // however it was written
        RC_ASSERT(read(coder, run, fresh) == run.values);
    }
    Bytes behind(9);
    RC_ASSERT(source.ReadBuffer(behind.data(), 9) == 8u);
}

RC_GTEST_PROP(TaRangeCoderProperties, DamagedBytesAreReadAsByThePlainCoderUpToTheSameEnd, ())
{
    const auto arguments = makeArguments();
    const auto runs = makeRuns(arguments);
    Bytes block = makeReferenceBlock(arguments, runs);
    constexpr std::size_t kHeader = 8;
    block.resize(*rc::gen::inRange<std::size_t>(kHeader + 4, block.size() + 1));
    for (auto flips = *rc::gen::inRange(0, 4); flips > 0; --flips) {
        block[*rc::gen::inRange(kHeader, block.size())] ^= *rc::gen::inRange<unsigned char>(1, 255);
    }
    for (std::size_t i = 0; i < 4; ++i) {
        block[4 + i] = static_cast<unsigned char>((block.size() - kHeader) >> (8 * i));
    }

    ReferenceDecoder expected(Bytes(block.begin() + kHeader, block.end()));
    const auto expectedModels = makeModels<ReferenceModel>(arguments);
    const auto models = makeModels<Model>(arguments);
    std::optional<unsigned int> end;
    ReadFromBytes(block, [&](TuStreamReadBinary& source) {
        TaDecompressRangeCoder coder(source, 2);
        for (const SRun& run : runs) {
            for (std::size_t i = 0; i < run.values.size() && !end; ++i) {
                std::uint32_t value = 0;
                try {
                    value = readItem(expected, run, expectedModels);
                } catch (const ReferenceDecoder::SExhausted& exhausted) {
                    end = exhausted.line;
                }
                try {
                    const std::uint32_t found = readItem(coder, run, models);
                    RC_ASSERT(!end);
                    RC_ASSERT(found == value);
                } catch (const TuExceptionStream& failure) {
                    RC_ASSERT(end == failure.GetLine());
                }
            }
        }
    });
}

} // namespace
