#include "groundwork/tuset.h"

#include "groundwork/cstring.h"
#include "support/brokenrecords.h"
#include "support/expectfailure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <type_traits>
#include <vector>

namespace {

/// A key without an operator==, equal by its number alone.
struct SLabel
{
    unsigned int number = 0;
    CString text;
};

} // namespace

template <> struct TuHashKey<SLabel>
{
    static unsigned int Compute(const SLabel& key) { return key.number; }
    static bool AreEqual(const SLabel& a, const SLabel& b) { return a.number == b.number; }
};

namespace {

TEST(TuSetTest, HoldsEachKeyOnceAndNeverLetsItChange)
{
    static_assert(std::forward_iterator<TuSet<CString>::iterator>);
    static_assert(std::is_same_v<TuSet<CString, 17>::iterator::reference, const CString&>);

    TuSet<CString> set{ u"a", u"b", u"a" };
    EXPECT_EQ(set.GetCount(), 2u);
    EXPECT_FALSE(set.Add(u"b"));
    EXPECT_TRUE(set.Add(u"c"));
    EXPECT_TRUE(set.RemoveKey(*set.begin()));
    EXPECT_EQ(std::distance(set.begin(), set.end()), 2);
    const TuSet<CString> copy(set);
    EXPECT_EQ(copy, set);
    set.Erase(set.Find(*copy.begin()));
    EXPECT_NE(copy, set);
    TuSet<CString> moved(std::move(set));
    EXPECT_EQ(moved.GetCount(), 1u);
    ExpectFailure<TuExceptionPreconditionViolation>([] { TuSet<int> none(10, 0); });
}

TEST(TuSetTest, KeysOfOnesOwnHashAndCompareAsTheirSpecialisationSays)
{
    TuSet<SLabel> set;
    EXPECT_TRUE(set.Add({ 1, u"first" }));
    EXPECT_FALSE(set.Add({ 1, u"second" }));
    EXPECT_TRUE(set.Add({ 18, u"in the same bucket" }));
    EXPECT_EQ(set.Find({ 1, u"" })->text, u"first");
}

TEST(TuSetTest, ReadingAndWritingAgainGivesTheSameBytes)
{
    TuSet<int> set;
    for (const int key : { 5, -1, 3, 300, 4 }) {
        set.Add(key);
    }
    const auto write = [](const TuSet<int>& source) {
        return WriteToBytes([&](auto& stream) { source.Serialize(stream); });
    };
    const auto record = write(set);
    EXPECT_EQ(record.size(), 4u + 4 + 5 * 4);
    TuSet<int> read{ 99 };
    const TuSet<int> before(read);
    ExpectUnchangedByTruncatedRecords(record, read, before);
    auto doubled = record;
    std::copy_n(record.begin() + 8, 4, doubled.begin() + 12);
    EXPECT_THROW(
        ReadFromBytes(doubled, [&](auto& stream) { read.Serialize(stream); }), TuExceptionStream);
    EXPECT_EQ(read, before);
    EXPECT_TRUE(ReadFromBytes(record, [&](auto& stream) { read.Serialize(stream); }));
    EXPECT_EQ(read, set);
    EXPECT_EQ(write(read), record);
}

} // namespace
