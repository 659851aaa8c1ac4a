#include "groundwork/tumap.h"

#include "groundwork/cstring.h"
#include "groundwork/tuset.h"
#include "support/allocationlimit.h"
#include "support/expectfailure.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <iterator>
#include <string>

namespace {

using Numbers = TuMap<unsigned int, int>;

static_assert(std::forward_iterator<TuSet<CString>::iterator>);
static_assert(std::is_same_v<TuSet<CString, 17>::iterator::reference, const CString&>);

TEST(TuMapTest, KeysHashByTheirWholeUnsignedValue)
{
    EXPECT_EQ(TuHashKey<int>::Compute(-1), 0x0FFFFFFFu);
    EXPECT_EQ(TuHashKey<signed char>::Compute(-1), 0x0Fu);
    EXPECT_EQ(TuHashKey<std::uint64_t>::Compute(0x123456789ABCDEF0u), 0x0123456789ABCDEFull);
    const int object = 0;
    EXPECT_EQ(
        TuHashKey<const int*>::Compute(&object), reinterpret_cast<std::uintptr_t>(&object) / 16);

    const CString text(u"Gr\u00F6\u00DFe und Z\u00E4hler \U0001F600");
    std::uint32_t expected = 0;
    for (const char16_t unit : text.GetView()) {
        expected = expected * 33 + unit;
    }
    EXPECT_EQ(TuHashKey<CString>::Compute(text), expected);
    EXPECT_EQ(TuHashKey<CStringA>::Compute("\xFF"), 255u);
}

TEST(TuMapTest, TakesForATextKeyWhateverIsText)
{
    TuMap<CString, int> map;
    map[L"b"] = 2;
    map[std::u16string_view(u"dd").substr(1)] = 4;
    map[static_cast<const char16_t*>(nullptr)] = 5;
    EXPECT_TRUE(map.Contains(u"b") && map.Contains(std::u16string(u"d")) && map.Contains(u""));
}

TEST(TuMapTest, AskingForAnObjectByItsPointerCountsNoReference)
{
    struct Shared : public TuReferenceCounted
    {
    };
    TuMap<TuSmartPointer<Shared>, int> map;
    auto* const object = new Shared; // nobody holds it yet
    EXPECT_FALSE(map.Contains(object));
    map[object] = 7;
    EXPECT_EQ(object->getReferenceCounter().GetCount(), 1u);
}

TEST(TuMapTest, QueriesNeverInsertAndNewValuesAreZero)
{
    Numbers map;
    map[1] = 1;
    map.RemoveKey(1);
    ExpectFailure<TuExceptionPreconditionViolation>([&] { map.GetAt(1); });
    EXPECT_FALSE(map.Lookup(1) != nullptr || map.Contains(1));
    EXPECT_EQ(map[1], 0); // though the node is a used one
}

TEST(TuMapTest, HasBucketsAndNoMemoryForThemWhileEmpty)
{
    ExpectFailure<TuExceptionPreconditionViolation>([] { Numbers map(10, 0); });
    const AllocationLimit limit(0);
    Numbers map(10, 0xFFFFFFFFu);
    Numbers copy(map);
    copy = map;
    copy.RemoveAll();
    EXPECT_EQ(copy, Numbers());
    ExpectFailure<TuExceptionOutOfMemory>([&] { map[1] = 1; });
    EXPECT_GT(limit.GetLargest(), std::size_t{ 0xFFFFFFFFu } * sizeof(void*) - 1);
    EXPECT_TRUE(map.IsEmpty());
}

TEST(TuMapTest, AValueThatGoesWithTheRestFindsNoEntryThatIsGone)
{
    struct Owner
    {
        std::function<void()> visit = [] {};
        ~Owner() { visit(); }
    };
    int visited = 0;
    TuMap<int, Owner> map;
    for (const int key : { 1, 20, 300 }) {
        map[key].visit = [&] {
            for (const auto& entry : map) {
                visited += entry.GetKey();
            }
        };
    }
    map.RemoveAll();
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_EQ(visited, (300 + 20) + 20); // 1 sees two others, 300 one, 20 none
}

} // namespace
