#pragma once

#include "tabase/tacolorhsv.h"

#include <cstddef>

/// Turns values of a range into colours between two, interpolated in HSV: TaColorHSV::Interpolate
/// says how.
///
/// Until it is told otherwise, a map goes from black to white over 0 to 1, with the default colours
/// below and above. For more than two colours, or many values, TaColorTable is the better choice.
///
/// Threads: as a standard container.
/// Failure: none.
class TABASE_API TaColorMap
{
public:
    TaColorMap() = default;
    TaColorMap(float minimum, float maximum);
    /// The same for other numbers: a literal 0 would also be a pointer to values.
    template <TaNumber Minimum, TaNumber Maximum>
    TaColorMap(Minimum minimum, Maximum maximum)
        : TaColorMap(static_cast<float>(minimum), static_cast<float>(maximum))
    {
    }
    /// From the smallest to the largest of the values that are numbers; 0 to 1 where none is.
    TaColorMap(const float* values, std::size_t count);
    virtual ~TaColorMap() = default;
    TaColorMap(const TaColorMap&) = default;
    TaColorMap& operator=(const TaColorMap&) = default;

    void SetMinColor(const TaColorHSV& color) { m_minColor = color; }
    void SetMaxColor(const TaColorHSV& color) { m_maxColor = color; }
    void SetOverflowColor(const TaColor& color) { m_overflowColor = color; }
    void SetUnderflowColor(const TaColor& color) { m_underflowColor = color; }
    void SetMinMaxValues(float minimum, float maximum);

    /// The underflow colour below the minimum, for what is no number, and where the range is empty;
    /// the overflow colour above the maximum. (A range with the minimum above the maximum has no
    /// other colours.) In a range of no finite length values show the minimum's colour, or black
    /// where their place in it is no number.
    virtual TaColor GetColorValue(float value) const;
    /// The same one by one, by way of the virtual GetColorValue; there is a colour for each value.
    void GetColorValues(const float* values, TaColor* colors, std::size_t count) const;

private:
    float m_minimum = 0.0f;
    float m_maximum = 1.0f;
    TaColorHSV m_minColor = TaColorHSV(0.0f, 0.0f, 0.0f);
    TaColorHSV m_maxColor;
    TaColor m_underflowColor = kTaDefaultUnderflowColor;
    TaColor m_overflowColor = kTaDefaultOverflowColor;
};
