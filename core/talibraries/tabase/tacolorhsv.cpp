#include "tabase/tacolorhsv.h"

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
    float hue = a.m_hue + (b.m_hue - a.m_hue) * t;
    if (a.m_saturation == 0.0f && b.m_saturation > 0.0f) {
        hue = b.m_hue;
    } else if (b.m_saturation == 0.0f && a.m_saturation > 0.0f) {
        hue = a.m_hue;
    }
    const float saturation = a.m_saturation + (b.m_saturation - a.m_saturation) * t;
    const float value = a.m_value + (b.m_value - a.m_value) * t;
    *this = TaColorHSV(hue, saturation, value); // only now: a or b may be this object
}

void TaColorHSV::updateColor()
{
    float red = 0.0f; // black, where the hue lies outside
    float green = 0.0f;
    float blue = 0.0f;
    TaColor::HsvToRgb(m_hue, m_saturation, m_value, red, green, blue);
    m_color = TaColor(red, green, blue, 1.0f);
}
