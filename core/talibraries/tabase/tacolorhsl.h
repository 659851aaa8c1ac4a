#pragma once

#include "tabase/tacolor.h"

/// A colour together with its hue, saturation and lightness, for interpolation in that space.
///
/// Made of a colour it keeps it as it is, alpha included. Made of components, or by interpolation,
/// it is opaque.
///
/// Threads: as a standard container.
/// Failure: none.
class TABASE_API TaColorHSL
{
public:
    /// White.
    TaColorHSL() = default;
    /// Hue in degrees, 0 to 360; the others 0 to 1.
    TaColorHSL(float hue, float saturation, float lightness);
    TaColorHSL(const TaColor& color); // NOLINT(google-explicit-constructor): the same colour
    TaColorHSL& operator=(const TaColor& color);

    /// Becomes what lies between a (t = 0) and b (t = 1). Components go linearly, the hue in
    /// degrees without wrapping around at 360. Colours without saturation, black and white have no
    /// hue to go from: the hue is b's where a is one, and a's where only b is.
    void Interpolate(const TaColorHSL& a, const TaColorHSL& b, float t);

    const TaColor& GetColor() const { return m_color; }
    float GetHue() const { return m_hue; }
    float GetSaturation() const { return m_saturation; }
    float GetLightness() const { return m_lightness; }

private:
    void updateColor();
    bool isChromatic() const;

    TaColor m_color;
    float m_hue = 0.0f;
    float m_saturation = 0.0f;
    float m_lightness = 1.0f;
};
