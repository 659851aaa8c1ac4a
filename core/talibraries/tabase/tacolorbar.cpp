#include "tabase/tacolorbar.h"

TaColorBar::TaColorBar(
    const TaColorTable& table, std::uint32_t width, std::uint32_t height, EOrientation orientation)
    : m_table(table)
    , m_width(width)
    , m_height(height)
    , m_orientation(orientation)
{
}

void TaColorBar::Draw(TaColor* pixels, std::size_t rowLength) const
{
    const bool isVertical = m_orientation == eO_Vertical;
    const std::uint64_t length = isVertical ? m_height : m_width;
    for (std::uint32_t y = 0; y < m_height; ++y) {
        TaColor* const row = pixels + y * rowLength;
        for (std::uint32_t x = 0; x < m_width; ++x) {
            const std::uint64_t step = isVertical ? m_height - 1 - y : x;
            row[x] = m_table.GetEntryColor(
                static_cast<std::uint32_t>((2 * step + 1) * m_table.GetCount() / (2 * length)));
        }
    }
}

TuArray<TaColorBar::STick> TaColorBar::GetTicks(unsigned int) const { return {}; }
