#include "tabase/tacolor.h"

#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"
#include "tabase/tarandomsource.h"

#include <algorithm>
#include <atomic>
#include <limits>

namespace {

constexpr unsigned int kVersion = 0;

constexpr unsigned int kRedShift = 16;
constexpr unsigned int kGreenShift = 8;
constexpr unsigned int kBlueShift = 0;
constexpr unsigned int kAlphaShift = 24;

/// The seed of the process's random colours.
std::atomic<std::uint32_t> s_seed{ 1 };

/// Truncates toward zero. What 32 signed bits do not hold becomes the nearest that they do, what is
/// no number 0: the language leaves both open, and processors differ.
inline std::int32_t toInteger(float value)
{
    constexpr float kBeyond = 2147483648.0f; // 2^31
    if (value > -kBeyond && value < kBeyond) {
        return static_cast<std::int32_t>(value);
    }
    if (value != value) {
        return 0;
    }
    return value > 0.0f ? std::numeric_limits<std::int32_t>::max()
                        : std::numeric_limits<std::int32_t>::min();
}

inline std::uint32_t toChannel(float value)
{
    return static_cast<std::uint32_t>(toInteger(value * 255.0f));
}

inline std::uint32_t pack(float red, float green, float blue, float alpha)
{
    return toChannel(alpha) << kAlphaShift | (toChannel(red) & 0xFFu) << kRedShift
        | (toChannel(green) & 0xFFu) << kGreenShift | toChannel(blue);
}

float getChannel(std::uint32_t word, unsigned int shift)
{
    return static_cast<float>((word >> shift) & 0xFFu) / 255.0f;
}

std::uint32_t withChannel(std::uint32_t word, unsigned int shift, std::uint32_t value)
{
    return (word & ~(0xFFu << shift)) | (value << shift);
}

/// Of a colour with a hue: `delta` is not 0.
float getHue(float red, float green, float blue, float greatest, float delta)
{
    float hue = 0.0f;
    if (red == greatest) {
        hue = (green - blue) / delta;
    } else if (green == greatest) {
        hue = (blue - red) / delta + 2.0f;
    } else if (blue == greatest) {
        hue = (red - green) / delta + 4.0f;
    }
    hue = hue * 60.0f;
    return hue < 0.0f ? hue + 360.0f : hue;
}

// Where HsvToRgb takes red, green and blue from, for each sixth of the circle of hues.
enum ELevel : unsigned char
{
    eL_V,
    eL_P,
    eL_Q,
    eL_T,
};
constexpr ELevel kHsvLevels[6][3] = {
    { eL_V, eL_T, eL_P },
    { eL_Q, eL_V, eL_P },
    { eL_P, eL_V, eL_T },
    { eL_P, eL_Q, eL_V },
    { eL_T, eL_P, eL_V },
    { eL_V, eL_P, eL_Q },
};

/// By look-up: the sectors of arbitrary colours would be branches that no processor predicts.
inline void convertHsv(
    float hue, float saturation, float value, float& red, float& green, float& blue)
{
    float x = hue / 360.0f;
    if (x == 1.0f) {
        x = 0.0f;
    }
    x = x * 6.0f;
    if (!(x >= 0.0f && x < 6.0f)) {
        return; // also where it is no number
    }
    const auto sector = static_cast<int>(x);
    const float f = x - static_cast<float>(sector);
    const float p = (1.0f - saturation) * value;
    const float q = (1.0f - f * saturation) * value;
    const float t = (1.0f - (1.0f - f) * saturation) * value;
    const float levels[] = { value, p, q, t };
    red = levels[kHsvLevels[sector][0]];
    green = levels[kHsvLevels[sector][1]];
    blue = levels[kHsvLevels[sector][2]];
}

/// One channel of HslToRgb; `x` is its place on the circle of hues, before it is wrapped.
float getHslChannel(float m1, float m2, float x)
{
    if (x <= 0.0f) {
        x = x + 1.0f;
    } else if (x >= 1.0f) {
        x = x - 1.0f;
    }
    float channel = m1;
    if (x < 0.16666667f) {
        channel = m1 + (m2 - m1) * 6.0f * x;
    } else if (x < 0.5f) {
        channel = m2;
    } else if (x < 0.6666667f) {
        channel = m1 + (m2 - m1) * 6.0f * (0.6666667f - x);
    }
    return std::clamp(channel, 0.0f, 1.0f);
}

/// 0 to 1, both included.
float drawNumber(TaRandomSource& source)
{
    return static_cast<float>(source.GetNext()) / static_cast<float>(TaRandomSource::kGreatest);
}

/// From the process's source. A thread that finds the source changed meanwhile draws again, so that
/// the numbers of one colour follow each other.
template <class Draw> TaColor drawFromProcess(Draw draw)
{
    std::uint32_t seed = s_seed.load();
    for (;;) {
        TaRandomSource source(seed);
        const TaColor color = draw(source);
        if (s_seed.compare_exchange_weak(seed, source.GetSeed())) {
            return color;
        }
    }
}

} // namespace

TaColor::TaColor(unsigned long red, unsigned long green, unsigned long blue, unsigned long alpha)
    : m_word(((static_cast<std::uint32_t>(alpha) * 256u + static_cast<std::uint32_t>(red)) * 256u
                 + static_cast<std::uint32_t>(green))
            * 256u
        + static_cast<std::uint32_t>(blue))
{
}

TaColor::TaColor(float red, float green, float blue, float alpha)
    : m_word(pack(red, green, blue, alpha))
{
}

TaColor::TaColor(const SColorFloat& color)
    : m_word(pack(color.m_red, color.m_green, color.m_blue, color.m_alpha))
{
}

TaColor TaColor::FromHsv(float hue, float saturation, float value)
{
    float red = 0.0f; // black, where the hue lies outside
    float green = 0.0f;
    float blue = 0.0f;
    convertHsv(hue, saturation, value, red, green, blue);
    return FromDword(pack(red, green, blue, 1.0f));
}

TaColor TaColor::FromHsl(float hue, float saturation, float lightness)
{
    float red = 0.0f;
    float green = 0.0f;
    float blue = 0.0f;
    HslToRgb(hue, saturation, lightness, red, green, blue);
    return FromDword(pack(red, green, blue, 1.0f));
}

float TaColor::GetRed() const { return getChannel(m_word, kRedShift); }
float TaColor::GetGreen() const { return getChannel(m_word, kGreenShift); }
float TaColor::GetBlue() const { return getChannel(m_word, kBlueShift); }
float TaColor::GetAlpha() const { return getChannel(m_word, kAlphaShift); }

void TaColor::SetRed(unsigned long red)
{
    m_word = withChannel(m_word, kRedShift, static_cast<std::uint32_t>(red));
}

void TaColor::SetGreen(unsigned long green)
{
    m_word = withChannel(m_word, kGreenShift, static_cast<std::uint32_t>(green));
}

void TaColor::SetBlue(unsigned long blue)
{
    m_word = withChannel(m_word, kBlueShift, static_cast<std::uint32_t>(blue));
}

void TaColor::SetAlpha(unsigned long alpha)
{
    m_word = withChannel(m_word, kAlphaShift, static_cast<std::uint32_t>(alpha));
}

void TaColor::SetRed(float red) { m_word = withChannel(m_word, kRedShift, toChannel(red)); }
void TaColor::SetGreen(float green) { m_word = withChannel(m_word, kGreenShift, toChannel(green)); }
void TaColor::SetBlue(float blue) { m_word = withChannel(m_word, kBlueShift, toChannel(blue)); }
void TaColor::SetAlpha(float alpha) { m_word = withChannel(m_word, kAlphaShift, toChannel(alpha)); }

std::uint32_t TaColor::ToColorRef() const
{
    return (m_word >> 16 & 0xFFu) | (m_word & 0xFF00u) | (m_word & 0xFFu) << 16;
}

CString TaColor::ToString() const
{
    constexpr const char16_t* kDigits = u"0123456789ABCDEF";
    CString text(u"0x");
    for (unsigned int shift = 24; shift != 0; shift -= 4) {
        text += kDigits[m_word >> (shift - 4) & 0xFu];
    }
    return text;
}

void TaColor::Serialize(TuStreamWriteBinary& stream) const
{
    stream.WriteVersion(kVersion);
    stream << m_word;
}

void TaColor::Serialize(TuStreamReadBinary& stream)
{
    stream.ReadAndCompareVersion(kVersion);
    std::uint32_t word = 0;
    stream >> word;
    m_word = word;
}

std::uint32_t TaColor::RgbToDword(float red, float green, float blue, float alpha)
{
    return pack(red, green, blue, alpha);
}

void TaColor::RgbToHsv(
    float red, float green, float blue, float& hue, float& saturation, float& value)
{
    const float greatest = std::max(std::max(red, green), blue);
    const float least = std::min(std::min(red, green), blue);
    value = greatest;
    hue = 0.0f;
    saturation = 0.0f;
    if (greatest != 0.0f) {
        const float delta = greatest - least;
        saturation = delta / greatest;
        if (saturation != 0.0f) {
            hue = ::getHue(red, green, blue, greatest, delta);
        }
    }
}

void TaColor::HsvToRgb(
    float hue, float saturation, float value, float& red, float& green, float& blue)
{
    convertHsv(hue, saturation, value, red, green, blue);
}

void TaColor::RgbToHsl(
    float red, float green, float blue, float& hue, float& saturation, float& lightness)
{
    const float greatest = std::max(std::max(red, green), blue);
    const float least = std::min(std::min(red, green), blue);
    lightness = (greatest + least) * 0.5f;
    const float delta = greatest - least;
    hue = 0.0f;
    saturation = 0.0f;
    if (delta != 0.0f) {
        const float divisor
            = lightness <= 0.5f ? greatest + least : 2.0f - greatest + least; // deliberate
        saturation = delta / divisor;
        hue = ::getHue(red, green, blue, greatest, delta);
    }
}

void TaColor::HslToRgb(
    float hue, float saturation, float lightness, float& red, float& green, float& blue)
{
    const float m2 = lightness < 0.5f ? lightness * (1.0f + saturation)
                                      : lightness + saturation - lightness * saturation;
    const float m1 = 2.0f * lightness - m2;
    const float x = hue / 360.0f;
    red = getHslChannel(m1, m2, x + 0.33333334f);
    green = getHslChannel(m1, m2, x);
    blue = getHslChannel(m1, m2, x - 0.33333334f);
}

std::uint32_t TaColor::RgbToGreyscale(unsigned long red, unsigned long green, unsigned long blue)
{
    return (static_cast<std::uint32_t>(red) * 76u + static_cast<std::uint32_t>(green) * 150u
               + static_cast<std::uint32_t>(blue) * 29u)
        >> 8;
}

float TaColor::RgbToGreyscale(float red, float green, float blue)
{
    return 0.3f * red + 0.59f * green + 0.11f * blue;
}

TaColor TaColor::InterpolateRGB(const TaColor& a, const TaColor& b, float t)
{
    const auto interpolate = [t](float from, float to) { return from * (1.0f - t) + to * t; };
    return TaColor(interpolate(a.GetRed(), b.GetRed()), interpolate(a.GetGreen(), b.GetGreen()),
        interpolate(a.GetBlue(), b.GetBlue()), 1.0f);
}

float TaColor::GetSqrColorDifferenceRGB(const TaColor& a, const TaColor& b)
{
    const float red = a.GetRed() - b.GetRed();
    const float green = a.GetGreen() - b.GetGreen();
    const float blue = a.GetBlue() - b.GetBlue();
    return red * red + green * green + blue * blue;
}

float TaColor::GetColorDifferenceSumRGB(const TaColor& a, const TaColor& b)
{
    return ((a.GetRed() - b.GetRed()) + (a.GetGreen() - b.GetGreen()) + (a.GetBlue() - b.GetBlue()))
        / 3.0f;
}

TaColor TaColor::CreateRandomColor()
{
    return drawFromProcess([](TaRandomSource& source) { return CreateRandomColor(source); });
}

TaColor TaColor::CreateRandomColor(TaRandomSource& source)
{
    const float blue = drawNumber(source);
    const float green = drawNumber(source);
    const float red = drawNumber(source);
    return TaColor(red, green, blue, 1.0f);
}

TaColor TaColor::CreateRandomColorSaturated()
{
    return drawFromProcess(
        [](TaRandomSource& source) { return CreateRandomColorSaturated(source); });
}

TaColor TaColor::CreateRandomColorSaturated(TaRandomSource& source)
{
    return FromHsv(drawNumber(source) * 360.0f, 1.0f, 1.0f);
}

void TaColor::SeedRandomColors(std::uint32_t seed) { s_seed.store(seed); }
