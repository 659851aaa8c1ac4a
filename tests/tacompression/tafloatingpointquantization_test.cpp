#include "groundwork/tuexceptions.h"
#include "tacompression/tafloatingpointquantizationuniformwithinvalid.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <span>
#include <vector>

namespace {

using Uniform = TaFloatingPointQuantizationUniform;
using WithInvalid = TaFloatingPointQuantizationUniformWithInvalid;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();

TEST(TaFloatingPointQuantizationTest, TheRangeSetsTheCodesAndTheirWidth)
{
    const struct
    {
        float minimum, maximum, scale;
        std::int32_t minValue;
        std::uint32_t maxValue, bitCount;
        std::uint32_t bitCountWithInvalid, invalidCode; // for a value that is not in the range
    } kCases[] = {
        { 0, 1, 255, 0, 255, 8, 9, 511 },
        { 0, 1, 100, 0, 100, 7, 7, 127 },
        { -1, 1, 2, -2, 4, 3, 3, 7 },
        { -2.5f, 2.5f, 1, -2, 5, 3, 3, 7 }, // halves go up
        { 3, 3, 1, 3, 0, 1, 1, 1 },
        { 0, 1, 1, 0, 1, 1, 2, 3 },
        { 0, 1, 0, 0, 0, 1, 1, 1 },
        { -1, 1, kNan, kLeast, 0, 1, 1, 1 },
        { 10, 5, 1, 10, 0xFFFFFFFB, 32, 32, 0xFFFFFFFF }, // reversed
        { 0, 2147483520.0f, 1, 0, 2147483520, 31, 31, 0x7FFFFFFF },
        { -2e9f, 2e9f, 1, -2000000000, 4000000000, 32, 32, 0xFFFFFFFF },
        { 1e30f, kInfinity, 1, kMost, 0, 1, 1, 1 },
        // No code is free: it shares one with a real value.
        { 0, -1, 1, 0, 0xFFFFFFFF, 32, 32, 0 },
        { -1e30f, 1e30f, 1, kLeast, 0xFFFFFFFF, 32, 32, 0 },
    };
    for (const auto& expected : kCases) {
        SCOPED_TRACE(testing::Message()
            << expected.minimum << " to " << expected.maximum << " by " << expected.scale);
        const Uniform uniform(expected.minimum, expected.maximum, expected.scale);
        EXPECT_EQ(uniform.GetMinValue(), expected.minValue);
        EXPECT_EQ(uniform.GetMaxValue(), expected.maxValue);
        EXPECT_EQ(uniform.GetBitCount(), expected.bitCount);
        const WithInvalid invalid(expected.minimum, expected.maximum, expected.scale, -77);
        EXPECT_EQ(invalid.GetBitCount(), expected.bitCountWithInvalid);
        EXPECT_EQ(invalid.Map(-77), expected.invalidCode);
        EXPECT_EQ(invalid.Unmap(expected.invalidCode), -77);
    }
}

TEST(TaFloatingPointQuantizationTest, ValuesAreRoundedWithHalvesUpwardsAndClamped)
{
    const Uniform ones(-10, 10, 1);
    const Uniform halves(-1, 1, 2);
    const Uniform wide(-8388608, 8388608, 1);
    const Uniform low(-2e9f, 0, 1);
    const Uniform high(0, 2147483520.0f, 1);
    const Uniform large(0, 3e7f, 1);
    const Uniform none(0, 1, 0);
    const Uniform signedTooWide(-2e9f, 2e9f, 1); // codes compare as signed: all map to 0
    const struct
    {
        const Uniform& quantization;
        float value;
        std::uint32_t code;
    } kCases[] = {
        { halves, 0.25f, 3 },
        { halves, -0.25f, 2 },
        { ones, 2.5f, 13 },
        { ones, -2.5f, 8 },
        { ones, -0.5f, 10 },
        { ones, -0.50000006f, 9 },
        { ones, 0.49999997f, 11 }, // the sum with 0.5 is rounded to 1
        { ones, 0.49999994f, 10 },
        { ones, 10.4f, 20 },
        { ones, kInfinity, 20 },
        { ones, -kInfinity, 0 },
        { ones, kNan, 0 },
        { ones, 3e38f, 20 },
        { ones, -3e38f, 0 },
        { wide, 8388607.5f, 16777216 },
        { wide, -8388607.5f, 1 },
        { large, 8388609, 8388609 }, // plus 0.5 it would be rounded to the next
        { low, 2e9f, 2000000000 }, // the difference has 32 bits
        { high, 2147483648.0f, 2147483520 },
        { high, 2147483392.0f, 2147483392 },
        { high, -2147483648.0f, 0 },
        { none, 1, 0 },
        { signedTooWide, 2e9f, 0 },
    };
    for (const auto& expected : kCases) {
        EXPECT_EQ(expected.quantization.Map(expected.value), expected.code)
            << expected.value << " from " << expected.quantization.GetMinValue();
        std::uint32_t code = 0;
        expected.quantization.MapValues(std::span(&expected.value, 1), std::span(&code, 1));
        EXPECT_EQ(code, expected.code) << expected.value << " among many";
    }
}

TEST(TaFloatingPointQuantizationTest, EveryCodeHasAFloat)
{
    EXPECT_EQ(Uniform(0, 1, 255).Unmap(256), 256.0f / 255.0f);
    EXPECT_EQ(Uniform(-2e9f, 0, 0.5f).Unmap(2000000000), 2e9f);
    EXPECT_EQ(Uniform(2e9f, 2e9f, 1).Unmap(2000000000), -294967296.0f); // wraps around
    const Uniform none(0, 1, 0);
    EXPECT_TRUE(std::isnan(none.Unmap(0)));
    EXPECT_EQ(none.Unmap(0x80000000), -kInfinity);
}

TEST(TaFloatingPointQuantizationTest, TheInvalidValueIsRecognisedByComparison)
{
    const WithInvalid zero(-1, 1, 2, 0); // 0 lies in the range
    EXPECT_EQ(zero.Map(-0.0f), 7u);
    EXPECT_EQ(zero.Map(0.01f), 2u);
    const WithInvalid nan(-1, 1, 2, kNan);
    EXPECT_EQ(nan.Map(kNan), 0u);
    EXPECT_TRUE(std::isnan(nan.Unmap(7)));
    const WithInvalid infinity(-1, 1, 2, kInfinity);
    EXPECT_EQ(infinity.Unmap(infinity.Map(kInfinity)), kInfinity);
    EXPECT_EQ(infinity.Unmap(infinity.Map(-kInfinity)), -1.0f);
    const WithInvalid shared(0, -1, 1, 5);
    EXPECT_EQ(shared.Unmap(shared.Map(3)), 5.0f); // as every value that has the shared code
}

/// It is uniform, but not just that.
class EvenCodes final : public Uniform
{
public:
    using Uniform::Uniform;
    std::uint32_t Map(float value) const override { return Uniform::Map(value) * 2; }
    float Unmap(std::uint32_t code) const override { return Uniform::Unmap(code / 2); }
};

TEST(TaFloatingPointQuantizationTest, ManyAtOnceHaveTheCodesThatTheyHaveOneByOne)
{
    std::vector<float> values{ 0.0f, -0.0f, kNan, kInfinity, -kInfinity, 0.49999997f, 1e38f,
        -3e9f };
    for (int i = -500; i < 507; ++i) { // no whole number of runs
        values.push_back(static_cast<float>(i) * 0.125f);
    }
    std::vector<std::uint32_t> codes(values.size());
    std::vector<float> restored(values.size());
    const auto expectSame = [&](const TaFloatingPointQuantization& quantization) {
        quantization.MapValues(values, codes);
        quantization.UnmapValues(codes, restored);
        for (std::size_t i = 0; i < values.size(); ++i) {
            ASSERT_EQ(codes[i], quantization.Map(values[i])) << values[i];
            ASSERT_EQ(std::bit_cast<std::uint32_t>(restored[i]),
                std::bit_cast<std::uint32_t>(quantization.Unmap(codes[i])));
        }
    };
    const float kRanges[][3] = { { -50, 50, 10 }, { -1, 1, 2 }, { -4e6f, 4e6f, 1 },
        { 0, 4194304, 1 }, { 10, 5, 1 }, { -2e9f, 2e9f, 1 } };
    for (const auto& [minimum, maximum, scale] : kRanges) {
        SCOPED_TRACE(testing::Message() << minimum << " to " << maximum);
        expectSame(Uniform(minimum, maximum, scale));
        expectSame(WithInvalid(minimum, maximum, scale, 0.25f));
        expectSame(EvenCodes(minimum, maximum, scale));
    }
    EXPECT_THROW(Uniform(0, 1, 1).MapValues(values, std::span(codes).first(1)),
        TuExceptionPreconditionViolation);
}

} // namespace
