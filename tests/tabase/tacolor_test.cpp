#include "tabase/tacolor.h"

#include "support/bufferbytes.h"
#include "support/expectfailure.h"
#include "tabase/tacolorhsl.h"
#include "tabase/tacolorhsv.h"
#include "tabase/tarandomsource.h"
#include "tabase/tastreamreadbinarybuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <thread>
#include <vector>

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

struct STriple
{
    float a = -7.0f;
    float b = -7.0f;
    float c = -7.0f;

    friend bool operator==(const STriple&, const STriple&) = default;
};

/// What one of the conversions makes of three numbers.
STriple convert(
    void (*conversion)(float, float, float, float&, float&, float&), float a, float b, float c)
{
    STriple result;
    conversion(a, b, c, result.a, result.b, result.c);
    return result;
}

TEST(TaColorTest, IntegersCarryInTheConstructorAndSpillFromTheSetters)
{
    EXPECT_EQ(TaColor().GetDword(), 0xFFFFFFFFu);
    EXPECT_EQ(TaColor(0, 300, 0, 255).GetDword(), 0xFF012C00u);
    EXPECT_EQ(TaColor(1u, 2l, short{ 3 }, 4ull).GetDword(), 0x04010203u);
    EXPECT_EQ(TaColor(255, 256, 0, 0).GetDword(), 0x01000000u); // a carry through two bytes
    EXPECT_EQ(TaColor(0, 0, 1ull << 40, 256).GetDword(), 0u); // cut to 32 bits, before and after
    EXPECT_EQ(TaColor(-1, 0, 0, 0).GetDword(), 0xFFFF0000u);

    TaColor color = TaColor::FromDword(0x10FF55AAu);
    color.SetGreen(0x102);
    EXPECT_EQ(color.GetDword(), 0x10FF02AAu); // the bit that spills is set already
    color.SetRed(0x120);
    EXPECT_EQ(color.GetDword(), 0x112002AAu);
    color.SetBlue(0x1FF);
    EXPECT_EQ(color.GetDword(), 0x112003FFu);
    color.SetAlpha(0x180u);
    EXPECT_EQ(color.GetDword(), 0x802003FFu);
    color.SetTransparent();
    EXPECT_EQ(color.GetDword(), 0x002003FFu);
    color.SetOpaque();
    EXPECT_EQ(color.ToColorRef(), 0x00FF0320u);
    EXPECT_EQ(color.ToString(), u"0x2003FF");
}

TEST(TaColorTest, FloatsAreTruncatedSaturatedAndPartlyMasked)
{
    EXPECT_EQ(TaColor(0.5, 0, 1, 1).GetDword(), 0xFF7F00FFu);
    EXPECT_EQ(TaColor(SColorFloat{ 1.0f, 0.999f, 0.0f, 0.0f }).GetDword(), 0x00FFFE00u);
    // Beyond 1: red and green are masked; blue spills, and alpha out of the word.
    EXPECT_EQ(TaColor::RgbToDword(2.0f, 2.0f, 0.0f, 2.0f), 0xFEFEFE00u);
    EXPECT_EQ(TaColor::RgbToDword(0.0f, 0.0f, 2.0f, 0.0f), 0x000001FEu);
    EXPECT_EQ(TaColor::RgbToDword(-0.001f, -1.0f, 0.0f, 0.0f), 0x00000100u);
    EXPECT_EQ(TaColor::RgbToDword(0.0f, 0.0f, -1.0f, 0.0f), 0xFFFFFF01u);
    EXPECT_EQ(TaColor::RgbToDword(kNan, 0.0f, kNan, kNan), 0u);
    EXPECT_EQ(TaColor::RgbToDword(1e30f, -1e30f, kInfinity, 0.0f), 0x7FFFFFFFu);
    EXPECT_EQ(TaColor::RgbToDword(0.0f, 0.0f, -kInfinity, 0.0f), 0x80000000u);
    TaColor color(0, 0, 0, 0);
    color.SetGreen(2.0f);
    EXPECT_EQ(color.GetDword(), 0x0001FE00u);
    color.SetRed(-1.0 / 255.0);
    EXPECT_EQ(color.GetDword() >> 16, 0xFFFFu);

    const TaColor other(7, 77, 255, 255);
    for (unsigned int level = 0; level < 256; ++level) { // bytes survive
        const TaColor from(level, 255 - level, level / 2, 255);
        EXPECT_EQ(TaColor(from.GetRed(), from.GetGreen(), from.GetBlue(), from.GetAlpha()), from);
        EXPECT_EQ(TaColor::InterpolateRGB(from, other, 0.0f), from);
        EXPECT_EQ(TaColor::InterpolateRGB(other, from, 1.0f), from);
    }
    EXPECT_EQ(TaColor::InterpolateRGB(TaColor(), TaColor(1, 2, 3, 4), 1.0f), TaColor(1, 2, 3, 255));
}

TEST(TaColorTest, HsvToRgbIsTheSixSectorsAndWritesNothingOutside)
{
    for (float hue = 0.0f; hue < 360.0f; hue += 0.37f) {
        const float s = 0.7f;
        const float v = 0.9f;
        const float x = hue / 360.0f * 6.0f;
        const float f = x - std::floor(x);
        const float p = (1.0f - s) * v;
        const float q = (1.0f - f * s) * v;
        const float t = (1.0f - (1.0f - f) * s) * v;
        const STriple sectors[]
            = { { v, t, p }, { q, v, p }, { p, v, t }, { p, q, v }, { t, p, v }, { v, p, q } };
        EXPECT_EQ(convert(TaColor::HsvToRgb, hue, s, v), sectors[static_cast<int>(x)]) << hue;
    }
    EXPECT_EQ(convert(TaColor::HsvToRgb, 360.0f, 0.5f, 1.0f),
        convert(TaColor::HsvToRgb, 0.0f, 0.5f, 1.0f));
    EXPECT_EQ(convert(TaColor::HsvToRgb, std::nextafter(360.0f, 0.0f), 1.0f, 1.0f).a, 1.0f);
    for (const float hue : { 400.0f, 360.001f, -0.1f, 1e30f, kInfinity, -kInfinity, kNan }) {
        EXPECT_EQ(convert(TaColor::HsvToRgb, hue, 1.0f, 1.0f), STriple()) << hue;
        const TaColorHSV outside(hue, 1.0f, 1.0f);
        EXPECT_EQ(outside.GetColor(), TaColor(0, 0, 0, 255));
    }
}

TEST(TaColorTest, HuesAreTestedInTheOrderRedGreenBlue)
{
    const auto hsv = [](float r, float g, float b) { return convert(TaColor::RgbToHsv, r, g, b); };
    EXPECT_EQ(hsv(1.0f, 1.0f, 0.0f), (STriple{ 60.0f, 1.0f, 1.0f })); // red first
    EXPECT_EQ(hsv(0.0f, 0.5f, 0.5f), (STriple{ 180.0f, 1.0f, 0.5f })); // green first
    EXPECT_EQ(hsv(0.5f, 0.25f, 0.5f), (STriple{ 300.0f, 0.5f, 0.5f })); // -60, raised
    EXPECT_EQ(hsv(0.25f, 0.0f, 1.0f), (STriple{ 255.0f, 1.0f, 1.0f }));
    EXPECT_EQ(hsv(0.0f, 0.0f, 0.0f), (STriple{ 0.0f, 0.0f, 0.0f }));
    EXPECT_EQ(hsv(0.4f, 0.4f, 0.4f), (STriple{ 0.0f, 0.0f, 0.4f }));
}

TEST(TaColorTest, TheSaturationOfLightColoursIsDividedByTwoLessTheirRange)
{
    const auto hsl = [](float r, float g, float b) { return convert(TaColor::RgbToHsl, r, g, b); };
    EXPECT_EQ(hsl(1.0f, 0.5f, 0.5f), (STriple{ 0.0f, 0.5f / 1.5f, 0.75f }));
    EXPECT_EQ(hsl(0.5f, 0.25f, 0.5f), (STriple{ 300.0f, 0.25f / 0.75f, 0.375f }));
    EXPECT_EQ(hsl(0.4f, 0.4f, 0.4f), (STriple{ 0.0f, 0.0f, 0.4f }));
    EXPECT_EQ(TaColor::FromHsl(0.0f, 1.0f, 0.5f), TaColor(255, 0, 0, 255));
    EXPECT_EQ(TaColor::FromHsl(60.0f, 0.0f, 0.25f), TaColor(63, 63, 63, 255));
    EXPECT_EQ(TaColor::FromHsl(240.0f, 3.0f, 0.75f), TaColor(0, 0, 255, 255)); // clamped
}

TEST(TaColorTest, HsvIsOpaqueAndHslKeepsAlpha)
{
    const TaColor halfTransparent = TaColor::FromDword(0x80FF0000u);
    EXPECT_EQ(TaColorHSV(halfTransparent).GetColor().GetDword(), 0xFFFF0000u);
    TaColorHSL hsl;
    EXPECT_EQ(hsl.GetLightness(), 1.0f);
    hsl = halfTransparent;
    EXPECT_EQ(hsl.GetColor(), halfTransparent);
    EXPECT_EQ(hsl.GetLightness(), 0.5f);
    hsl.Interpolate(hsl, hsl, 0.0f);
    EXPECT_EQ(hsl.GetColor().GetDword(), 0xFFFF0000u);
}

/// The hue a quarter of the way.
template <class Color> float hueBetween(const Color& a, const Color& b)
{
    Color between;
    between.Interpolate(a, b, 0.25f);
    return between.GetHue();
}

TEST(TaColorTest, InterpolationTakesTheHueOfTheColourThatHasOne)
{
    using HSV = TaColorHSV;
    const HSV grey(20.0f, 0.0f, 1.0f);
    const HSV green(100.0f, 1.0f, 1.0f);
    EXPECT_EQ(hueBetween(grey, green), 100.0f);
    EXPECT_EQ(hueBetween(green, grey), 100.0f);
    EXPECT_EQ(hueBetween(grey, HSV(100.0f, 0.0f, 1.0f)), 40.0f); // neither: linear
    EXPECT_EQ(hueBetween(HSV(340.0f, 1.0f, 1.0f), HSV(20.0f, 1.0f, 1.0f)), 260.0f); // no wrap
    HSV between(0.0f, 1.0f, 1.0f); // the result may be one of the two
    between.Interpolate(between, HSV(120.0f, 0.5f, 0.5f), 0.5f);
    EXPECT_EQ(between.GetColor(), HSV(60.0f, 0.75f, 0.75f).GetColor());

    using HSL = TaColorHSL;
    const HSL light(100.0f, 1.0f, 0.5f);
    for (const HSL& none :
        { HSL(20.0f, 0.0f, 0.5f), HSL(20.0f, 1.0f, 0.0f), HSL(20.0f, 1.0f, 1.0f) }) {
        EXPECT_EQ(hueBetween(none, light), 100.0f);
        EXPECT_EQ(hueBetween(light, none), 100.0f);
        EXPECT_EQ(hueBetween(HSL(100.0f, 0.0f, 0.5f), none), 20.0f); // neither: b's
    }
    EXPECT_EQ(hueBetween(HSL(340.0f, 1.0f, 0.5f), HSL(20.0f, 1.0f, 0.5f)), 260.0f);
}

TEST(TaColorTest, GreysAndDifferences)
{
    EXPECT_EQ(TaColor::RgbToGreyscale(255, 255, 255), 254u); // the weights' sum is 255
    EXPECT_EQ(TaColor::RgbToGreyscale(0xFFFFFFFFu, 0, 0), (0u - 76u) >> 8); // in 32 bits
    EXPECT_EQ(TaColor::RgbToGreyscale(1.0, 0, 0), 0.3f);
    const TaColor red(255, 0, 0, 255);
    const TaColor green(0, 255, 0, 0);
    EXPECT_EQ(TaColor::GetColorDifferenceSumRGB(red, green), 0.0f);
    EXPECT_EQ(TaColor::GetColorDifferenceSumRGB(TaColor(0, 0, 0, 255), red), -1.0f / 3.0f);
    EXPECT_EQ(TaColor::GetSqrColorDifferenceRGB(red, green), 2.0f);
}

TEST(TaColorTest, RandomColoursAreTheSameEverywhereAndDrawnBlueGreenRed)
{
    TaRandomSource source;
    EXPECT_EQ(source.GetNext(), 16838u); // as the C standard's example
    EXPECT_EQ(source.GetNext(), 5758u);
    EXPECT_EQ(source.GetNext(), 10113u);
    TaColor::SeedRandomColors(1);
    EXPECT_EQ(TaColor::CreateRandomColor().GetDword(), 0xFF4E2C83u);
    source.SetSeed(1);
    EXPECT_EQ(TaColor::CreateRandomColorSaturated(source).GetDword(), 0xFF00E9FFu);

    // Threads share the sequence, and no colour is made of numbers that do not follow each other.
    const auto draw = [](std::vector<std::uint32_t>& colors) {
        for (int i = 0; i < 2000; ++i) {
            colors.push_back(TaColor::CreateRandomColor().GetDword());
        }
    };
    std::vector<std::uint32_t> drawn;
    std::vector<std::uint32_t> drawnByOther;
    TaColor::SeedRandomColors(5);
    std::thread other([&] { draw(drawnByOther); });
    draw(drawn);
    other.join();
    drawn.insert(drawn.end(), drawnByOther.begin(), drawnByOther.end());
    std::vector<std::uint32_t> expected;
    TaColor::SeedRandomColors(5);
    draw(expected);
    draw(expected);
    std::sort(drawn.begin(), drawn.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(drawn, expected);
}

TEST(TaColorTest, IsStoredAsVersionAndWord)
{
    const TaColor color = TaColor::FromDword(0x81020304u);
    const std::string bytes
        = BytesOf([&](TuStreamWriteBinary& stream) { color.Serialize(stream); });
    EXPECT_EQ(bytes, std::string("\0\0\0\0\x04\x03\x02\x81", 8));
    TaColor copy;
    TaStreamReadBinaryBuffer shortened(bytes.data(), 7);
    ExpectFailure<TuExceptionStream>([&] { copy.Serialize(shortened); });
    TaStreamReadBinaryBuffer newer("\1\0\0\0\x04\x03\x02\x81", 8);
    ExpectFailure<TuExceptionWrongFileVersion>([&] { copy.Serialize(newer); });
    EXPECT_EQ(copy, TaColor()); // unchanged
    TaStreamReadBinaryBuffer whole(bytes.data(), 8);
    copy.Serialize(whole);
    EXPECT_EQ(copy, color);
}

/// A hash of all bits over a grid, taken once: every compiler and processor has to come to it.
TEST(TaColorTest, ArithmeticHasTheSameBitsEverywhere)
{
    std::uint64_t hash = 14695981039346656037u;
    const auto add = [&hash](std::uint32_t bits) { hash = (hash ^ bits) * 1099511628211u; };
    const auto addTriple = [&](const STriple& triple) {
        for (const float number : { triple.a, triple.b, triple.c }) {
            add(std::bit_cast<std::uint32_t>(number));
        }
    };
    constexpr int kSteps = 21;
    for (int i = 0; i < kSteps * kSteps * kSteps; ++i) {
        const float a = static_cast<float>(i % kSteps) * 0.0507f;
        const float b = static_cast<float>(i / kSteps % kSteps) * 0.0507f;
        const float c = static_cast<float>(i / kSteps / kSteps) * 0.0507f;
        addTriple(convert(TaColor::RgbToHsv, a, b, c));
        addTriple(convert(TaColor::RgbToHsl, a, b, c));
        addTriple(convert(TaColor::HsvToRgb, a * 360.0f, b, c));
        addTriple(convert(TaColor::HslToRgb, a * 360.0f, b, c));
        const TaColor color(a, b, c, 1.0f);
        const TaColor other(c, a, b, 1.0f);
        add(color.GetDword());
        add(TaColor::InterpolateRGB(color, other, b).GetDword());
        TaColorHSV betweenHsv;
        betweenHsv.Interpolate(color, other, c);
        add(betweenHsv.GetColor().GetDword());
        EXPECT_EQ(TaColorHSV::InterpolateColor(color, other, c), betweenHsv.GetColor());
        TaColorHSL between;
        between.Interpolate(color, other, a);
        add(between.GetColor().GetDword());
        addTriple(
            { TaColor::RgbToGreyscale(a, b, c), TaColor::GetSqrColorDifferenceRGB(color, other),
                TaColor::GetColorDifferenceSumRGB(color, other) });
    }
    EXPECT_EQ(hash, 11807585042866327672u);
}

} // namespace
