#include "tabase/tacolortable.h"

#include "support/allocationfailure.h"
#include "support/expectfailure.h"
#include "support/testrandom.h"
#include "tabase/tacolorbar.h"
#include "tabase/tacolormap.h"
#include "tabase/tacolortables.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

const TaColor kUnder(1, 2, 3, 4);
const TaColor kOver(5, 6, 7, 8);
const TaColor kWhite;
const TaColor kRed(255, 0, 0, 255);
const TaColor kBlue(0, 0, 255, 128);

/// Shows what a derived class sees, on the stack, too.
class Table : public TaColorTable
{
public:
    explicit Table(unsigned long count, float minimum = 0.0f, float maximum = 1.0f)
        : TaColorTable(count, minimum, maximum)
    {
        SetUnderflowColor(kUnder);
        SetOverflowColor(kOver);
        for (std::uint32_t entry = 0; entry < GetCount(); ++entry) {
            SetEntryColor(entry, TaColor::FromDword(entry));
        }
    }
    using TaColorTable::getEntry;
    using TaColorTable::getValue;
};

std::vector<std::uint32_t> entriesOf(const TaColorTable& table)
{
    std::vector<std::uint32_t> words;
    for (std::uint32_t entry = 0; entry < table.GetCount(); ++entry) {
        words.push_back(table.GetEntryColor(entry).GetDword());
    }
    return words;
}

template <class Colors>
std::vector<TaColor> lookUp(const Colors& colors, const std::vector<float>& values)
{
    std::vector<TaColor> found(values.size());
    colors.GetColorValues(values.data(), found.data(), values.size());
    return found;
}

TEST(TaColorTableTest, EntriesDivideTheRangeAndValuesReachBothEnds)
{
    const Table table(4);
    EXPECT_EQ(table.getEntry(0.5f), 2u);
    EXPECT_EQ(table.getEntry(1.0f), 3u);
    EXPECT_EQ(table.getEntry(kNan), 0u);
    EXPECT_EQ(table.getValue(1), 1.0f / 3.0f); // not the inverse of getEntry
    EXPECT_EQ(Table(1, 5.0f, 6.0f).getValue(0), 5.0f);
}

TEST(TaColorTableTest, RefusesCountsThatItCannotHold)
{
    ExpectFailure<TuExceptionPreconditionViolation>([] { const TaColorTable table(0); });
    if constexpr (sizeof(unsigned long) > sizeof(std::uint32_t)) {
        ExpectFailure<TuExceptionPreconditionViolation>(
            [] { const TaColorTable table(1ul << 31 << 1); });
    }
    const AllocationFailure failure(1);
    ExpectFailure<TuExceptionOutOfMemory>([] { const TaColorTable table(1000); });
}

/// Against the formula written out, with unusual values and ranges, one by one and all at once.
TEST(TaColorTableTest, LooksUpByTheFormula)
{
    auto random = MakeTestRandom();
    const auto draw = [&](float low, float high) {
        return std::uniform_real_distribution<float>(low, high)(random);
    };
    for (int round = 0; round < 60; ++round) {
        const auto count = static_cast<std::uint32_t>(std::exp(draw(0.0f, 9.0f)));
        const float minimum = draw(-10.0f, 10.0f);
        const float maximum = round % 10 == 0 ? minimum : minimum + draw(-1.0f, 20.0f);
        const Table table(count, minimum, maximum);
        std::vector<float> values{ kNan, kInfinity, -kInfinity, minimum, maximum,
            std::nextafter(minimum, -100.0f), std::nextafter(maximum, 100.0f), -0.0f };
        for (int i = 0; i < 500; ++i) {
            values.push_back(draw(minimum - 1.0f, minimum + 21.0f));
        }
        const std::vector<TaColor> found = lookUp(table, values);
        for (std::size_t i = 0; i < values.size(); ++i) {
            const float value = values[i];
            TaColor expected = value >= minimum ? kOver : kUnder; // below is tested first
            if (value >= minimum && value <= maximum) {
                const float size = static_cast<float>(count);
                const float place = (value - minimum) * size / (maximum - minimum);
                const float entry = place >= size ? size - 1.0f : std::trunc(place);
                expected = TaColor::FromDword(entry > 0.0f ? static_cast<std::uint32_t>(entry) : 0);
            }
            EXPECT_EQ(table.GetColorValue(value), expected) << value << " seed " << GetTestSeed();
            EXPECT_EQ(found[i], expected) << value << " seed " << GetTestSeed();
        }
    }
}

TEST(TaColorTableTest, BandsIncludeBothEndsAndAreClamped)
{
    TaColorTable table(4);
    table.AddColorValue(kRed, 0.3f, 0.6f);
    const std::uint32_t red = kRed.GetDword();
    const std::uint32_t white = kWhite.GetDword();
    EXPECT_EQ(entriesOf(table), (std::vector<std::uint32_t>{ white, red, red, white }));
    table.AddColorValue(kBlue, 0.6f, 0.3f); // nothing
    EXPECT_EQ(entriesOf(table), (std::vector<std::uint32_t>{ white, red, red, white }));
    table.AddColorValue(kBlue, 0.9f, 0.8f); // one entry, though the values are the wrong way round
    table.AddColorValue(kWhite, -5.0f, -4.0f); // the first entry
    const TaColorTable copy(table);
    table.AddColorValue(kRed, -1e30f, 1e30f);
    EXPECT_EQ(entriesOf(copy), (std::vector<std::uint32_t>{ white, red, red, kBlue.GetDword() }));
    EXPECT_EQ(entriesOf(table), (std::vector<std::uint32_t>(4, red)));
    EXPECT_EQ(copy.ToString(),
        u"TaColorTable: 4 entries over 0 .. 1, below 0x404040, above 0xC0C0C0\n"
        u"  0 .. 0: 0xFFFFFF\n  1 .. 2: 0xFF0000\n  3 .. 3: 0x0000FF\n");
}

TEST(TaColorTableTest, RampsAreOpaqueAndGoThroughTheHues)
{
    TaColorTable table(5);
    table.AddColorRamp(kRed, 0.25f, kBlue, 0.75f);
    TaColorHSV between;
    between.Interpolate(kRed, TaColorHSV(kBlue), 0.5f);
    // The values of the entries are 0.25, 0.5, 0.75.
    EXPECT_EQ(entriesOf(table),
        (std::vector<std::uint32_t>{ kWhite.GetDword(), 0xFFFF0000u, between.GetColor().GetDword(),
            0xFF0000FFu, kWhite.GetDword() }));
    table.AddColorRamp(kBlue, 2.0f, kRed, 3.0f); // the last entry, whose value lies below
    EXPECT_EQ(table.GetEntryColor(4).GetDword(), 0xFF0000FFu);
    TaColorTable single(1, 3.0f, 4.0f);
    single.AddColorRamp(kBlue, 3.0f, kRed, 4.0f);
    EXPECT_EQ(single.GetColorValue(3.5f).GetDword(), 0xFF0000FFu);
}

TEST(TaColorMapTest, AnswersInTheOrderBelowAboveEmpty)
{
    TaColorMap map(0, 4);
    map.SetMinColor(kRed);
    map.SetMaxColor(TaColor(0, 255, 0, 255));
    map.SetUnderflowColor(kUnder);
    map.SetOverflowColor(kOver);
    EXPECT_EQ(lookUp(map, { -0.1f, 0.0f, 2.0f, 4.0f, 4.1f, kNan }),
        (std::vector<TaColor>{
            kUnder, kRed, TaColor(255, 255, 0, 255), TaColor(0, 255, 0, 255), kOver, kUnder }));
    map.SetMinMaxValues(3.0f, 3.0f);
    EXPECT_EQ(lookUp(map, { 2.0f, 3.0f, 4.0f }), (std::vector<TaColor>{ kUnder, kUnder, kOver }));
    map.SetMinMaxValues(4.0f, 3.0f); // reversed
    EXPECT_EQ(lookUp(map, { 3.5f, 4.0f, 5.0f }), (std::vector<TaColor>{ kUnder, kOver, kOver }));
    const TaColor black(0, 0, 0, 255);
    map.SetMinMaxValues(0.0f, kInfinity);
    EXPECT_EQ(
        lookUp(map, { -1.0f, 5.0f, kInfinity }), (std::vector<TaColor>{ kUnder, kRed, black }));
    map.SetMinMaxValues(-kInfinity, kNan);
    EXPECT_EQ(lookUp(map, { -kInfinity, 5.0f }), (std::vector<TaColor>{ black, black }));
    Table table(40, -kInfinity, kInfinity);
    const std::vector<TaColor> first(40, table.GetEntryColor(0));
    EXPECT_EQ(lookUp(table, std::vector<float>(40, 5.0f)), first);
    table.SetMinMax(-3e38f, 3e38f);
    EXPECT_EQ(lookUp(table, std::vector<float>(40, 2e38f)), first);
    EXPECT_EQ(table.GetColorValue(2e38f), first[0]);
}

TEST(TaColorMapTest, TakesItsRangeFromTheValuesThatAreNumbers)
{
    const std::vector<float> values{ kNan, -6.0f, -14.0f, kNan, -2.0f };
    const TaColorMap map(values.data(), values.size());
    EXPECT_EQ(lookUp(map, { -14.0f, -8.0f, -2.0f, -1.9f }),
        (std::vector<TaColor>{
            TaColor(0, 0, 0, 255), TaColor(0.5, 0.5, 0.5, 1), kWhite, kTaDefaultOverflowColor }));
    const TaColorMap none(values.data(), 1); // 0 to 1
    EXPECT_EQ(lookUp(none, { 0.0f, 1.0f, -0.1f }),
        (std::vector<TaColor>{ TaColor(0, 0, 0, 255), kWhite, kTaDefaultUnderflowColor }));
}

/// CIE L*, 0 to 100, of a colour in sRGB.
double lightnessOf(TaColor color)
{
    const auto linear
        = [](double c) { return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
    const double y = 0.2126 * linear(color.GetRed()) + 0.7152 * linear(color.GetGreen())
        + 0.0722 * linear(color.GetBlue());
    return y > 0.008856 ? 116.0 * std::cbrt(y) - 16.0 : 903.3 * y;
}

TEST(TaColorTablesTest, LightnessGoesEvenlyFromOneEndToTheOther)
{
    for (const auto& table : { TaColorTables::CreateViridis(), TaColorTables::CreateCividis() }) {
        const double first = lightnessOf(table->GetEntryColor(0));
        const double step = (lightnessOf(table->GetEntryColor(255)) - first) / 255.0;
        for (std::uint32_t entry = 1; entry < 256; ++entry) {
            const double lightness = lightnessOf(table->GetEntryColor(entry));
            EXPECT_GE(lightness, lightnessOf(table->GetEntryColor(entry - 1)) - 0.15) << entry;
            EXPECT_NEAR(lightness, first + step * entry, 2.0) << entry;
        }
    }
    const auto viridis = TaColorTables::CreateViridis(256, 0.0f, 40.0f);
    EXPECT_EQ(viridis->GetColorValue(0.0f), TaColor(68, 1, 84, 255));
    EXPECT_EQ(viridis->GetColorValue(40.0f), TaColor(253, 231, 37, 255));
    const auto diverging = TaColorTables::CreateCoolWarm(513);
    for (std::uint32_t entry = 0; entry < 256; ++entry) {
        EXPECT_NEAR(lightnessOf(diverging->GetEntryColor(entry)),
            lightnessOf(diverging->GetEntryColor(512 - entry)), 1.5);
    }
    EXPECT_EQ(diverging->GetEntryColor(256), TaColor(221, 221, 221, 255));
    EXPECT_EQ(TaColorTables::CreateCividis(1)->GetEntryColor(0), TaColor(0, 34, 78, 255));
}

TEST(TaColorBarTest, ShowsAllEntriesAndNothingBesideItsRows)
{
    const Table table(3, 1.0f, 0.0f); // reversed: the bar shows the entries all the same
    std::vector<TaColor> pixels(6 * 3, kRed);
    const TaColorBar horizontal(table, 5, 2, TaColorBar::eO_Horizontal);
    horizontal.Draw(pixels.data(), 6);
    for (const std::size_t row : { 0u, 6u }) {
        for (std::uint32_t x = 0; x < 5; ++x) {
            EXPECT_EQ(pixels[row + x].GetDword(), (2 * x + 1) * 3 / 10);
        }
        EXPECT_EQ(pixels[row + 5], kRed);
    }
    EXPECT_EQ(pixels[12], kRed);
    TaColorBar(table, 1, 3).Draw(pixels.data(), 6);
    EXPECT_EQ(pixels[0].GetDword(), 2u); // the maximum is at the top
    EXPECT_EQ(pixels[12].GetDword(), 0u);
    EXPECT_TRUE(horizontal.GetTicks().IsEmpty());
}

TEST(TaColorBarTest, TicksAreRoundNumbersWithTheirTexts)
{
    const auto textsOf = [](float minimum, float maximum, unsigned int most = 7) {
        const Table table(4, minimum, maximum);
        CString texts;
        for (const TaColorBar::STick& tick : TaColorBar(table, 9, 100).GetTicks(most)) {
            EXPECT_TRUE(tick.m_value >= minimum && tick.m_value <= maximum);
            texts += tick.m_text + u" ";
        }
        return texts.ToUtf8();
    };
    EXPECT_EQ(textsOf(0.1f, 0.7f), "0.1 0.2 0.3 0.4 0.5 0.6 0.7 "); // both borders are floats
    EXPECT_EQ(textsOf(-3.0f, 3.0f, 3), "-2 0 2 ");
    EXPECT_EQ(textsOf(-3.0f, 30.0f, 1), "0 ");
    EXPECT_EQ(textsOf(1e8f, 1e8f + 24.0f), "100000000 100000010 100000020 "); // floats: 8 apart
    EXPECT_EQ(textsOf(0.0f, 3e12f, 4), "0e+00 1e+12 2e+12 3e+12 ");
    EXPECT_EQ(textsOf(0.0f, std::numeric_limits<float>::denorm_min()), "0e+00 2e-45 ");
    EXPECT_NE(textsOf(-std::numeric_limits<float>::max(), std::numeric_limits<float>::max()), "");
    EXPECT_EQ(textsOf(0.0f, kInfinity) + textsOf(kNan, 1.0f) + textsOf(2.0f, 2.0f), "");
    EXPECT_EQ(textsOf(0.0f, 1.0f, 0), "");

    const Table table(4, -1.0f, 3.0f);
    const TuArray<TaColorBar::STick> ticks = TaColorBar(table, 9, 100).GetTicks(5);
    ASSERT_EQ(ticks.GetSize(), 5u);
    EXPECT_EQ(ticks[1].m_value, 0.0f);
    EXPECT_EQ(ticks[1].m_position, 75.0f); // from the top
}

} // namespace
