#include "groundwork/tumap.h"

#include "containercases.h"
#include "groundwork/cstring.h"
#include "support/expectfailure.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

namespace {

using Numbers = TuMap<unsigned int, int>;

std::vector<unsigned int> keysOf(const Numbers& map)
{
    std::vector<unsigned int> keys;
    for (const auto& [key, value] : map) {
        keys.push_back(key);
    }
    return keys;
}

TEST(TuMapTest, IteratesByBucketAndInEachFromTheNewestToTheOldest)
{
    Numbers map;
    EXPECT_EQ(map.GetBlockSize(), 10u);
    EXPECT_EQ(map.GetBucketCount(), 17u);
    for (const unsigned int key : { 16u, 0u, 17u * 16u, 15u, 33u, 7u }) {
        map[key] = static_cast<int>(key);
    }
    // Bucket 0: 0 to 15 and 272; bucket 1: 16; bucket 2: 33.
    EXPECT_EQ(keysOf(map), (std::vector<unsigned int>{ 7, 15, 272, 0, 16, 33 }));

    map[272] = 1; // replaced in place
    map.SetAt(0, 2);
    EXPECT_EQ(keysOf(map), (std::vector<unsigned int>{ 7, 15, 272, 0, 16, 33 }));
    map.RemoveKey(0); // removed and inserted: comes first
    map[0] = 3;
    EXPECT_EQ(keysOf(map), (std::vector<unsigned int>{ 0, 7, 15, 272, 16, 33 }));
}

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
    map[u"a"] = 1;
    map[L"b"] = 2;
    map[std::u16string(u"c")] = 3;
    map[std::u16string_view(u"dd").substr(1)] = 4;
    map[static_cast<const char16_t*>(nullptr)] = 5;
    EXPECT_TRUE(map.Contains(u"b") && map.Contains(u"d") && map.Contains(u""));
    EXPECT_TRUE(map.RemoveKey(map.begin()->GetKey())); // the key looked for goes with its node
    EXPECT_EQ(map.GetCount(), 4u);
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
    const Numbers& constant = map;
    int value = 5;
    EXPECT_FALSE(map.Lookup(1, value));
    EXPECT_EQ(value, 5);
    EXPECT_EQ(constant.Lookup(1), nullptr);
    ExpectFailure<TuExceptionPreconditionViolation>([&] { map.GetAt(1); });
    EXPECT_TRUE(map.IsEmpty());
    map[1] = 1;
    map.RemoveKey(1);
    EXPECT_EQ(map[1], 0); // though the node is a used one
}

TEST(TuMapTest, KeepsItsContract)
{
    ExpectFailure<TuExceptionPreconditionViolation>([] { Numbers map(10, 0); });
    Numbers blockless(0);
    Numbers managerless{ TuSmartPointer<Numbers::PlexManager>() };
    for (Numbers* map : { &blockless, &managerless }) {
        EXPECT_FALSE(map->Contains(1));
        ExpectFailure<TuExceptionPreconditionViolation>(
            [&] { (*map)[1] = 2; }, u"core/groundwork/tuplexmanager", 162);
        EXPECT_TRUE(map->IsEmpty());
    }
}

TEST(TuMapTest, AnEmptyMapOwnsNoMemory)
{
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

TEST(TuMapTest, AssignmentKeepsTheBucketsAndMovingTakesThem)
{
    const Numbers source{ { 1, 1 }, { 100, 2 }, { 1000, 3 } };
    Numbers target(5, 1);
    target = source;
    EXPECT_EQ(target.GetBucketCount(), 1u);
    Numbers moved;
    moved = std::move(target);
    EXPECT_EQ(moved.GetBucketCount(), 1u);
    EXPECT_EQ(moved, source);
    target[3] = 3; // NOLINT(bugprone-use-after-move): empty is promised
    EXPECT_EQ(keysOf(target), std::vector<unsigned int>{ 3 });
}

TEST(TuMapTest, IsAsItWasAfterACopyOrAnAllocationFails)
{
    using Fragiles = TuMap<int, Fragile>;
    {
        Fragiles original;
        for (int i = 0; i < 10; ++i) { // one block
            original[i] = Fragile(i);
        }
        const Fragile value(77);
        const auto insert = [&](Fragiles& map) { map.SetAt(10, value); };
        const auto assign = [](Fragiles& map) { map = Fragiles(map); };
        ExpectUnchangedByFailedCopies(original, insert);
        ExpectUnchangedByFailedCopies(original, assign);
        ExpectUnchangedWithoutMemory(original, insert);
        ExpectUnchangedWithoutMemory(original, assign);
        ExpectUnchangedWithoutMemory(Fragiles(), insert);
    }
    EXPECT_EQ(Fragile::s_living, 0);
}

TEST(TuMapTest, SharesAPlexManager)
{
    const auto plex = TuMake<TuMap<int, Fragile>::PlexManager>(3u);
    {
        TuMap<int, Fragile> first(plex, 5);
        {
            TuMap<int, Fragile> second(plex, 7);
            for (int i = 0; i < 3; ++i) {
                second[i] = Fragile(i);
            }
            const TuMap<int, Fragile>& same = second;
            second = same; // its copy draws on the shared nodes, too
        }
        const AllocationLimit limit(1); // for the buckets
        first[1] = Fragile(1);
    }
    EXPECT_EQ(Fragile::s_living, 0);
}

TEST(TuMapTest, ItsRecordKeepsTheOrderOfIteration)
{
    using Flags = TuMap<unsigned char, bool>;
    Flags map;
    for (const unsigned int key : { 3u, 1u, 16u, 2u }) {
        map[static_cast<unsigned char>(key)] = key == 16;
    }
    const std::vector<unsigned char> record{ 0, 0, 0, 0, 4, 0, 0, 0, 2, 0, 1, 0, 3, 0, 16, 1 };
    auto doubled = record;
    doubled[10] = 2;
    ExpectToReadOnlyWholeRecords(map, Flags{ { 9, true } }, record, doubled);
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
