#include "groundwork/tuset.h"

#include "containercases.h"
#include "groundwork/cstring.h"
#include "support/expectfailure.h"

#include <gtest/gtest.h>

#include <iterator>
#include <type_traits>
#include <vector>

namespace {

TEST(TuSetTest, HoldsEachKeyOnceAndNeverLetsItChange)
{
    static_assert(std::forward_iterator<TuSet<CString>::iterator>);
    static_assert(std::is_same_v<TuSet<CString, 17>::iterator::reference, const CString&>);

    TuSet<CString> set{ u"a", u"b", u"a" };
    EXPECT_EQ(set.GetCount(), 2u);
    EXPECT_TRUE(set.RemoveKey(*set.begin())); // the key looked for goes with its node
    EXPECT_EQ(std::distance(set.begin(), set.end()), 1);
    ExpectFailure<TuExceptionPreconditionViolation>([] { TuSet<int> none(10, 0); });
}

TEST(TuSetTest, ItsRecordKeepsTheOrderOfIteration)
{
    const TuSet<short> set{ 5, -1, 16, 3 }; // in the buckets 0, 15, 1, 0
    const std::vector<unsigned char> record{ 0, 0, 0, 0, 4, 0, 0, 0, 3, 0, 5, 0, 16, 0, 0xFF,
        0xFF };
    auto doubled = record;
    doubled[10] = 3;
    ExpectToReadOnlyWholeRecords(set, TuSet<short>{ 99 }, record, doubled);
}

} // namespace
