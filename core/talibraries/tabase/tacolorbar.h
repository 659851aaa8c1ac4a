#pragma once

#include "groundwork/tuarray.h"
#include "tabase/tacolortable.h"

/// The legend of a picture: a strip of all colours of a table, and where which value stands.
///
/// The application chooses the place, and draws the texts: the bar knows no letters.
///
///     const TaColorBar bar(*table, 16, 200);
///     bar.Draw(&picture[y * width + x], width);
///     for (const TaColorBar::STick& tick : bar.GetTicks())
///         DrawText(x + 20, y + tick.m_position, tick.m_text);
///
/// Ownership: the table belongs to the caller and outlives the bar.
/// Threads:   as a standard container, the table included.
/// Failure:   none but TuExceptionOutOfMemory for ticks.
class TABASE_API TaColorBar
{
public:
    enum EOrientation
    {
        eO_Vertical, // the minimum is at the bottom
        eO_Horizontal, // the minimum is on the left
    };

    struct STick
    {
        float m_value = 0.0f; // the nearest to what the text says
        float m_position = 0.0f; // in pixels from the top or left border of the bar
        CString m_text;
    };

    /// `width` and `height` in pixels.
    TaColorBar(const TaColorTable& table, std::uint32_t width, std::uint32_t height,
        EOrientation orientation = eO_Vertical);

    /// Fills `height` rows of `width` pixels, the top one first; the next row begins `rowLength`
    /// pixels after the last.
    void Draw(TaColor* pixels, std::size_t rowLength) const;

    /// Values 1, 2 or 5 times a power of ten apart, rising, `most` at most, and not more than the
    /// bar has pixels. None where the range is empty, reversed or not finite.
    TuArray<STick> GetTicks(unsigned int most = 7) const;

private:
    std::uint32_t getLength() const { return m_orientation == eO_Vertical ? m_height : m_width; }

    const TaColorTable& m_table;
    std::uint32_t m_width;
    std::uint32_t m_height;
    EOrientation m_orientation;
};
