#pragma once

#include "tabase/tacolor.h"

/// A colour together with its hue, saturation and value, for interpolation in that space.
///
/// It is always opaque, deliberately: made of a colour with alpha, it does not keep it
/// (TaColorHSL does).
///
/// Threads: as a standard container.
/// Failure: none. A hue outside 0 to 360, or that is no number, is kept, with black as the colour.
class TABASE_API TaColorHSV
{
public:
    /// White.
    TaColorHSV() = default;
    /// Hue in degrees, 0 to 360; the others 0 to 1.
    TaColorHSV(float hue, float saturation, float value);
    /// The colour is made anew from the components, opaque.
    TaColorHSV(const TaColor& color); // NOLINT(google-explicit-constructor): the same colour
    TaColorHSV& operator=(const TaColor& color);

    /// Becomes what lies between a (t = 0) and b (t = 1). Components go linearly, the hue in
    /// degrees without wrapping around at 360; where one of the two has no saturation and the other
    /// has, the hue is the other's throughout.
    void Interpolate(const TaColorHSV& a, const TaColorHSV& b, float t);
    /// The colour that Interpolate comes to, in less time.
    static TaColor InterpolateColor(const TaColorHSV& a, const TaColorHSV& b, float t);

    const TaColor& GetColor() const { return m_color; }
    float GetHue() const { return m_hue; }
    float GetSaturation() const { return m_saturation; }
    float GetValue() const { return m_value; }

private:
    void updateColor();

    TaColor m_color;
    float m_hue = 0.0f;
    float m_saturation = 0.0f;
    float m_value = 1.0f;
};
