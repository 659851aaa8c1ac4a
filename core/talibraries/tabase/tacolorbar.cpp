#include "tabase/tacolorbar.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

namespace {

/// A step of `mantissa` (1, 2 or 5) times ten to the power of `exponent`; its multiples are exact
/// decimal numbers, and so are their texts.
struct SStep
{
    int m_mantissa;
    int m_exponent;

    /// The multiple, as near as a double gets to it.
    double GetMultiple(long long index) const
    {
        const std::string text
            = std::to_string(index * m_mantissa) + "e" + std::to_string(m_exponent);
        double value = 0.0;
        std::from_chars(text.data(), text.data() + text.size(), value);
        return value;
    }

    SStep GetNext() const
    {
        if (m_mantissa == 5) {
            return { 1, m_exponent + 1 };
        }
        return { m_mantissa == 1 ? 2 : 5, m_exponent };
    }

    CString GetText(long long index) const
    {
        constexpr int kLongest = 6; // decimals, or zeros, that are still written out
        char text[64];
        char* const end = text + sizeof(text);
        const double value = GetMultiple(index);
        const bool isPlain = m_exponent >= -kLongest && m_exponent < kLongest;
        const std::to_chars_result result = isPlain
            ? std::to_chars(text, end, value, std::chars_format::fixed, std::max(-m_exponent, 0))
            : std::to_chars(text, end, value, std::chars_format::scientific);
        return CString::FromUtf8(std::string_view(text, result.ptr));
    }
};

/// The multiples of the step that lie in the range once they are floats, as those of the table are,
/// so that a border of 0.7 has its tick; one more than `most` where there are more.
TuArray<TaColorBar::STick> makeTicks(SStep step, float minimum, float maximum, unsigned int most)
{
    TuArray<TaColorBar::STick> ticks;
    const double size = step.GetMultiple(1);
    const auto last = static_cast<long long>(std::ceil(maximum / size));
    for (auto index = static_cast<long long>(std::floor(minimum / size));
         index <= last && ticks.GetSize() <= most; ++index) {
        const auto value = static_cast<float>(step.GetMultiple(index));
        if (value >= minimum && value <= maximum) {
            ticks.Add({ value, 0.0f, step.GetText(index) });
        }
    }
    return ticks;
}

} // namespace

TaColorBar::TaColorBar(
    const TaColorTable& table, std::uint32_t width, std::uint32_t height, EOrientation orientation)
    : m_table(table)
    , m_width(width)
    , m_height(height)
    , m_orientation(orientation)
{
}

/// Each pixel shows the entry at its centre. By entries, and not by values, it is exact, and shows
/// the colours of a table whose range is empty or reversed, too.
void TaColorBar::Draw(TaColor* pixels, std::size_t rowLength) const
{
    const bool isVertical = m_orientation == eO_Vertical;
    const std::uint64_t length = getLength();
    for (std::uint32_t y = 0; y < m_height; ++y) {
        TaColor* const row = pixels + y * rowLength;
        for (std::uint32_t x = 0; x < m_width; ++x) {
            const std::uint64_t step = isVertical ? m_height - 1 - y : x;
            const std::uint64_t entry = (2 * step + 1) * m_table.GetCount() / (2 * length);
            row[x] = m_table.GetEntryColor(static_cast<std::uint32_t>(entry));
        }
    }
}

/// The finest step that does not give too many.
TuArray<TaColorBar::STick> TaColorBar::GetTicks(unsigned int most) const
{
    float minimum = 0.0f;
    float maximum = 0.0f;
    m_table.GetMinMax(minimum, maximum);
    const unsigned int limit = std::min(most, getLength());
    if (!std::isfinite(minimum) || !std::isfinite(maximum) || !(minimum < maximum) || limit == 0) {
        return {};
    }
    const float outermost = std::max(std::abs(minimum), std::abs(maximum));
    const float finest
        = outermost - std::nextafter(outermost, 0.0f); // what floats tell apart there
    const double range = static_cast<double>(maximum) - minimum;
    SStep step{ 1, static_cast<int>(std::floor(std::log10(range / limit))) - 1 };
    while (step.GetMultiple(1) < finest) {
        step = step.GetNext();
    }
    TuArray<STick> ticks = makeTicks(step, minimum, maximum, limit);
    while (ticks.GetSize() > limit) {
        step = step.GetNext();
        ticks = makeTicks(step, minimum, maximum, limit);
    }
    for (STick& tick : ticks) {
        const double part = (static_cast<double>(tick.m_value) - minimum) / range;
        const double place = m_orientation == eO_Vertical ? 1.0 - part : part;
        tick.m_position = static_cast<float>(place * getLength());
    }
    return ticks;
}
