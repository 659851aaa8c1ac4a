#include "tabase/tacolorhsv.h"

namespace {

struct SComponents
{
    float m_hue;
    float m_saturation;
    float m_value;
};

inline SComponents interpolate(const TaColorHSV& a, const TaColorHSV& b, float t)
{
    const auto between = [t](float from, float to) { return from + (to - from) * t; };
    float hue = between(a.GetHue(), b.GetHue());
    if (a.GetSaturation() == 0.0f && b.GetSaturation() > 0.0f) {
        hue = b.GetHue();
    } else if (b.GetSaturation() == 0.0f && a.GetSaturation() > 0.0f) {
        hue = a.GetHue();
    }
    return { hue, between(a.GetSaturation(), b.GetSaturation()),
        between(a.GetValue(), b.GetValue()) };
}

} // namespace

TaColorHSV::TaColorHSV(float hue, float saturation, float value)
    : m_hue(hue)
    , m_saturation(saturation)
    , m_value(value)
{
    updateColor();
}

TaColorHSV::TaColorHSV(const TaColor& color) { *this = color; }

TaColorHSV& TaColorHSV::operator=(const TaColor& color)
{
    TaColor::RgbToHsv(
        color.GetRed(), color.GetGreen(), color.GetBlue(), m_hue, m_saturation, m_value);
    updateColor();
    return *this;
}

void TaColorHSV::Interpolate(const TaColorHSV& a, const TaColorHSV& b, float t)
{
    const SComponents between = interpolate(a, b, t);
    m_hue = between.m_hue;
    m_saturation = between.m_saturation;
    m_value = between.m_value;
    updateColor();
}

TaColor TaColorHSV::InterpolateColor(const TaColorHSV& a, const TaColorHSV& b, float t)
{
    const SComponents between = interpolate(a, b, t);
    return TaColor::FromHsv(between.m_hue, between.m_saturation, between.m_value);
}

void TaColorHSV::updateColor() { m_color = TaColor::FromHsv(m_hue, m_saturation, m_value); }
