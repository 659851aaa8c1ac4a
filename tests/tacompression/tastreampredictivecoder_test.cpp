#include "support/expectfailure.h"
#include "support/memorystreams.h"
#include "tacompression/fullsink.h"
#include "tacompression/tacompressrangecoder.h"
#include "tacompression/tafloatingpointquantizationuniformwithinvalid.h"
#include "tacompression/tastreamreadcompressedfloatingpoint.h"
#include "tacompression/tastreamwritecompressedfloatingpoint.h"

#include <gtest/gtest.h>

#include <functional>
#include <span>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::uint32_t kMost = 0xFFFFFFFF;
constexpr const char16_t* kModelFile
    = u"core/talibraries/tacompression/taprobabilitymodelquasistatic";

struct SPair
{
    std::uint32_t value, prediction;
};

Bytes codePairs(std::uint32_t maxBits, const std::vector<SPair>& pairs)
{
    return WriteToBytes([&](TuStreamWriteBinary& target) {
        TaStreamWritePredictiveCoder coder(target, maxBits, 0);
        for (const auto& [value, prediction] : pairs) {
            coder.WriteValue(value, prediction);
        }
    });
}

// The bytes of these blocks were worked out from the rules of docs/format.md, not by the coder.
TEST(TaStreamPredictiveCoderTest, BlocksHaveTheBytesOfTheStoredForm)
{
    const struct
    {
        std::uint32_t maxBits;
        std::vector<SPair> pairs;
        Bytes bytes; // the coder's version, the range coder's version, the count, the bytes
    } kBlocks[] = {
        { 1, {}, { 0, 0, 0, 0, 0, 0, 0, 0, 4, 0, 0, 0, 0, 0, 0, 0 } },
        // The differences 0, 1, -1, 5 and -5 are the symbols 8, 9, 7, 11 and 5 of 17.
        { 8, { { 7, 7 }, { 8, 7 }, { 6, 7 }, { 12, 7 }, { 2, 7 } },
            { 0, 0, 0, 0, 0, 0, 0, 0, 7, 0, 0, 0, 0x80, 0xD6, 0xCC, 0x45, 0x8D, 0x3F, 0x00 } },
        { 32, { { kMost, 0 }, { 0, kMost }, { 0x80000000, 0 }, { 0, 0x80000000 }, { kMost, 1 } },
            { 0, 0, 0, 0, 0, 0, 0, 0, 27, 0, 0, 0, 0xFF, 0xFE, 0x83, 0xEF, 0xF8, 0x3C, 0x96, 0xFF,
                0xD1, 0xFF, 0x27, 0x70, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x0D, 0x54, 0xFF, 0xCF,
                0xFF, 0x2E, 0x06, 0x00, 0x00 } },
    };
    for (const auto& block : kBlocks) {
        SCOPED_TRACE(block.maxBits);
        EXPECT_EQ(codePairs(block.maxBits, block.pairs), block.bytes);
        EXPECT_TRUE(ReadFromBytes(block.bytes, [&](TuStreamReadBinary& source) {
            TaStreamReadPredictiveCoder coder(source, block.maxBits);
            for (const auto& [value, prediction] : block.pairs) {
                EXPECT_EQ(coder.ReadValue(prediction), value);
            }
        }));
    }
}

TEST(TaStreamPredictiveCoderTest, BitsForWhichThereIsNoModelAreRefused)
{
    codePairs(8191, { { kMost, 0 } }); // the most
    for (const std::uint32_t maxBits : { 0u, 8192u, 0x80000001u }) {
        ExpectFailure<TuExceptionPreconditionViolation>(
            [&] { codePairs(maxBits, {}); }, kModelFile, 55);
    }
}

TEST(TaStreamPredictiveCoderTest, ADifferenceOfMoreBitsIsRefusedAndNotCoded)
{
    const Bytes bytes = WriteToBytes([](TuStreamWriteBinary& target) {
        TaStreamWritePredictiveCoder coder(target, 3, 0);
        for (const SPair& far : { SPair{ 8, 0 }, { 0, 8 }, { 0, kMost } }) {
            ExpectFailure<TuExceptionPreconditionViolation>(
                [&] { coder.WriteValue(far.value, far.prediction); });
            coder.WriteValue(7, 0);
        }
        const std::vector<std::uint32_t> values{ 0, 7, 8, 9 };
        const std::vector<std::uint32_t> predictions{ 7, 0, 16, 9 }; // the third is too far away
        ExpectFailure<TuExceptionPreconditionViolation>(
            [&] { coder.WriteValues(values, predictions); });
    });
    std::vector<SPair> pairs(5, { 7, 0 });
    pairs[3] = { 0, 7 };
    EXPECT_EQ(bytes, codePairs(3, pairs));
}

TEST(TaStreamPredictiveCoderTest, ADamagedDifferenceOfMoreThan32BitsIsRefused)
{
    constexpr std::uint32_t kBits = 64;
    for (const std::uint32_t symbol : { 0u, kBits - 33, kBits + 32, kBits + 33, 2 * kBits }) {
        const Bytes bytes = WriteToBytes([&](TuStreamWriteBinary& target) {
            target.WriteVersion(0);
            TaCompressRangeCoder coder(target, 2 * kBits + 1, 0);
            coder << symbol;
            coder.WriteRawBits(5, 31);
        });
        PlainStreamRead source(bytes);
        TaStreamReadPredictiveCoder coder(source, kBits);
        if (symbol == kBits + 32) {
            EXPECT_EQ(coder.ReadValue(10), 0x8000000Fu); // the most
        } else {
            ExpectFailure<TuExceptionStream>([&] { coder.ReadValue(0); });
        }
    }
}

TEST(TaStreamPredictiveCoderTest, ManyValuesAreTheSameAsOneByOne)
{
    std::vector<std::uint32_t> values(5000); // several rounds of the library's
    std::vector<std::uint32_t> predictions(values.size());
    std::vector<SPair> pairs;
    for (std::uint32_t i = 0; i < values.size(); ++i) {
        values[i] = i * i * 2654435761u >> (i % 30);
        predictions[i] = i == 0 ? 0 : values[i - 1];
        pairs.push_back({ values[i], predictions[i] });
    }
    const std::span<const std::uint32_t> one = std::span(values).first(1);
    const Bytes bytes = WriteToBytes([&](TuStreamWriteBinary& target) {
        TaStreamWritePredictiveCoder coder(target, 32, 16);
        coder.WriteValues(values, predictions);
        ExpectFailure<TuExceptionPreconditionViolation>([&] { coder.WriteValues(values, one); });
    });
    EXPECT_EQ(bytes, codePairs(32, pairs));
    PlainStreamRead source(bytes);
    TaStreamReadPredictiveCoder coder(source, 32);
    ExpectFailure<TuExceptionPreconditionViolation>([&] { coder.ReadValues(one, predictions); });
    coder.ReadValues(predictions, predictions);
    EXPECT_EQ(predictions, values);
}

TEST(TaStreamPredictiveCoderTest, NothingIsWrittenAfterFinishWhetherItFailsOrNot)
{
    const QuietLog log;
    for (const unsigned long long room : { 0u, 4u, 8u, 1000u }) { // versions, count, the rest
        SCOPED_TRACE(room);
        FullSink target(room);
        const int failures = room < 1000 ? 1 : 0;
        {
            TaStreamWritePredictiveCoder coder(target, 4, 4000);
            coder.WriteValue(1, 2);
            try {
                coder.Finish();
                EXPECT_EQ(failures, 0);
            } catch (const TuExceptionStream&) {
                EXPECT_EQ(failures, 1);
            }
            const std::vector<std::uint32_t> values(1);
            const std::function<void()> kRefused[]
                = { [&] { coder.WriteValue(1, 2); }, [&] { coder.WriteValues(values, values); },
                      [&] { static_cast<TuStreamWriteBinary&>(coder) << 1; } };
            for (const auto& refused : kRefused) {
                ExpectFailure<TuExceptionPreconditionViolation>(refused);
            }
        }
        EXPECT_EQ(target.GetFailureCount(), failures);
        EXPECT_EQ(log.TakeText(), "");
    }
    FullSink target(4);
    EXPECT_NO_THROW(TaStreamWritePredictiveCoder(target, 4, 0));
    EXPECT_EQ(log.TakeText().find("a coded block is lost: "), 0u);
}

/// Gives every float the next code, whatever it is.
class CountingQuantization : public TaFloatingPointQuantization
{
public:
    CountingQuantization() { m_bitCount = 8; }
    std::uint32_t Map(float) const override { return m_next++; }
    float Unmap(std::uint32_t code) const override { return static_cast<float>(code); }

private:
    mutable std::uint32_t m_next = 0;
};

TEST(TaStreamCompressedFloatingPointTest, ThePredictionIsMappedFirst)
{
    const CountingQuantization quantization;
    const Bytes bytes = WriteToBytes([&](TuStreamWriteBinary& target) {
        TaStreamWriteCompressedFloatingPoint coder(target, quantization, 0, 0);
        coder.WriteValue(0, 0); // codes 0 and 1
    });
    EXPECT_EQ(bytes, codePairs(8, { { 1, 0 } }));
}

TEST(TaStreamCompressedFloatingPointTest, ManyFloatsAreTheSameAsOneByOne)
{
    const TaFloatingPointQuantizationUniform uniform(-1, 1, 32767.5f);
    const TaFloatingPointQuantizationUniformWithInvalid withInvalid(-1, 1, 127.5f, -9999.125f);
    for (const auto* quantization :
        std::initializer_list<const TaFloatingPointQuantization*>{ &uniform, &withInvalid }) {
        std::vector<float> values;
        std::vector<float> predictions{ 0 };
        for (int i = 0; i < 2000; ++i) {
            values.push_back(i % 17 == 0 ? -9999.125f : static_cast<float>(i * i % 999) * 0.0021f);
            predictions.push_back(quantization->Unmap(quantization->Map(values.back())));
        }
        const std::vector<float> restored(predictions.begin() + 1, predictions.end());
        predictions.pop_back();
        const Bytes single = WriteToBytes([&](TuStreamWriteBinary& target) {
            TaStreamWriteCompressedFloatingPoint coder(target, *quantization, 0, 0);
            for (std::size_t i = 0; i < values.size(); ++i) {
                coder.WriteValue(values[i], predictions[i]);
            }
        });
        const Bytes bytes = WriteToBytes([&](TuStreamWriteBinary& target) {
            TaStreamWriteCompressedFloatingPoint(target, *quantization, 0, 1000)
                .WriteValues(values, predictions);
        });
        EXPECT_EQ(bytes, single);
        PlainStreamRead source(bytes);
        TaStreamReadCompressedFloatingPoint(source, *quantization, 0)
            .ReadValues(predictions, predictions);
        EXPECT_EQ(predictions, restored);
    }
}

TEST(TaStreamCompressedFloatingPointTest, BlocksHaveTheVersionAndArePredictiveOnes)
{
    const TaFloatingPointQuantizationUniform quantization(0, 1, 15);
    const std::vector<float> two(2);
    const auto one = std::span(two).first(1);
    const Bytes bytes = WriteToBytes([&](TuStreamWriteBinary& target) {
        TaStreamWriteCompressedFloatingPoint coder(target, quantization, 2, 0);
        coder.WriteValue(1, 0); // 15 needs all four bits
        ExpectFailure<TuExceptionPreconditionViolation>([&] { coder.WriteValues(two, one); });
    });
    Bytes expected = codePairs(4, { { 15, 0 } });
    expected[0] = 2;
    EXPECT_EQ(bytes, expected);
    PlainStreamRead source(bytes);
    EXPECT_EQ(TaStreamReadCompressedFloatingPoint(source, quantization, 2).ReadValue(0), 1.0f);
    PlainStreamRead again(bytes);
    ExpectFailure<TuExceptionWrongFileVersion>(
        [&] { TaStreamReadCompressedFloatingPoint(again, quantization, 1); });
    PlainStreamRead third(bytes);
    ExpectFailure<TuExceptionWrongFileVersion>([&] { TaStreamReadPredictiveCoder(third, 4); });
}

} // namespace
