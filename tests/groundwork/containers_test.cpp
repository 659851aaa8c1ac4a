#include "groundwork/tuarraymanaged.h"
#include "groundwork/tulist.h"
#include "groundwork/tulistsorted.h"
#include "groundwork/tumap.h"
#include "groundwork/tuset.h"
#include "support/allocationlimit.h"
#include "support/brokenrecords.h"
#include "support/expectfailure.h"
#include "support/fragile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <type_traits>
#include <vector>

template <> struct TuHashKey<Fragile>
{
    static unsigned int Compute(const Fragile& key)
    {
        return static_cast<unsigned int>(key.GetValue());
    }
};

namespace {

/// A map gets the element as key and as value.
template <class Container, class T> void add(Container& container, const T& element)
{
    if constexpr (requires { container.Add(element); }) {
        container.Add(element);
    } else {
        container.SetAt(element, element);
    }
}

/// Ten elements fill the array of a copy, and a block of nodes.
template <class Container> Container makeTen()
{
    Container container;
    for (int i = 0; i < 10; ++i) {
        add(container, i);
    }
    return container;
}

/// Lets each allocation of `change` fail in turn, of which there is at least one, or each copy of a
/// Fragile.
template <class Container, class Change>
void expectUnchangedByFailures(const Container& original, bool byCopies, Change&& change)
{
    const unsigned int failures = FailEachAllocation([&](unsigned int allowed) {
        Container container(original);
        const AllocationLimit limit(byCopies ? 1000 : allowed);
        Fragile::s_copiesUntilFailure = byCopies ? static_cast<int>(allowed) + 1 : 0;
        bool hasSucceeded = true;
        try {
            change(container);
        } catch (const std::exception&) {
            EXPECT_EQ(container, original);
            hasSucceeded = false;
        }
        Fragile::s_copiesUntilFailure = 0;
        return hasSucceeded;
    });
    EXPECT_TRUE(byCopies || failures != 0);
}

template <class Container> class ContainersTest : public testing::Test
{
};
template <class Container> class NodeContainersTest : public testing::Test
{
};
using Containers = testing::Types<TuArray<int>, TuArray<Fragile>, TuArrayManaged<int>,
    TuList<Fragile>, TuListSorted<Fragile>, TuMap<Fragile, Fragile>, TuSet<Fragile>>;
using NodeContainers = testing::Types<TuList<Fragile>, TuListSorted<Fragile>,
    TuMap<Fragile, Fragile>, TuSet<Fragile>>;
TYPED_TEST_SUITE(ContainersTest, Containers);
TYPED_TEST_SUITE(NodeContainersTest, NodeContainers);

TYPED_TEST(ContainersTest, StayAsTheyWereWhenMemoryRunsOutOrACopyFails)
{
    using Change = void (*)(TypeParam&);
    std::vector<Change> changes{ [](TypeParam& container) { add(container, 77); },
        [](TypeParam& container) {
            const TypeParam copy(container);
            container = copy;
        } };
    if constexpr (requires(TypeParam & container) { container.Append(container); }) {
        changes.push_back([](TypeParam& container) { container.Append(container); });
        changes.push_back([](TypeParam& container) { container.Add(*container.begin()); });
    }
    if constexpr (requires(TypeParam & array) { array.Reserve(1); }) {
        changes.push_back([](TypeParam& array) { array.Reserve(100); });
        changes.push_back([](TypeParam& array) { array.SetSize(100); });
    }
    {
        const auto original = makeTen<TypeParam>();
        for (const Change change : changes) {
            expectUnchangedByFailures(original, true, change);
            expectUnchangedByFailures(original, false, change);
        }
        expectUnchangedByFailures(TypeParam(), false, changes.front());
    }
    EXPECT_EQ(Fragile::s_living, 0);
}

TYPED_TEST(NodeContainersTest, ShareAPlexManager)
{
    const auto plex = TuMake<typename TypeParam::PlexManager>(3u);
    {
        TypeParam first(plex);
        {
            TypeParam second(plex);
            TypeParam third(plex);
            for (int i = 0; i < 3; ++i) {
                add(second, i);
            }
            third = second; // its copy draws on the shared nodes, too
        }
        const AllocationLimit limit(1); // for the buckets: all six nodes have come back
        for (int i = 0; i < 6; ++i) {
            add(first, i);
        }
    }
    EXPECT_EQ(Fragile::s_living, 0);
}

TYPED_TEST(NodeContainersTest, TakeNothingWithABlockSizeOfZeroOrNoPlexManager)
{
    const auto expectRefusal = [](TypeParam container) {
        ExpectFailure<TuExceptionPreconditionViolation>(
            [&] { add(container, 1); }, u"core/groundwork/tuplexmanager", 162);
        EXPECT_TRUE(container.IsEmpty());
    };
    expectRefusal(TypeParam(TuSmartPointer<typename TypeParam::PlexManager>()));
    if constexpr (std::is_constructible_v<TypeParam, unsigned int>) {
        expectRefusal(TypeParam(0u));
    }
}

TEST(ContainersTest, RefuseMoreElementsThanTheirSizeCanCount)
{
    TuList<int, 17, unsigned char> list;
    TuMap<int, int, 17, unsigned char> map;
    for (int i = 0; i < 255; ++i) {
        list.Add(i);
        map[i] = i;
    }
    ExpectFailure<TuExceptionOutOfMemory>([&] { list.Add(255); });
    ExpectFailure<TuExceptionOutOfMemory>([&] { list.Append(list); });
    ExpectFailure<TuExceptionOutOfMemory>([&] { map[255] = 255; });
    EXPECT_TRUE(list.GetCount() == 255 && list.GetTail() == 254);
    EXPECT_TRUE(map.GetCount() == 255 && !map.Contains(255));
}

using Bytes = std::vector<unsigned char>;

/// Gives `container` the record of `source` cut short, of a later version, with a count beyond all
/// memory, and `broken`; expects it to refuse each and stay as it was, and then to read the record.
template <class Container>
void expectToReadOnlyWholeRecords(
    const Container& source, Container container, const Bytes& record, const Bytes& broken = {})
{
    const auto write = [](const Container& written) {
        return WriteToBytes([&](auto& stream) { written.Serialize(stream); });
    };
    const auto read = [&](auto& stream) { container.Serialize(stream); };
    EXPECT_EQ(write(source), record);

    const Container before(container);
    ExpectUnchangedByTruncatedRecords(record, container, before);
    Bytes newer = record;
    newer[0] = 1;
    Bytes huge = record;
    std::fill_n(huge.begin() + 4, 4, static_cast<unsigned char>(0xFF));
    {
        const AllocationLimit limit(100);
        EXPECT_THROW(ReadFromBytes(newer, read), TuExceptionWrongFileVersion);
        EXPECT_THROW(ReadFromBytes(huge, read), TuExceptionStream);
        EXPECT_THROW(ReadFromBytes(broken, read), TuExceptionStream);
        EXPECT_LT(limit.GetLargest(), 1000u);
    }
    EXPECT_EQ(container, before);
    EXPECT_TRUE(ReadFromBytes(record, read));
    EXPECT_EQ(container, source);
    EXPECT_EQ(write(container), record);
}

TEST(ContainersTest, ReadOnlyWholeRecords)
{
    const auto twice = [](Bytes record, std::size_t place, unsigned char key) {
        record[place] = key;
        return record;
    };
    using Shorts = TuList<unsigned short>;
    expectToReadOnlyWholeRecords(TuList<Shorts>{ { 5 }, {} }, TuList<Shorts>{ { 7 }, { 8, 9 } },
        { 0, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0 });
    expectToReadOnlyWholeRecords(TuListSorted<unsigned short>{ 2, 1 },
        TuListSorted<unsigned short>{ 7, 8, 9 }, { 0, 0, 0, 0, 2, 0, 0, 0, 1, 0, 2, 0 });

    // In the order of iteration: the buckets are 0, 15, 1, 0 and 0 again.
    const Bytes ofSet{ 0, 0, 0, 0, 5, 0, 0, 0, 0x10, 1, 3, 0, 5, 0, 16, 0, 0xFF, 0xFF };
    expectToReadOnlyWholeRecords(
        TuSet<short>{ 5, -1, 16, 3, 0x110 }, TuSet<short>{ 99 }, ofSet, twice(ofSet, 12, 3));
    using Flags = TuMap<unsigned char, bool>;
    const Flags map{ { 3, false }, { 1, false }, { 16, true }, { 2, false } };
    const Bytes ofMap{ 0, 0, 0, 0, 4, 0, 0, 0, 2, 0, 1, 0, 3, 0, 16, 1 };
    expectToReadOnlyWholeRecords(map, Flags{ { 9, true } }, ofMap, twice(ofMap, 10, 2));
}

} // namespace
