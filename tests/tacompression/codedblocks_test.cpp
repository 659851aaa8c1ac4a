#include "support/bufferbytes.h"
#include "support/temporaryfolder.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tacompression/codedscript.h"
#include "tacompression/tafloatingpointquantizationuniformwithinvalid.h"
#include "tacompression/tastreamreadcompressedfloatingpoint.h"
#include "tacompression/tastreamwritecompressedfloatingpoint.h"

#include <gtest/gtest.h>

#include <bit>
#include <utility>
#include <vector>

namespace {

constexpr std::uint32_t kRounds = 400;
constexpr float kInvalid = -9999.125f;

/// Numbers of 24 bits, the same in every program.
class Sequence
{
public:
    std::uint32_t Next()
    {
        m_state = m_state * 1664525 + 1013904223;
        return m_state >> 8;
    }
    /// Less than `count`, the small ones more often.
    std::uint32_t NextSymbol(std::uint32_t count)
    {
        const std::uint32_t bound = Next() % count + 1;
        return Next() % bound;
    }

private:
    std::uint32_t m_state = 7;
};

/// All that a range coder takes.
void playItems(CodedScript script)
{
    using Model = TaProbabilityModelQuasiStatic;
    const TuSmartPointer<Model> models[] = { TuMake<Model>(2u, 3u, 1u), TuMake<Model>(3u, 5u, 63u),
        TuMake<Model>(1000u, 12u, 500u), TuMake<Model>(16384u, 16u, 131071u) };
    Sequence sequence;
    for (std::uint32_t i = 0; i < kRounds; ++i) {
        for (const auto& model : models) {
            script.Symbol(sequence.NextSymbol(model->GetSymbolCount()), *model);
        }
        script.RawBits(sequence.Next() * 257, i % 33);
        script << static_cast<unsigned char>(i % 64) << static_cast<int>(sequence.NextSymbol(64));
        if (i % 50 == 0) {
            script << 'x' << 5ll << true << static_cast<short>(-258) << 0.1f << 1e300 << "narrow"
                   << u"wide";
        }
    }
}

/// Differences of all sizes in both directions.
std::vector<std::uint32_t> makeNumbers()
{
    Sequence sequence;
    std::vector<std::uint32_t> numbers{ 0, 0xFFFFFFFF, 0, 0x80000000, 0x7FFFFFFF };
    for (std::uint32_t i = 0; i < kRounds; ++i) {
        numbers.push_back(numbers.back() + (sequence.Next() >> i % 25) - (sequence.Next() >> 16));
    }
    return numbers;
}

/// A way along a surface, ties of the quantization, and what is hard to round.
std::vector<float> makeFloats()
{
    Sequence sequence;
    std::vector<float> values;
    for (const std::uint32_t bits : { 0x3EFFFFFFu, 0xBEFFFFFFu, 0u, 0x80000000u, 1u, 0x80000001u,
             0x7F800000u, 0xFF800000u, 0x7FC00000u, 0x7F7FFFFFu, 0xFF7FFFFFu, 0x3B449BA6u }) {
        values.push_back(std::bit_cast<float>(bits));
    }
    int place = 0;
    for (std::uint32_t i = 0; i < kRounds; ++i) {
        place += static_cast<int>(sequence.NextSymbol(41)) - 10;
        values.push_back(static_cast<float>(place) * 0.037f);
        values.push_back((static_cast<float>(place) + 0.5f) / 333.3333f);
        if (i % 40 == 0) {
            values.push_back(kInvalid);
        }
    }
    return values;
}

const TaFloatingPointQuantizationUniform kUniform(-100, 100, 333.3333f);
const TaFloatingPointQuantizationUniformWithInvalid kWithInvalid(-100, 100, 333.3333f, kInvalid);

/// Each float is predicted by the restored one before it. Behind the block follow the restored ones
/// as they are.
void writeFloats(TuStreamWriteBinary& target, const TaFloatingPointQuantization& quantization)
{
    std::vector<float> restored{ 0 };
    {
        TaStreamWriteCompressedFloatingPoint coder(target, quantization, 1, 0);
        for (const float value : makeFloats()) {
            coder.WriteValue(value, restored.back());
            restored.push_back(quantization.Unmap(quantization.Map(value)));
        }
    }
    for (const float value : restored) {
        target << value;
    }
}

void readFloats(TuStreamReadBinary& source, const TaFloatingPointQuantization& quantization)
{
    TaStreamReadCompressedFloatingPoint coder(source, quantization, 1);
    float expected = 0;
    source >> expected;
    float previous = 0;
    for (std::size_t i = 0; i < makeFloats().size(); ++i) {
        previous = coder.ReadValue(previous);
        source >> expected;
        ASSERT_EQ(std::bit_cast<std::uint32_t>(previous), std::bit_cast<std::uint32_t>(expected))
            << i;
    }
}

void writeBlocks(TuStreamWriteBinary& target)
{
    {
        TaCompressRangeCoder coder(target, 128, 0);
        playItems(CodedScript(coder));
    }
    {
        TaStreamWritePredictiveCoder coder(target, 32, 0);
        std::uint32_t previous = 0;
        for (const std::uint32_t number : makeNumbers()) {
            coder.WriteValue(number, std::exchange(previous, number));
        }
    }
    writeFloats(target, kUniform);
    writeFloats(target, kWithInvalid);
}

// The file was made by another program than this library.
TEST(CodedBlocksTest, TheBytesAreTheSameWithEveryCompilerAndProcessor)
{
    const std::string golden = ReadFile(TA_TEST_DATA_FOLDER "/coded_blocks_0.bin");
    EXPECT_TRUE(BytesOf(writeBlocks) == golden);

    TaStreamReadBinaryBuffer source(golden.data(), golden.size());
    {
        TaDecompressRangeCoder coder(source, 128);
        playItems(CodedScript(coder));
    }
    {
        TaStreamReadPredictiveCoder coder(source, 32);
        std::uint32_t previous = 0;
        for (const std::uint32_t number : makeNumbers()) {
            ASSERT_EQ(previous = coder.ReadValue(previous), number);
        }
    }
    readFloats(source, kUniform);
    readFloats(source, kWithInvalid);
    EXPECT_EQ(source.GetRemaining(), 0u);
}

} // namespace
