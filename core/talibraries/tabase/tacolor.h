#pragma once

#include "groundwork/cstring.h"
#include "tabase/tabaseapi.h"

#include <cstdint>
#include <type_traits>

class TaRandomSource;
class TuStreamReadBinary;
class TuStreamWriteBinary;

/// What serves as a channel.
template <class T>
concept TaNumber = std::is_arithmetic_v<T>;

/// A colour as four floats, as graphics libraries have it; 1 is full, and opaque.
struct SColorFloat
{
    float m_red = 0.0f;
    float m_green = 0.0f;
    float m_blue = 0.0f;
    float m_alpha = 1.0f;
};

/// The library's one colour value: 32 bits, from the lowest byte on blue, green, red and alpha
/// (0xAARRGGBB as a number), with conversions to grey, HSV and HSL. Alpha 255 is opaque.
///
/// Numbers of any types are channels: all integers mean 0 to 255, and where one is a floating-point
/// number, all mean 0 to 1. An integer counts by its lower 32 bits, so a negative one wraps.
///
///     TaColor orange(255, 128, 0, 255);
///     TaColor shade(0.5, 0.25, 0, 1);
///
/// Stored and displayed colours depend on some peculiarities, which are deliberate. Channels out of
/// range are not clamped: each function says where they spill to. A float becomes an integer by
/// truncation toward zero, to a signed number of 32 bits; what is beyond becomes the nearest that
/// these hold, and what is no number 0. Arithmetic is in single precision, in a fixed order: the
/// same bits on every processor.
///
/// Threads: as a standard container; the random colours say more.
/// Failure: none but that of the streams.
class TABASE_API TaColor
{
public:
    /// Opaque white.
    constexpr TaColor() = default;
    /// ((alpha * 256 + red) * 256 + green) * 256 + blue, in 32 bits: what exceeds 255 is carried
    /// into the next byte. Deliberate.
    TaColor(unsigned long red, unsigned long green, unsigned long blue, unsigned long alpha);
    /// As RgbToDword.
    TaColor(float red, float green, float blue, float alpha);
    explicit TaColor(const SColorFloat& color);
    /// One of the two above, for numbers that would fit both.
    template <TaNumber Red, TaNumber Green, TaNumber Blue, TaNumber Alpha>
    TaColor(Red red, Green green, Blue blue, Alpha alpha)
        : TaColor(static_cast<Channel<Red, Green, Blue, Alpha>>(red),
            static_cast<Channel<Red, Green, Blue, Alpha>>(green),
            static_cast<Channel<Red, Green, Blue, Alpha>>(blue),
            static_cast<Channel<Red, Green, Blue, Alpha>>(alpha))
    {
    }
    /// From 0xAARRGGBB.
    static constexpr TaColor FromDword(std::uint32_t word)
    {
        TaColor color;
        color.m_word = word;
        return color;
    }
    /// Opaque, by HsvToRgb; black where the hue lies outside 0 to 360.
    static TaColor FromHsv(float hue, float saturation, float value);
    /// Opaque, by HslToRgb.
    static TaColor FromHsl(float hue, float saturation, float lightness);

    /// The byte divided by 255.
    float GetRed() const;
    float GetGreen() const;
    float GetBlue() const;
    float GetAlpha() const;
    /// 0xAARRGGBB.
    constexpr std::uint32_t GetDword() const { return m_word; }

    /// Clears the channel's byte and puts the value in by OR, without a mask: what exceeds 255
    /// spills into the higher bytes. Deliberate.
    void SetRed(unsigned long red);
    void SetGreen(unsigned long green);
    void SetBlue(unsigned long blue);
    void SetAlpha(unsigned long alpha);
    /// The same with the value times 255, truncated.
    void SetRed(float red);
    void SetGreen(float green);
    void SetBlue(float blue);
    void SetAlpha(float alpha);
    template <TaNumber T> void SetRed(T red) { SetRed(static_cast<Channel<T>>(red)); }
    template <TaNumber T> void SetGreen(T green) { SetGreen(static_cast<Channel<T>>(green)); }
    template <TaNumber T> void SetBlue(T blue) { SetBlue(static_cast<Channel<T>>(blue)); }
    template <TaNumber T> void SetAlpha(T alpha) { SetAlpha(static_cast<Channel<T>>(alpha)); }
    void SetTransparent() { m_word &= 0x00FFFFFFu; }
    void SetOpaque() { m_word |= 0xFF000000u; }

    /// 0x00BBGGRR, the colour reference of window systems.
    std::uint32_t ToColorRef() const;
    /// "0xRRGGBB", without alpha.
    CString ToString() const;

    /// Version 0 and the 32-bit word.
    void Serialize(TuStreamWriteBinary& stream) const;
    /// The colour stays as it was where the stream fails.
    void Serialize(TuStreamReadBinary& stream);

    friend constexpr bool operator==(const TaColor&, const TaColor&) = default;

    /// 0xAARRGGBB of channels times 255, truncated. Red and green are masked to their bytes, blue
    /// and alpha are not: a blue out of range spills into all other channels. Deliberate.
    static std::uint32_t RgbToDword(float red, float green, float blue, float alpha);
    /// Hue in degrees, 0 to 360; the others 0 to 1. The hue of a grey is 0.
    static void RgbToHsv(
        float red, float green, float blue, float& hue, float& saturation, float& value);
    /// Leaves the results as they are where the hue lies outside 0 to 360, or is no number.
    static void HsvToRgb(
        float hue, float saturation, float value, float& red, float& green, float& blue);
    /// The saturation of light colours is divided by 2 - maximum + minimum, deliberately, and not,
    /// as textbooks do, by 2 - maximum - minimum: it is smaller, and HslToRgb does not invert it.
    static void RgbToHsl(
        float red, float green, float blue, float& hue, float& saturation, float& lightness);
    static void HslToRgb(
        float hue, float saturation, float lightness, float& red, float& green, float& blue);

    /// The same scale as the channels: 0 to 255.
    static std::uint32_t RgbToGreyscale(unsigned long red, unsigned long green, unsigned long blue);
    /// The same scale as the channels: 0 to 1.
    static float RgbToGreyscale(float red, float green, float blue);
    template <TaNumber Red, TaNumber Green, TaNumber Blue>
    static auto RgbToGreyscale(Red red, Green green, Blue blue)
    {
        return RgbToGreyscale(static_cast<Channel<Red, Green, Blue>>(red),
            static_cast<Channel<Red, Green, Blue>>(green),
            static_cast<Channel<Red, Green, Blue>>(blue));
    }

    /// From a (t = 0) to b (t = 1), opaque whatever their alphas.
    static TaColor InterpolateRGB(const TaColor& a, const TaColor& b, float t);
    /// The sum of the squared differences of the channels, 0 to 3, without alpha.
    static float GetSqrColorDifferenceRGB(const TaColor& a, const TaColor& b);
    /// The mean of the signed differences of the channels: opposite ones cancel, so that red and
    /// green differ by 0. Deliberate.
    static float GetColorDifferenceSumRGB(const TaColor& a, const TaColor& b);

    /// Opaque, from three numbers of the process's source, for blue, green and red.
    /// Any thread may call it.
    static TaColor CreateRandomColor();
    static TaColor CreateRandomColor(TaRandomSource& source);
    /// Opaque, of full saturation and value, from one number of the source.
    static TaColor CreateRandomColorSaturated();
    static TaColor CreateRandomColorSaturated(TaRandomSource& source);
    /// Starts the process's source anew; it starts with 1.
    static void SeedRandomColors(std::uint32_t seed);

private:
    template <class... Numbers>
    using Channel = std::conditional_t<(std::is_integral_v<Numbers> && ...), unsigned long, float>;

    std::uint32_t m_word = 0xFFFFFFFFu;
};

static_assert(sizeof(TaColor) == 4, "arrays of colours are pictures");

/// What tables and maps show below and above their range, and for what is no number, until they are
/// told otherwise: two greys, which differ from all colours that have a hue.
inline constexpr TaColor kTaDefaultUnderflowColor = TaColor::FromDword(0xFF404040u);
inline constexpr TaColor kTaDefaultOverflowColor = TaColor::FromDword(0xFFC0C0C0u);
