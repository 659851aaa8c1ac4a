#include "groundwork/tumap.h"

#include "groundwork/cstring.h"
#include "groundwork/tuvariant.h"
#include "support/allocationlimit.h"
#include "support/brokenrecords.h"
#include "support/expectfailure.h"
#include "support/fragile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace {

using Numbers = TuMap<unsigned int, int>;

template <class Map> auto keysOf(const Map& map)
{
    std::vector<std::decay_t<decltype(map.begin()->GetKey())>> keys;
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

    const Numbers copy(map);
    EXPECT_EQ(keysOf(copy), keysOf(map));
}

TEST(TuMapTest, KeysHashByTheirWholeUnsignedValue)
{
    EXPECT_EQ(TuHashKey<unsigned int>::Compute(0xFFFFFFFFu), 0x0FFFFFFFu);
    EXPECT_EQ(TuHashKey<int>::Compute(-1), 0x0FFFFFFFu);
    EXPECT_EQ(TuHashKey<signed char>::Compute(-1), 0x0Fu);
    EXPECT_EQ(TuHashKey<long long>::Compute(-1), 0x0FFFFFFFFFFFFFFFull);
    EXPECT_EQ(TuHashKey<std::uint64_t>::Compute(0x123456789ABCDEF0u), 0x0123456789ABCDEFull);
    const int object = 0;
    EXPECT_EQ(
        TuHashKey<const int*>::Compute(&object), reinterpret_cast<std::uintptr_t>(&object) / 16);

    EXPECT_EQ(TuHashKey<CString>::Compute(u""), 0u);
    EXPECT_EQ(TuHashKey<CString>::Compute(u"ab"), 97u * 33 + 98);
    const CString text(u"Gr\u00F6\u00DFe und Z\u00E4hler \U0001F600");
    std::uint32_t expected = 0;
    for (std::size_t length = 0; length <= text.GetLength(); ++length) {
        EXPECT_EQ(TuHashKey<CString>::Compute(text.GetView().substr(0, length)), expected);
        if (length != text.GetLength()) {
            expected = expected * 33 + text[length];
        }
    }
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
    EXPECT_EQ(map,
        (TuMap<CString, int>{ { u"a", 1 }, { u"b", 2 }, { u"c", 3 }, { u"d", 4 }, { u"", 5 } }));
    EXPECT_FALSE(map.Contains(u"A"));
    EXPECT_TRUE(map.RemoveKey(map.begin()->GetKey())); // the key looked for goes with its node
    EXPECT_EQ(map.GetCount(), 4u);
}

class Shared : public TuReferenceCounted
{
};

TEST(TuMapTest, AskingForAnObjectByItsPointerCountsNoReference)
{
    TuMap<TuSmartPointer<Shared>, int> map;
    auto* const object = new Shared; // nobody holds it yet
    EXPECT_FALSE(map.Contains(object));
    map[object] = 7;
    EXPECT_EQ(object->getReferenceCounter().GetCount(), 1u);
    EXPECT_EQ(map.GetAt(TuSmartPointer<Shared>(object)), 7);
    EXPECT_FALSE(map.Contains(nullptr));
}

TEST(TuMapTest, QueriesNeverInsertAndNewValuesAreZero)
{
    Numbers map;
    const Numbers& constant = map;
    int value = 5;
    EXPECT_FALSE(map.Lookup(1, value));
    EXPECT_EQ(value, 5);
    EXPECT_EQ(constant.Lookup(1), nullptr);
    EXPECT_EQ(map.Find(1), map.end());
    EXPECT_FALSE(map.RemoveKey(1));
    ExpectFailure<TuExceptionPreconditionViolation>([&] { map.GetAt(1); });
    EXPECT_TRUE(map.IsEmpty());

    *map.Lookup(map.begin() == map.end() ? (map[1], 1u) : 2u) += 1;
    map.RemoveKey(1);
    EXPECT_EQ(map[1], 0); // though the node is a used one
    EXPECT_FALSE(map.Insert(1, 9));
    EXPECT_FALSE(map.SetAt(1, 8));
    EXPECT_TRUE(map.SetAt(2, 7));
    EXPECT_EQ(constant.GetAt(1), 8);
}

TEST(TuMapTest, HoldsManyMoreEntriesThanBucketsAndIsEmptiedWhileWalked)
{
    Numbers map(10, 3);
    for (unsigned int key = 0; key < 1000; ++key) {
        map[key * 7] = static_cast<int>(key);
    }
    EXPECT_EQ(map.GetCount(), 1000u);
    for (auto it = map.begin(); it != map.end();) {
        it = it->GetValue() % 3 != 0 ? map.Erase(it) : std::next(it);
    }
    EXPECT_EQ(map.GetCount(), 334u);
    EXPECT_TRUE(std::all_of(map.begin(), map.end(), [](const Numbers::SAssociation& entry) {
        return entry.GetKey() == 7u * static_cast<unsigned int>(entry.GetValue());
    }));
    map.RemoveAll();
    EXPECT_EQ(map.begin(), map.end());
    map[5] = 5;
    EXPECT_EQ(keysOf(map), std::vector<unsigned int>{ 5 });
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
        EXPECT_EQ(map->begin(), map->end());
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
    target[7] = 7;
    target = source;
    EXPECT_EQ(target.GetBucketCount(), 1u);
    EXPECT_EQ(target, source);
    Numbers moved;
    moved = std::move(target);
    EXPECT_EQ(moved.GetBucketCount(), 1u);
    EXPECT_TRUE(target.IsEmpty()); // NOLINT(bugprone-use-after-move): what is promised
    target[3] = 3;
    EXPECT_NE(target, moved);
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
        const auto failEverywhere = [&](auto&& change) {
            for (int copies = 1, failures = 1; failures != 0; ++copies) {
                Fragiles map(original);
                Fragile::s_copiesUntilFailure = copies;
                try {
                    change(map);
                    failures = 0;
                } catch (const std::runtime_error&) {
                    EXPECT_EQ(map, original);
                }
                Fragile::s_copiesUntilFailure = 0;
            }
            EXPECT_GT(FailEachAllocation([&](unsigned int allowed) {
                Fragiles map(original);
                const AllocationLimit limit(allowed);
                try {
                    change(map);
                    return true;
                } catch (const TuExceptionOutOfMemory&) {
                    EXPECT_EQ(map, original);
                    return false;
                }
            }),
                0u);
        };
        failEverywhere([&](Fragiles& map) { map.SetAt(10, value); });
        failEverywhere([&](Fragiles& map) { map = Fragiles(map); });
        FailEachAllocation([&](unsigned int allowed) {
            Fragiles map;
            const AllocationLimit limit(allowed);
            try {
                map.Insert(1, value);
                return true;
            } catch (const TuExceptionOutOfMemory&) {
                EXPECT_TRUE(map.IsEmpty());
                EXPECT_FALSE(map.Contains(1));
                return false;
            }
        });
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
    TuMap<unsigned char, bool> map;
    for (const unsigned int key : { 3u, 1u, 16u, 2u }) {
        map[static_cast<unsigned char>(key)] = key == 16;
    }
    const auto record = WriteToBytes([&](auto& stream) { map.Serialize(stream); });
    EXPECT_EQ(
        record, (std::vector<unsigned char>{ 0, 0, 0, 0, 4, 0, 0, 0, 2, 0, 1, 0, 3, 0, 16, 1 }));

    TuMap<unsigned char, bool> read{ { 9, true } };
    const TuMap<unsigned char, bool> before(read);
    ExpectUnchangedByTruncatedRecords(record, read, before);
    auto huge = record;
    std::fill_n(huge.begin() + 4, 4, static_cast<unsigned char>(0xFF));
    auto doubled = record;
    doubled[10] = 2;
    auto newer = record;
    newer[0] = 1;
    {
        const AllocationLimit limit(100);
        const auto action = [&](auto& stream) { read.Serialize(stream); };
        EXPECT_THROW(ReadFromBytes(huge, action), TuExceptionStream);
        EXPECT_LT(limit.GetLargest(), 1000u);
        EXPECT_THROW(ReadFromBytes(doubled, action), TuExceptionStream);
        EXPECT_THROW(ReadFromBytes(newer, action), TuExceptionWrongFileVersion);
    }
    EXPECT_EQ(read, before);
    EXPECT_TRUE(ReadFromBytes(record, [&](auto& stream) { read.Serialize(stream); }));
    EXPECT_EQ(keysOf(read), (std::vector<unsigned char>{ 2, 1, 3, 16 }));
    EXPECT_EQ(WriteToBytes([&](auto& stream) { read.Serialize(stream); }), record);
}

TEST(TuMapTest, StoresVariantsByTheirOwnRecords)
{
    const TuMap<CString, TuVariant> map{ { u"a", TuVariant(5) }, { u"b", TuVariant(u"text") } };
    TuMap<CString, TuVariant> read;
    EXPECT_TRUE(ReadFromBytes(WriteToBytes([&](auto& stream) { map.Serialize(stream); }),
        [&](auto& stream) { read.Serialize(stream); }));
    EXPECT_EQ(read, map);
}

TEST(TuMapTest, AValueThatGoesWithTheRestFindsNoEntryThatIsGone)
{
    struct Owner
    {
        TuMap<int, Owner>* map = nullptr;
        int* visited = nullptr;
        ~Owner()
        {
            if (map != nullptr) {
                for (const auto& [key, owner] : *map) {
                    *visited += key;
                }
            }
        }
    };
    int visited = 0;
    TuMap<int, Owner> map;
    for (const int key : { 1, 20, 300 }) {
        Owner& owner = map[key];
        owner.map = &map;
        owner.visited = &visited;
    }
    map.RemoveAll();
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_EQ(visited, (300 + 20) + 20); // 1 sees two others, 300 one, 20 none
}

} // namespace
