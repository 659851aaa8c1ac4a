#include "tabase/tacolorhsl.h"

TaColorHSL::TaColorHSL(float hue, float saturation, float lightness)
    : m_hue(hue)
    , m_saturation(saturation)
    , m_lightness(lightness)
{
    updateColor();
}

TaColorHSL::TaColorHSL(const TaColor& color) { *this = color; }

TaColorHSL& TaColorHSL::operator=(const TaColor& color)
{
    m_color = color;
    TaColor::RgbToHsl(
        color.GetRed(), color.GetGreen(), color.GetBlue(), m_hue, m_saturation, m_lightness);
    return *this;
}

void TaColorHSL::Interpolate(const TaColorHSL& a, const TaColorHSL& b, float t)
{
    float hue = a.m_hue + (b.m_hue - a.m_hue) * t;
    if (!a.isChromatic()) {
        hue = b.m_hue; // also where b has none
    } else if (!b.isChromatic()) {
        hue = a.m_hue;
    }
    const float saturation = a.m_saturation + (b.m_saturation - a.m_saturation) * t;
    const float lightness = a.m_lightness + (b.m_lightness - a.m_lightness) * t;
    *this = TaColorHSL(hue, saturation, lightness); // only now: a or b may be this object
}

bool TaColorHSL::isChromatic() const
{
    return m_saturation != 0.0f && m_lightness != 0.0f && m_lightness != 1.0f;
}

void TaColorHSL::updateColor() { m_color = TaColor::FromHsl(m_hue, m_saturation, m_lightness); }
