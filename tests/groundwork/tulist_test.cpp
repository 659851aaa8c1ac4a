#include "groundwork/tulist.h"

#include "groundwork/cstring.h"
#include "groundwork/tuscopedpointer.h"
#include "support/allocationlimit.h"
#include "support/brokenrecords.h"
#include "support/expectfailure.h"
#include "support/fragile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <vector>

namespace {

using Texts = TuList<CString>;

TEST(TuListTest, ElementsStayWhereTheyAreWhileOthersComeAndGo)
{
    Texts list{ u"b", u"d" };
    const CString* const kept = &list.GetHead();
    const auto d = list.Find(u"d");
    list.InsertBefore(d, u"c");
    list.InsertAfter(d, u"e");
    list.AddHead(u"a");
    list.InsertBefore(list.end(), u"f");
    EXPECT_EQ(list, (Texts{ u"a", u"b", u"c", u"d", u"e", u"f" }));
    EXPECT_EQ(list.RemoveHead(), u"a");
    EXPECT_EQ(list.RemoveTail(), u"f");
    EXPECT_TRUE(list.Remove(*d));
    EXPECT_FALSE(list.Remove(u"d"));
    EXPECT_EQ(list, (Texts{ u"b", u"c", u"e" }));
    EXPECT_EQ(kept, &list.GetHead());
}

TEST(TuListTest, TakesElementsOfItself)
{
    Texts list{ u"a text too long to lie in the string object", u"b" };
    list.Add(list.GetHead());
    list.AddHead(list.GetTail());
    list.Append(list);
    EXPECT_EQ(list.GetCount(), 8u);
    EXPECT_EQ(std::count(list.begin(), list.end(), u"b"), 2);
    list.Remove(list.GetHead()); // the value looked for goes with its node
    Texts& same = list;
    list = same;
    EXPECT_EQ(list.GetCount(), 7u);
}

TEST(TuListTest, IsWalkedAndThinnedOutByIterators)
{
    static_assert(std::bidirectional_iterator<Texts::iterator>);
    static_assert(std::is_same_v<TuList<int, 1>::iterator::reference, const int&>);
    static_assert(std::is_convertible_v<Texts::iterator, Texts::const_iterator>);
    static_assert(!std::is_convertible_v<Texts::const_iterator, Texts::iterator>);

    TuList<int> list;
    std::ranges::copy(std::vector<int>{ 1, 2, 3, 4, 5 }, std::back_inserter(list));
    for (int& value : list) {
        value *= 10;
    }
    for (auto it = list.begin(); it != list.end();) {
        it = *it % 20 != 0 ? list.Erase(it) : std::next(it);
    }
    EXPECT_EQ(std::vector<int>(list.rbegin(), list.rend()), (std::vector<int>{ 40, 20 }));
    EXPECT_EQ(*std::prev(list.cend()), 40);
}

TEST(TuListTest, HasNoEndsWhenEmptyAndNoNodesWithABlockSizeOfZero)
{
    TuList<int> empty;
    ExpectFailure<TuExceptionPreconditionViolation>([&] { empty.GetHead(); });
    ExpectFailure<TuExceptionPreconditionViolation>([&] { empty.RemoveTail(); });

    TuList<int> blockless(0u);
    ExpectFailure<TuExceptionPreconditionViolation>(
        [&] { blockless.Add(1); }, u"core/groundwork/tuplexmanager", 162);
    EXPECT_TRUE(blockless.IsEmpty());
}

TEST(TuListTest, RefusesMoreElementsThanItsSizeCanCount)
{
    TuList<int, 17, unsigned char> list;
    for (int i = 0; i < 255; ++i) {
        list.Add(i);
    }
    ExpectFailure<TuExceptionOutOfMemory>([&] { list.Add(255); });
    ExpectFailure<TuExceptionOutOfMemory>([&] { list.Append(list); });
    EXPECT_EQ(list.GetCount(), 255);
    EXPECT_EQ(list.GetTail(), 254);
}

TEST(TuListTest, IsAsItWasAfterACopyOrAnAllocationFails)
{
    {
        const TuList<Fragile> original{ 1, 2, 3, 4, 5, 6, 7, 8, 9, 10 }; // one block
        const auto failEverywhere = [&](auto&& change) {
            for (int copies = 1, failures = 1; failures != 0; ++copies) {
                TuList<Fragile> list(original);
                Fragile::s_copiesUntilFailure = copies;
                try {
                    change(list);
                    failures = 0;
                } catch (const std::runtime_error&) {
                    EXPECT_EQ(list, original);
                }
                Fragile::s_copiesUntilFailure = 0;
            }
            EXPECT_GT(FailEachAllocation([&](unsigned int allowed) {
                TuList<Fragile> list(original);
                const AllocationLimit limit(allowed);
                try {
                    change(list);
                    return true;
                } catch (const TuExceptionOutOfMemory& failure) {
                    EXPECT_EQ(failure.GetLine(), 284u);
                    EXPECT_EQ(list, original);
                    return false;
                }
            }),
                0u);
        };
        failEverywhere([](TuList<Fragile>& list) { list.Add(list.GetHead()); });
        failEverywhere([](TuList<Fragile>& list) { list.Append(list); });
        failEverywhere([](TuList<Fragile>& list) { list = TuList<Fragile>(list); });
    }
    EXPECT_EQ(Fragile::s_living, 0);
}

TEST(TuListTest, SortKeepsEqualElementsInOrderAndStopsAfterAPassWithoutASwap)
{
    TuList<CString> list{ u"bb", u"ca", u"ab", u"cb", u"aa", u"ba" };
    const auto ca = list.Find(u"ca");
    int asked = 0;
    const auto byFirst = [&](const CString& a, const CString& b) {
        ++asked;
        return a[0] < b[0];
    };
    list.Sort(byFirst);
    EXPECT_EQ(list, (TuList<CString>{ u"ab", u"aa", u"bb", u"ba", u"ca", u"cb" }));
    EXPECT_EQ(*ca, u"ca");
    asked = 0;
    list.Sort(byFirst);
    EXPECT_EQ(asked, 5);
    TuList<CString>().Sort(byFirst);
}

TEST(TuListTest, MovedFromIsEmptyAndFillsAnew)
{
    TuList<TuScopedPointer<int>> list;
    list.Emplace(new int(1));
    TuList<TuScopedPointer<int>> moved(std::move(list));
    list.Emplace(new int(2)); // NOLINT(bugprone-use-after-move): what is promised
    swap(list, moved);
    EXPECT_EQ(*list.GetHead(), 1);
    EXPECT_EQ(*moved.RemoveHead(), 2);
    moved = std::move(list);
    EXPECT_EQ(moved.GetCount(), 1u);
}

TEST(TuListTest, ItsRecordIsVersionCountAndElements)
{
    const TuList<unsigned short> list{ 1, 2 };
    const auto record = WriteToBytes([&](auto& stream) { list.Serialize(stream); });
    EXPECT_EQ(record, (std::vector<unsigned char>{ 0, 0, 0, 0, 2, 0, 0, 0, 1, 0, 2, 0 }));

    TuList<unsigned short> read{ 7, 8, 9 };
    const TuList<unsigned short> before(read);
    ExpectUnchangedByTruncatedRecords(record, read, before);
    auto newer = record;
    newer[0] = 1;
    EXPECT_THROW(ReadFromBytes(newer, [&](auto& stream) { read.Serialize(stream); }),
        TuExceptionWrongFileVersion);
    auto huge = record;
    std::fill_n(huge.begin() + 4, 4, static_cast<unsigned char>(0xFF));
    {
        const AllocationLimit limit(100);
        EXPECT_THROW(
            ReadFromBytes(huge, [&](auto& stream) { read.Serialize(stream); }), TuExceptionStream);
        EXPECT_LT(limit.GetLargest(), 1000u);
    }
    EXPECT_EQ(read, before);
    EXPECT_TRUE(ReadFromBytes(record, [&](auto& stream) { read.Serialize(stream); }));
    EXPECT_EQ(read, list);
}

TEST(TuListTest, ContainersInContainersAreStoredByTheirOwnRecords)
{
    TuList<TuList<CString>> list{ { u"a" }, {}, { u"b", u"c" } };
    TuList<TuList<CString>> read;
    EXPECT_TRUE(ReadFromBytes(WriteToBytes([&](auto& stream) { list.Serialize(stream); }),
        [&](auto& stream) { read.Serialize(stream); }));
    EXPECT_EQ(read, list);
}

} // namespace
