#pragma once

#include "groundwork/tuarray.h"
#include "groundwork/tuidumpable.h"
#include "groundwork/tureferencecounted.h"
#include "tabase/tacolor.h"

#include <cstddef>
#include <cstdint>

/// Turns values of a range into colours by looking them up: a fixed number of entries, evenly
/// spread over the range, that bands and ramps fill.
///
///     const auto table = TuMake<TaColorTable>(256u, 0.0f, 40.0f);
///     table->AddColorRamp(blue, 0.0f, red, 40.0f);
///     table->AddColorValue(white, 19.5f, 20.5f);
///     table->GetColorValues(depths, colors, count);
///
/// Entries are white until they are filled. TaColorTables has tables ready for use.
///
/// Ownership: counted. A copy has entries of its own.
/// Threads:   as a standard container: many readers, or one writer.
/// Failure:   TuExceptionPreconditionViolation for a count of 0, or of more than 2^32 - 1;
///            TuExceptionOutOfMemory for one that memory does not hold.
class TABASE_API TaColorTable : public TuReferenceCounted, public TuIDumpable<1>
{
public:
    /// Over 0 to 1.
    explicit TaColorTable(unsigned long count);
    TaColorTable(unsigned long count, float minimum, float maximum);
    TaColorTable(const TaColorTable& other) = default;
    TaColorTable& operator=(const TaColorTable& other) = default;
    ~TaColorTable() override = default;

    void SetMinMax(float minimum, float maximum);
    void GetMinMax(float& minimum, float& maximum) const;
    void SetOverflowColor(const TaColor& color) { m_overflowColor = color; }
    const TaColor& GetOverflowColor() const { return m_overflowColor; }
    void SetUnderflowColor(const TaColor& color) { m_underflowColor = color; }
    const TaColor& GetUnderflowColor() const { return m_underflowColor; }

    /// Fills the entries of the values from `from` to `to`, both included. Values outside the range
    /// mean the first or the last entry. Nothing is written where the entry of `from` comes after
    /// that of `to`.
    void AddColorValue(const TaColor& color, float from, float to);
    /// Fills the entries of the values from `valueA` to `valueB` with colours between the two, as a
    /// TaColorMap interpolates them: all opaque.
    void AddColorRamp(const TaColor& colorA, float valueA, const TaColor& colorB, float valueB);

    /// The underflow colour below the minimum and for what is no number, the overflow colour above
    /// the maximum. In a range of no finite length the first entry.
    TaColor GetColorValue(float value) const;
    /// The same one by one, in less time; there is a colour for each value.
    void GetColorValues(const float* values, TaColor* colors, std::size_t count) const;

    std::uint32_t GetCount() const { return m_entries.GetSize(); }
    /// Throws TuExceptionPreconditionViolation for an entry that is not there.
    const TaColor& GetEntryColor(std::uint32_t entry) const { return m_entries.GetAt(entry); }
    void SetEntryColor(std::uint32_t entry, const TaColor& color)
    {
        m_entries.GetAt(entry) = color;
    }

protected:
    /// (value - minimum) * count / (maximum - minimum), truncated, within 0 to count - 1; 0 for
    /// what is no number.
    std::uint32_t getEntry(float value) const;
    /// entry / (count - 1) * (maximum - minimum) + minimum; the minimum for the only entry. The
    /// divisor is not that of getEntry, deliberately: the first and the last entry show the borders
    /// of the range.
    float getValue(std::uint32_t entry) const;

    void dump(TuStreamWriteASCII& stream) const override;

private:
    TuArray<TaColor> m_entries;
    float m_minimum;
    float m_maximum;
    TaColor m_underflowColor = kTaDefaultUnderflowColor;
    TaColor m_overflowColor = kTaDefaultOverflowColor;
};
