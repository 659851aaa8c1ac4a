#include "groundwork/tulist.h"

#include "containercases.h"
#include "groundwork/cstring.h"
#include "groundwork/tuscopedpointer.h"
#include "groundwork/tustack.h"
#include "support/expectfailure.h"

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
    list.InsertAfter(d, u"e");
    EXPECT_EQ(list.RemoveTail(), u"e");
    EXPECT_TRUE(list.Remove(*d)); // the value looked for goes with its node
    EXPECT_FALSE(list.Remove(u"d"));
    EXPECT_EQ(list, Texts{ u"b" });
    EXPECT_EQ(kept, &list.GetHead());
}

TEST(TuListTest, TakesElementsOfItself)
{
    Texts list{ u"a text too long to lie in the string object", u"b" };
    list.Add(list.GetHead());
    list.AddHead(list.GetTail());
    list.Append(list);
    Texts& same = list;
    list = same;
    EXPECT_EQ(list.GetCount(), 8u);
    EXPECT_EQ(std::count(list.begin(), list.end(), u"b"), 2);
}

static_assert(std::bidirectional_iterator<Texts::iterator>);
static_assert(std::is_same_v<TuList<int, 1>::iterator::reference, const int&>);
static_assert(std::is_convertible_v<Texts::iterator, Texts::const_iterator>);
static_assert(!std::is_convertible_v<Texts::const_iterator, Texts::iterator>);

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
    using Fragiles = TuList<Fragile>;
    {
        const Fragiles original{ 1, 2, 3, 4, 5, 6, 7, 8, 9, 10 }; // one block
        void (*const changes[])(Fragiles&) = { [](Fragiles& list) { list.Add(list.GetHead()); },
            [](Fragiles& list) { list.Append(list); },
            [](Fragiles& list) { list = Fragiles(list); } };
        for (const auto change : changes) {
            ExpectUnchangedByFailedCopies(original, change);
            ExpectUnchangedWithoutMemory(original, change, 284);
        }
    }
    EXPECT_EQ(Fragile::s_living, 0);
}

TEST(TuListTest, SortKeepsEqualElementsInOrderAndStopsAfterAPassWithoutASwap)
{
    Texts list{ u"bb", u"ca", u"ab", u"cb", u"aa", u"ba" };
    const auto ca = list.Find(u"ca");
    int asked = 0;
    const auto byFirst = [&](const CString& a, const CString& b) {
        ++asked;
        return a[0] < b[0];
    };
    list.Sort(byFirst);
    EXPECT_EQ(list, (Texts{ u"ab", u"aa", u"bb", u"ba", u"ca", u"cb" }));
    EXPECT_EQ(*ca, u"ca");
    asked = 0;
    list.Sort(byFirst);
    EXPECT_EQ(asked, 5);
    Texts().Sort(byFirst);
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
}

TEST(TuListTest, ItsRecordIsVersionCountAndElements)
{
    ExpectToReadOnlyWholeRecords(TuList<unsigned short>{ 1, 2 }, TuList<unsigned short>{ 7, 8, 9 },
        { 0, 0, 0, 0, 2, 0, 0, 0, 1, 0, 2, 0 });
    TuList<TuList<CString>> list{ { u"a" }, {}, { u"b", u"c" } };
    TuList<TuList<CString>> read;
    EXPECT_TRUE(ReadFromBytes(WriteToBytes([&](auto& stream) { list.Serialize(stream); }),
        [&](auto& stream) { read.Serialize(stream); }));
    EXPECT_EQ(read, list);
}

TEST(TuStackTest, GivesBackTheNewestFirst)
{
    TuStack<CString> stack;
    stack.Push(u"first");
    stack.Push(u"second");
    stack.Push(stack.GetTop());
    EXPECT_EQ(stack.Pop(), u"second");
    EXPECT_EQ(stack.Pop(), u"second");
    EXPECT_EQ(stack.Pop(), u"first");
    ExpectFailure<TuExceptionPreconditionViolation>([&] { stack.Pop(); });
    ExpectFailure<TuExceptionPreconditionViolation>([&] { stack.GetTop(); });
}

} // namespace
