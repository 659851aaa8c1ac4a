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

TEST(TuListSortedTest, ARecordOutOfOrderIsReadIntoOrder)
{
    const auto record = WriteToBytes([](auto& stream) {
        TuList<CString>{ u"b1", u"a1", u"b0" }.Serialize(stream);
    });
    Sorted list{ u"z" };
    EXPECT_TRUE(ReadFromBytes(record, [&](auto& stream) { list.Serialize(stream); }));
    EXPECT_EQ(elementsOf(list), (std::vector<CString>{ u"a1", u"b1", u"b0" }));

    list.GetHead() = u"c0";
    list.Sort(); // restores the order after a change, too
    EXPECT_EQ(elementsOf(list), (std::vector<CString>{ u"b1", u"b0", u"c0" }));
}

TEST(TuListSortedTest, ALongRecordInTheWrongOrderIsReadInTime)
{
    constexpr unsigned int kElements = 200'000; // one by one, the time limit would not do
    const auto bytes = WriteToBytes([&](auto& stream) {
        stream << 0u << kElements;
        for (unsigned int i = kElements; i != 0; --i) {
            stream << i;
        }
    });
    TuListSorted<unsigned int> list;
    ReadFromBytes(bytes, [&](auto& stream) { list.Serialize(stream); });
    EXPECT_EQ(list.GetCount(), kElements);
    EXPECT_TRUE(std::is_sorted(list.begin(), list.end()));
}

} // namespace
