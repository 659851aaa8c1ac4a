#include "tabase/tacolormap.h"

TaColorMap::TaColorMap(float minimum, float maximum)
    : m_minimum(minimum)
    , m_maximum(maximum)
{
}

TaColorMap::TaColorMap(const float* values, std::size_t count)
{
    bool found = false;
    for (std::size_t i = 0; i < count; ++i) {
        const float value = values[i];
        if (value != value) {
            continue;
        }
        if (!found || value < m_minimum) {
            m_minimum = value;
        }
        if (!found || value > m_maximum) {
            m_maximum = value;
        }
        found = true;
    }
}

void TaColorMap::SetMinMaxValues(float minimum, float maximum)
{
    m_minimum = minimum;
    m_maximum = maximum;
}

TaColor TaColorMap::GetColorValue(float value) const
{
    if (!(value >= m_minimum)) {
        return m_underflowColor; // also what is no number
    }
    if (value > m_maximum) {
        return m_overflowColor;
    }
    const float range = m_maximum - m_minimum;
    if (range == 0.0f) {
        return m_underflowColor;
    }
    return TaColorHSV::InterpolateColor(m_minColor, m_maxColor, (value - m_minimum) / range);
}

void TaColorMap::GetColorValues(const float* values, TaColor* colors, std::size_t count) const
{
    for (std::size_t i = 0; i < count; ++i) {
        colors[i] = GetColorValue(values[i]);
    }
}
