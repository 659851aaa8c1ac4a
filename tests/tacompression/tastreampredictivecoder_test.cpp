#include "support/expectfailure.h"
#include "support/memorystreams.h"
#include "tacompression/fullsink.h"
#include "tacompression/tacompressrangecoder.h"
#include "tacompression/tafloatingpointquantizationuniformwithinvalid.h"
#include "tacompression/tastreamreadcompressedfloatingpoint.h"
#include "tacompression/tastreamwritecompressedfloatingpoint.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>
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

// The bytes of these blocks were worked out by hand.
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
    const Bytes bytes = codePairs(8191, { { kMost, 0 } }); // the most
    for (const std::uint32_t maxBits :
        { 0u, 8192u, 0x7FFFFFFFu, 0x80000000u, 0x80000001u, kMost }) {
        SCOPED_TRACE(maxBits);
        PlainStreamWrite target;
        ExpectFailure<TuExceptionPreconditionViolation>(
            [&] { TaStreamWritePredictiveCoder(target, maxBits, 0); }, kModelFile, 55);
        EXPECT_TRUE(target.bytes.empty());
        PlainStreamRead source(bytes);
        ExpectFailure<TuExceptionPreconditionViolation>(
            [&] { TaStreamReadPredictiveCoder(source, maxBits); }, kModelFile, 55);
    }
}

TEST(TaStreamPredictiveCoderTest, ADifferenceOfMoreBitsIsRefusedAndNotCoded)
{
    const Bytes bytes = WriteToBytes([](TuStreamWriteBinary& target) {
        TaStreamWritePredictiveCoder coder(target, 3, 0);
        for (const SPair& far :
            { SPair{ 8, 0 }, { 0, 8 }, { 15, 0 }, { kMost, 0 }, { 0, kMost }, { 0x80000000, 0 } }) {
            ExpectFailure<TuExceptionPreconditionViolation>(
                [&] { coder.WriteValue(far.value, far.prediction); });
            coder.WriteValue(7, 0);
        }
        const std::vector<std::uint32_t> values{ 0, 7, 8, 9 };
        const std::vector<std::uint32_t> predictions{ 7, 0, 16, 9 }; // the third is too far away
        ExpectFailure<TuExceptionPreconditionViolation>(
            [&] { coder.WriteValues(values, predictions); });
    });
    std::vector<SPair> pairs(8, { 7, 0 });
    pairs[6] = { 0, 7 };
    EXPECT_EQ(bytes, codePairs(3, pairs));
}

TEST(TaStreamPredictiveCoderTest, ADamagedDifferenceOfMoreThan32BitsIsRefused)
{
    constexpr std::uint32_t kBits = 64;
    const auto codeSymbol = [](std::uint32_t symbol) {
        return WriteToBytes([&](TuStreamWriteBinary& target) {
            target.WriteVersion(0);
            TaCompressRangeCoder coder(target, 2 * kBits + 1, 0);
            coder << symbol;
            coder.WriteRawBits(5, 31);
        });
    };
    for (const std::uint32_t symbol : { 0u, kBits - 33, kBits + 33, 2 * kBits }) {
        const Bytes bytes = codeSymbol(symbol);
        PlainStreamRead source(bytes);
        TaStreamReadPredictiveCoder coder(source, kBits);
        std::vector<std::uint32_t> values(1);
        ExpectFailure<TuExceptionStream>([&] { coder.ReadValues(values, values); });
        PlainStreamRead again(bytes);
        TaStreamReadPredictiveCoder other(again, kBits);
        ExpectFailure<TuExceptionStream>([&] { other.ReadValue(0); });
    }
    const Bytes most = codeSymbol(kBits + 32);
    PlainStreamRead source(most);
    EXPECT_EQ(TaStreamReadPredictiveCoder(source, kBits).ReadValue(10), 0x8000000Fu);
}

TEST(TaStreamPredictiveCoderTest, RecordsLieBetweenTheValuesByteForByte)
{
    const auto writeRecord = [](TuStreamWriteBinary& stream) {
        stream.WriteVersion(3);
        stream << 70000 << u"text" << 0.25 << true << 'c' << 1000u << 1ull;
        stream.WriteBuffer("raw", 3);
    };
    const Bytes record = WriteToBytes(writeRecord);
    const Bytes bytes = WriteToBytes([&](TuStreamWriteBinary& target) {
        TaStreamWritePredictiveCoder coder(target, 32, 0);
        EXPECT_TRUE(coder.IsCompressing());
        coder.WriteValue(7, 9);
        writeRecord(coder);
        coder.WriteValue(9, 7);
    });
    const Bytes expected = WriteToBytes([&](TuStreamWriteBinary& target) {
        target.WriteVersion(0);
        TaCompressRangeCoder coder(target, 65, 0);
        EXPECT_TRUE(coder.IsCompressing());
        coder << 30u;
        coder.WriteRawBits(0, 1);
        coder.WriteRaw(record.data(), record.size());
        coder << 34u;
        coder.WriteRawBits(0, 1);
    });
    EXPECT_EQ(bytes, expected);

    PlainStreamRead source(bytes);
    TaStreamReadPredictiveCoder coder(source, 32);
    EXPECT_EQ(coder.ReadValue(9), 7u);
    TuStreamReadBinary& stream = coder;
    EXPECT_EQ(stream.ReadAndCompareVersion(3), 3u);
    int number = 0;
    CString text;
    stream >> number >> text;
    EXPECT_EQ(std::to_string(number) + text.ToUtf8(), "70000text");
    Bytes rest(record.size() - 4 - 4 - 12);
    stream.ReadExactly(rest.data(), rest.size());
    EXPECT_TRUE(std::equal(rest.rbegin(), rest.rend(), record.rbegin()));
    EXPECT_EQ(coder.ReadValue(7), 9u);
}

class VersionedWriter : public TaStreamWritePredictiveCoder
{
public:
    VersionedWriter(TuStreamWriteBinary& stream, std::uint32_t version)
        : TaStreamWritePredictiveCoder(stream, 4, 0, version)
    {
    }
};

class VersionedReader : public TaStreamReadPredictiveCoder
{
public:
    explicit VersionedReader(std::uint32_t version)
        : TaStreamReadPredictiveCoder(4, version)
    {
    }
    using TaStreamReadPredictiveCoder::initialize;
};

TEST(TaStreamPredictiveCoderTest, BlocksOfASubclassHaveItsVersionAndAreReadWhenItSays)
{
    const Bytes bytes = WriteToBytes([](TuStreamWriteBinary& target) {
        VersionedWriter(target, 3).WriteValue(5, 4); // the version is written at the end
    });
    EXPECT_EQ((Bytes(bytes.begin(), bytes.begin() + 8)), (Bytes{ 3, 0, 0, 0, 0, 0, 0, 0 }));
    VersionedReader reader(3);
    std::uint32_t number = 0;
    ExpectFailure<TuExceptionPreconditionViolation>([&] { reader.ReadValue(4); });
    ExpectFailure<TuExceptionPreconditionViolation>([&] { reader >> number; });
    EXPECT_TRUE(ReadFromBytes(bytes, [&](auto& source) { reader.initialize(source); }));
    EXPECT_EQ(reader.ReadValue(4), 5u);
    for (const bool isPlain : { false, true }) {
        PlainStreamRead source(bytes);
        ExpectFailure<TuExceptionWrongFileVersion>([&] {
            isPlain ? static_cast<void>(TaStreamReadPredictiveCoder(source, 4))
                    : VersionedReader(2).initialize(source);
        });
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
    const Bytes bytes = WriteToBytes([&](TuStreamWriteBinary& target) {
        TaStreamWritePredictiveCoder coder(target, 32, 16);
        coder.WriteValue(values[0], predictions[0]);
        coder.WriteValues(std::span(values).subspan(1), std::span(predictions).subspan(1));
        ExpectFailure<TuExceptionPreconditionViolation>(
            [&] { coder.WriteValues(values, std::span(predictions).first(1)); });
    });
    EXPECT_EQ(bytes, codePairs(32, pairs));
    EXPECT_TRUE(ReadFromBytes(bytes, [&](TuStreamReadBinary& source) {
        TaStreamReadPredictiveCoder coder(source, 32);
        std::vector<std::uint32_t> found = predictions; // which the values replace
        coder.ReadValues(std::span(found).first(4321), std::span(found).first(4321));
        coder.ReadValues(std::span(found).subspan(4321), std::span(found).subspan(4321));
        EXPECT_EQ(found, values);
        ExpectFailure<TuExceptionPreconditionViolation>(
            [&] { coder.ReadValues(std::span(found).first(2), std::span(found).first(1)); });
    }));
}

TEST(TaStreamPredictiveCoderTest, NothingIsWrittenAfterFinishWhetherItFailsOrNot)
{
    for (const unsigned long long room :
        { 0u, 4u, 8u, 1000u }) { // of the versions, the count, the rest
        SCOPED_TRACE(room);
        FullSink target(room);
        const bool fails = room < 1000;
        {
            TaStreamWritePredictiveCoder coder(target, 4, 4000);
            coder.WriteValue(1, 2);
            if (fails) {
                ExpectFailure<TuExceptionStream>([&] { coder.Finish(); });
            } else {
                coder.Finish();
            }
            EXPECT_NO_THROW(coder.Finish());
            const std::vector<std::uint32_t> values(1);
            const std::function<void()> kRefused[]
                = { [&] { coder.WriteValue(1, 2); }, [&] { coder.WriteValues(values, values); },
                      [&] { static_cast<TuStreamWriteBinary&>(coder) << 1; } };
            for (const auto& refused : kRefused) {
                ExpectFailure<TuExceptionPreconditionViolation>(refused);
            }
        }
        EXPECT_EQ(target.GetFailureCount(), fails ? 1 : 0);
    }
    FullSink target(4);
    EXPECT_NO_THROW(TaStreamWritePredictiveCoder(target, 4, 0));
    EXPECT_EQ(target.GetFailureCount(), 1);
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

TEST(TaStreamCompressedFloatingPointTest, TheReaderInvertsTheWriter)
{
    constexpr float kInvalid = -9999.125f;
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const TaFloatingPointQuantizationUniform uniform(-1, 1, 32767.5f);
    const TaFloatingPointQuantizationUniformWithInvalid withInvalid(-1, 1, 127.5f, kInvalid);
    const TaFloatingPointQuantizationUniformWithInvalid widest(0, -1, 1, kInvalid);
    std::vector<float> values{ 0, -0.0f, 1, -1, 5, -5, kInfinity, -kInfinity,
        std::numeric_limits<float>::quiet_NaN(), kInvalid,
        std::numeric_limits<float>::denorm_min() };
    for (int i = 0; i < 2000; ++i) {
        values.push_back(i % 17 == 0 ? kInvalid : static_cast<float>(i * i % 1000) * 0.0021f - 1);
    }
    for (const auto* quantization : std::initializer_list<const TaFloatingPointQuantization*>{
             &uniform, &withInvalid, &widest }) {
        SCOPED_TRACE(quantization->GetBitCount());
        const auto restore
            = [&](float value) { return quantization->Unmap(quantization->Map(value)); };
        std::vector<float> predictions{ 0 };
        std::vector<float> restored;
        std::vector<SPair> codes;
        for (const float value : values) {
            codes.push_back({ quantization->Map(value), quantization->Map(predictions.back()) });
            restored.push_back(restore(value));
            predictions.push_back(restored.back());
        }
        predictions.pop_back();

        const auto write = [&](bool isBulk) {
            return WriteToBytes([&](TuStreamWriteBinary& target) {
                TaStreamWriteCompressedFloatingPoint coder(target, *quantization, 0, 1000);
                if (isBulk) {
                    coder.WriteValues(values, predictions);
                    return;
                }
                for (std::size_t i = 0; i < values.size(); ++i) {
                    coder.WriteValue(values[i], predictions[i]);
                }
            });
        };
        const Bytes bytes = write(false);
        EXPECT_EQ(bytes, write(true));
        EXPECT_EQ(bytes, codePairs(quantization->GetBitCount(), codes));

        PlainStreamRead source(bytes);
        TaStreamReadCompressedFloatingPoint coder(source, *quantization, 0);
        float previous = 0;
        std::vector<float> found;
        for (std::size_t i = 0; i < values.size(); ++i) {
            found.push_back(previous = coder.ReadValue(previous));
        }
        EXPECT_EQ(found, restored);
        PlainStreamRead again(bytes);
        found = predictions;
        TaStreamReadCompressedFloatingPoint(again, *quantization, 0).ReadValues(found, found);
        EXPECT_EQ(found, restored);
        if (quantization != &uniform) {
            EXPECT_EQ(found[9], kInvalid);
        }
    }
}

TEST(TaStreamCompressedFloatingPointTest, BlocksHaveTheVersionAndArePredictiveOnes)
{
    const TaFloatingPointQuantizationUniform quantization(0, 1, 15);
    const Bytes bytes = WriteToBytes([&](TuStreamWriteBinary& target) {
        TaStreamWriteCompressedFloatingPoint coder(target, quantization, 2, 0);
        coder.WriteValue(1, 0); // 15 needs all four bits
        const std::vector<float> two(2);
        ExpectFailure<TuExceptionPreconditionViolation>(
            [&] { coder.WriteValues(two, std::span(two).first(1)); });
    });
    Bytes expected = codePairs(4, { { 15, 0 } });
    expected[0] = 2;
    EXPECT_EQ(bytes, expected);
    PlainStreamRead source(bytes);
    EXPECT_EQ(TaStreamReadCompressedFloatingPoint(source, quantization, 2).ReadValue(0), 1.0f);
    PlainStreamRead again(bytes);
    ExpectFailure<TuExceptionWrongFileVersion>(
        [&] { TaStreamReadCompressedFloatingPoint(again, quantization, 1); });
}

} // namespace
