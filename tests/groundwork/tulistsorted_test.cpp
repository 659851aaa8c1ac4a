#include "groundwork/tulistsorted.h"

#include "groundwork/cstring.h"
#include "groundwork/tulist.h"
#include "support/memorystreams.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

struct ByFirst
{
    bool operator()(const CString& a, const CString& b) const { return a[0] < b[0]; }
};
using Sorted = TuListSorted<CString, 17, unsigned int, ByFirst>;

std::vector<CString> elementsOf(const Sorted& list) { return { list.begin(), list.end() }; }

TEST(TuListSortedTest, InsertsBehindEqualElements)
{
    Sorted list{ u"b1", u"a1", u"c1", u"b2" };
    list.Add(u"a2");
    EXPECT_EQ(*list.Add(u"b3"), u"b3");
    EXPECT_EQ(elementsOf(list), (std::vector<CString>{ u"a1", u"a2", u"b1", u"b2", u"b3", u"c1" }));
}

TEST(TuListSortedTest, SortRestoresTheOrderAfterAChange)
{
    Sorted list{ u"a1", u"b1", u"c1", u"d1" };
    list.GetHead() = u"c0";
    *std::prev(list.end()) = u"a4";
    list.Sort();
    EXPECT_EQ(elementsOf(list), (std::vector<CString>{ u"a4", u"b1", u"c0", u"c1" }));
}

TEST(TuListSortedTest, ARecordOutOfOrderIsReadIntoOrder)
{
    const auto record = WriteToBytes([](auto& stream) {
        TuList<CString>{ u"b1", u"a1", u"b0" }.Serialize(stream);
    });
    Sorted list{ u"z" };
    EXPECT_TRUE(ReadFromBytes(record, [&](auto& stream) { list.Serialize(stream); }));
    EXPECT_EQ(elementsOf(list), (std::vector<CString>{ u"a1", u"b1", u"b0" }));
}

TEST(TuListSortedTest, ALongRecordInTheWrongOrderIsReadInTime)
{
    constexpr int kElements = 200'000; // one by one, the tests' time limit would not do
    const std::vector<unsigned char> bytes = WriteToBytes([](TuStreamWriteBinary& stream) {
        stream << 0u << static_cast<unsigned int>(kElements);
        for (int i = kElements; i != 0; --i) {
            stream << i;
        }
    });
    TuListSorted<int> list;
    ReadFromBytes(bytes, [&](TuStreamReadBinary& stream) { list.Serialize(stream); });
    EXPECT_EQ(list.GetCount(), static_cast<unsigned int>(kElements));
    EXPECT_TRUE(std::is_sorted(list.begin(), list.end()));
}

} // namespace
