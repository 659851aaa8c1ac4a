#include "groundwork/tuvariant.h"

#include "groundwork/tuexceptions.h"
#include "groundwork/tustreamreadbinary.h"
#include "support/brokenrecords.h"
#include "support/expectfailure.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace {

constexpr auto kInt64Max = std::numeric_limits<std::int64_t>::max();
constexpr double kTwoTo53 = 9007199254740992.0;
constexpr double kTwoTo63 = 9223372036854775808.0;

TEST(TuVariantTest, EachTypeBecomesItsKindAtTheSameWidthEverywhere)
{
    const std::pair<TuVariant, TuVariant::EVariantType> kinds[]
        = { { TuVariant(), TuVariant::eVT_Null }, { true, TuVariant::eVT_Bool },
              { static_cast<short>(-1), TuVariant::eVT_Int32 }, { -1, TuVariant::eVT_Int32 },
              { -1LL, TuVariant::eVT_Int64 }, { 1u, TuVariant::eVT_UInt32 },
              { 1ull, TuVariant::eVT_Int64 }, { "a", TuVariant::eVT_NarrowText },
              { TuVariant::FromPath(u"a"), TuVariant::eVT_PathText },
              { 1.5f, TuVariant::eVT_Double }, { u"a", TuVariant::eVT_WideText },
              { L"a", TuVariant::eVT_WideText }, { CString(u"a"), TuVariant::eVT_WideText } };
    for (const auto& [value, kind] : kinds) {
        EXPECT_EQ(value.GetType(), kind);
    }
    ExpectFailure<TuExceptionPreconditionViolation>([] { TuVariant value(~0ull); });
}

TEST(TuVariantTest, NumbersCompareByTheirExactValueWhateverTheirKinds)
{
    const std::vector<TuVariant> ascending{ TuVariant(), -HUGE_VAL,
        std::numeric_limits<std::int64_t>::min(), -1.5, -1, -0.5, false, 0.5, true, 5, 5.5, 6u,
        4294967295u, kTwoTo53, static_cast<std::int64_t>(kTwoTo53) + 1, kInt64Max, kTwoTo63,
        HUGE_VAL, std::nan(""), "", "10", u"9", TuVariant::FromPath(u"b"), u"\U0001F600",
        u"\uFF5E" };
    for (std::size_t i = 0; i < ascending.size(); ++i) {
        for (std::size_t j = 0; j < ascending.size(); ++j) {
            EXPECT_EQ(ascending[i] <=> ascending[j], i <=> j) << i << " and " << j;
        }
    }
    EXPECT_TRUE(TuVariant(5) == TuVariant(5.0) && TuVariant(true) == TuVariant(1u));
    EXPECT_TRUE(TuVariant(0.0) == TuVariant(-0.0) && TuVariant("a") == TuVariant(u"a"));
    EXPECT_EQ(TuVariant(std::nan("")), TuVariant(-std::nan("1")));
}

TEST(TuVariantTest, ConvertsWithDefinedResultsAtTheLimits)
{
    EXPECT_EQ(TuVariant(1e300).ToInt(), std::numeric_limits<int>::max());
    EXPECT_EQ(TuVariant(-HUGE_VAL).ToInt(), std::numeric_limits<int>::min());
    EXPECT_EQ(TuVariant(std::nan("")).ToInt(), 0);
    EXPECT_EQ(TuVariant(-1.9).ToInt(), -1);
    EXPECT_EQ(TuVariant(4294967295u).ToInt(), std::numeric_limits<int>::max());
    EXPECT_EQ(TuVariant(u"2.5").ToInt(), 2);
    EXPECT_EQ(TuVariant(kTwoTo63).ToInt64(), kInt64Max);
    // Not by way of double, whatever the parsers take in front.
    EXPECT_EQ(TuVariant(u" +9007199254740993").ToInt64(), 9007199254740993);
    EXPECT_EQ(TuVariant("99999999999999999999").ToInt64(), kInt64Max);
    EXPECT_EQ(TuVariant(u"1e400").ToDouble(), HUGE_VAL);
    EXPECT_EQ(TuVariant(u"-1e-400").ToDouble(), 0.0);

    EXPECT_FALSE(TuVariant().ToBool() || TuVariant(0.0).ToBool() || TuVariant(u"false").ToBool());
    EXPECT_TRUE(TuVariant("0.5").ToBool() && TuVariant("nan").ToBool());
    EXPECT_TRUE(TuVariant(0.5).ToBool() && TuVariant("true").ToBool() && TuVariant(u"2").ToBool());
    EXPECT_EQ(TuVariant(0.1).ToString(), u"0.1");
    EXPECT_EQ(TuVariant(true).ToString(), u"true");
    for (const char16_t* text : { u"", u"abc", u"1x", u"1 ", u"True" }) {
        EXPECT_THROW(TuVariant(text).ToInt(), TuException);
        EXPECT_THROW(TuVariant(text).ToBool(), TuException);
    }
}

TEST(TuVariantTest, EveryKindReadsBackAndABadRecordChangesNothing)
{
    const std::vector<TuVariant> values{ TuVariant(), true, -7, kInt64Max, 4294967295u,
        CStringA("a\0b", 3), TuVariant::FromPath(u"C:\\a"), -0.0, std::nan(""),
        CString(u"\U0001F600") };
    const auto read = [](const std::vector<unsigned char>& bytes, TuVariant& value) {
        ReadFromBytes(bytes, [&](TuStreamReadBinary& stream) { value.Serialize(stream); });
    };
    for (const TuVariant& value : values) {
        const auto bytes = WriteToBytes([&](auto& stream) { value.Serialize(stream); });
        TuVariant kept(u"kept");
        ExpectUnchangedByTruncatedRecords(bytes, kept, TuVariant(u"kept"));
        read(bytes, kept);
        EXPECT_EQ(kept, value);
        EXPECT_EQ(kept.GetType(), value.GetType());
    }
    TuVariant kept(3);
    ExpectFailure<TuExceptionWrongFileVersion>([&] { read({ 0, 0, 0, 0, 9 }, kept); });
    ExpectFailure<TuExceptionWrongFileVersion>([&] { read({ 1, 0, 0, 0, 0 }, kept); });
    EXPECT_EQ(kept, TuVariant(3));
}

} // namespace
