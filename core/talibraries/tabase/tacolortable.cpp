#include "tabase/tacolortable.h"

#include "groundwork/tucondition.h"
#include "groundwork/tustreamwriteascii.h"
#include "tabase/tacolormap.h"

#include <algorithm>
#include <array>
#include <limits>

TaColorTable::TaColorTable(unsigned long count)
    : TaColorTable(count, 0.0f, 1.0f)
{
}

TaColorTable::TaColorTable(unsigned long count, float minimum, float maximum)
    : m_minimum(minimum)
    , m_maximum(maximum)
{
    TuPreCondition<2>(u"a table has an entry at least, and as many as 32 bits count", TU_HERE,
        [count] { return count != 0 && count <= std::numeric_limits<std::uint32_t>::max(); });
    m_entries.SetSize(static_cast<std::uint32_t>(count));
}

void TaColorTable::SetMinMax(float minimum, float maximum)
{
    m_minimum = minimum;
    m_maximum = maximum;
}

void TaColorTable::GetMinMax(float& minimum, float& maximum) const
{
    minimum = m_minimum;
    maximum = m_maximum;
}

void TaColorTable::AddColorValue(const TaColor& color, float from, float to)
{
    const TaColor filling = color; // it may be one of the entries
    const std::uint32_t last = getEntry(to);
    for (std::uint32_t entry = getEntry(from); entry <= last; ++entry) {
        m_entries[entry] = filling;
    }
}

void TaColorTable::AddColorRamp(
    const TaColor& colorA, float valueA, const TaColor& colorB, float valueB)
{
    const TaColorHSV minColor(colorA);
    const TaColorHSV maxColor(colorB);
    TaColorMap ramp(valueA, valueB);
    ramp.SetMinColor(minColor);
    ramp.SetUnderflowColor(minColor.GetColor());
    ramp.SetMaxColor(maxColor);
    ramp.SetOverflowColor(maxColor.GetColor());
    const std::uint32_t last = getEntry(valueB);
    for (std::uint32_t entry = getEntry(valueA); entry <= last; ++entry) {
        m_entries[entry] = ramp.GetColorValue(getValue(entry));
    }
}

TaColor TaColorTable::GetColorValue(float value) const
{
    if (!(value >= m_minimum)) {
        return m_underflowColor; // also what is no number
    }
    return value > m_maximum ? m_overflowColor : m_entries[getEntry(value)];
}

/// In runs of a length that the compiler knows, in arrays that nothing else reaches, so that it
/// takes several values at once. The steps are those of GetColorValue and getEntry; the entries
/// have to be whole numbers in single precision, as those of any usual table are.
void TaColorTable::GetColorValues(const float* values, TaColor* colors, std::size_t count) const
{
    constexpr std::size_t kRun = 32;
    constexpr std::uint32_t kExact = 1u << 24;
    const float minimum = m_minimum;
    const float maximum = m_maximum;
    const float range = maximum - minimum;
    const auto size = static_cast<float>(m_entries.GetSize());
    const float last = size - 1.0f;
    const TaColor* const entries = m_entries.GetData();
    const std::uint32_t underflow = m_underflowColor.GetDword();
    const std::uint32_t overflow = m_overflowColor.GetDword();
    std::size_t done = 0;
    for (; m_entries.GetSize() <= kExact && count - done >= kRun; done += kRun) {
        std::array<float, kRun> run;
        std::array<std::int32_t, kRun> places;
        std::array<std::uint32_t, kRun> words;
        std::copy_n(values + done, kRun, run.data());
        for (std::size_t i = 0; i < kRun; ++i) {
            float place = (run[i] - minimum) * size / range;
            place = place > 0.0f ? place : 0.0f; // also where it is no number
            place = place < last ? place : last;
            places[i] = static_cast<std::int32_t>(place);
        }
        for (std::size_t i = 0; i < kRun; ++i) {
            words[i] = entries[places[i]].GetDword();
        }
        for (std::size_t i = 0; i < kRun; ++i) {
            words[i] = run[i] > maximum ? overflow : words[i];
            words[i] = run[i] >= minimum ? words[i] : underflow;
        }
        for (std::size_t i = 0; i < kRun; ++i) {
            colors[done + i] = TaColor::FromDword(words[i]);
        }
    }
    for (; done < count; ++done) {
        colors[done] = GetColorValue(values[done]);
    }
}

std::uint32_t TaColorTable::getEntry(float value) const
{
    const std::uint32_t count = m_entries.GetSize();
    const float place = (value - m_minimum) * static_cast<float>(count) / (m_maximum - m_minimum);
    // Clamped as a float, which may be too large for an integer. One that is less than the count in
    // single precision is less than the count, too.
    if (!(place > 0.0f)) {
        return 0;
    }
    return place < static_cast<float>(count) ? static_cast<std::uint32_t>(place) : count - 1;
}

float TaColorTable::getValue(std::uint32_t entry) const
{
    const std::uint32_t last = m_entries.GetSize() - 1;
    if (last == 0) {
        return m_minimum;
    }
    return static_cast<float>(entry) / static_cast<float>(last) * (m_maximum - m_minimum)
        + m_minimum;
}

void TaColorTable::dump(TuStreamWriteASCII& stream) const
{
    const std::uint32_t count = m_entries.GetSize();
    stream << u"TaColorTable: " << count << u" entries over " << m_minimum << u" .. " << m_maximum
           << u", below " << m_underflowColor.ToString() << u", above "
           << m_overflowColor.ToString() << u"\n";
    std::uint32_t first = 0; // of a run of equal entries
    for (std::uint32_t next = 1; next <= count; ++next) {
        if (next == count || m_entries[next] != m_entries[first]) {
            stream << u"  " << first << u" .. " << next - 1 << u": " << m_entries[first].ToString()
                   << u"\n";
            first = next;
        }
    }
}
