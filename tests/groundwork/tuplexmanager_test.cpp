#include "groundwork/tuplexmanager.h"

#include "groundwork/tulist.h"
#include "support/allocationlimit.h"
#include "support/expectfailure.h"
#include "support/fragile.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <vector>

namespace {

using Plex = TuPlexManager<long long>;
constexpr unsigned int kPlenty = 1'000'000;

TEST(TuPlexManagerTest, AllocatesOneBlockPerBlockSizeNodes)
{
    const auto plex = TuMake<Plex>(10u);
    const AllocationLimit limit(kPlenty);
    std::set<long long*> nodes;
    for (int i = 0; i < 25; ++i) {
        nodes.insert(plex->Allocate());
    }
    EXPECT_EQ(nodes.size(), 25u);
    EXPECT_EQ(kPlenty - limit.GetLeft(), 3u);
    EXPECT_EQ(limit.GetLargest(), sizeof(void*) + 10 * sizeof(long long));
}

TEST(TuPlexManagerTest, TakesFreedNodesBeforeAnythingElse)
{
    const auto plex = TuMake<Plex>(2u);
    long long* const first = plex->Allocate();
    long long* const second = plex->Allocate();
    plex->Free(first);
    plex->Free(second);
    const AllocationLimit limit(0);
    EXPECT_EQ(plex->Allocate(), second);
    EXPECT_EQ(plex->Allocate(), first);
}

TEST(TuPlexManagerTest, RefusesABlockSizeOfZeroAndANullNode)
{
    ExpectFailure<TuExceptionPreconditionViolation>(
        [] { Plex plex(0); }, u"core/groundwork/tuplexmanager", 162);
    const auto plex = TuMake<Plex>();
    EXPECT_EQ(plex->GetBlockSize(), 10u);
    ExpectFailure<TuExceptionPreconditionViolation>(
        [&] { plex->Free(nullptr); }, u"core/groundwork/tuplexmanagerpolicy", 264);
}

struct SmallBlocksPolicy : TuPlexManagerPolicy
{
    static constexpr std::size_t kMaximumBlockBytes = 64; // a link and seven nodes of 8 bytes
};

TEST(TuPlexManagerTest, SpreadsALargeCountOverSeveralBlocks)
{
    const auto plex = TuMake<TuPlexManager<long long, SmallBlocksPolicy>>(16u);
    const AllocationLimit limit(kPlenty);
    std::set<long long*> nodes;
    for (int i = 0; i < 16; ++i) {
        nodes.insert(plex->Allocate());
    }
    EXPECT_EQ(nodes.size(), 16u);
    EXPECT_EQ(kPlenty - limit.GetLeft(), 3u); // 7 + 7 + 2
    EXPECT_EQ(limit.GetLargest(), 64u);
}

TEST(TuPlexManagerTest, WithoutMemoryItThrowsAndKeepsWhatItGot)
{
    const auto plex = TuMake<TuPlexManager<long long, SmallBlocksPolicy>>(16u);
    {
        const AllocationLimit limit(1);
        for (int i = 0; i < 2; ++i) {
            ExpectFailure<TuExceptionOutOfMemory>(
                [&] {
                    for (int node = 0; node < 8; ++node) {
                        *plex->Allocate() = node;
                    }
                },
                u"core/groundwork/tuplexmanager", 284);
        }
    }
    *plex->Allocate() = 1;
}

TEST(TuPlexManagerTest, ABlockOfMoreThanFourGigabytesIsSplitNotCut)
{
    struct SLarge
    {
        char bytes[4096];
    };
    const auto plex = TuMake<TuPlexManager<SLarge>>(0xFFFFFFFFu);
    const AllocationLimit limit(0);
    EXPECT_THROW(static_cast<void>(plex->Allocate()), TuExceptionOutOfMemory);
    EXPECT_GT(limit.GetLargest(), TuPlexManagerPolicy::kMaximumBlockBytes - sizeof(SLarge));
    EXPECT_LE(limit.GetLargest(), TuPlexManagerPolicy::kMaximumBlockBytes);
}

TEST(TuPlexManagerTest, SmallNodesStillHoldTheLinkAndStrictOnesAreAligned)
{
    struct alignas(std::max_align_t) SStrict
    {
        char byte;
    };
    const auto small = TuMake<TuPlexManager<char>>(3u);
    const auto strict = TuMake<TuPlexManager<SStrict>>(3u);
    for (int i = 0; i < 5; ++i) {
        char* const node = small->Make('x');
        if (i % 2 == 0) {
            small->Destroy(node);
        }
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(strict->Allocate()) % alignof(SStrict), 0u);
    }
}

TEST(TuPlexManagerTest, RoomComesBackWhenAConstructorFails)
{
    const auto plex = TuMake<TuPlexManager<Fragile>>(1u);
    Fragile* const node = plex->Make(5);
    Fragile::s_copiesUntilFailure = 1;
    EXPECT_THROW(static_cast<void>(plex->Make(*node)), std::runtime_error);
    const AllocationLimit limit(0);
    plex->Destroy(plex->Make(*node));
    plex->Destroy(node);
    EXPECT_EQ(Fragile::s_living, 0);
}

TEST(TuPlexManagerTest, ServesSeveralContainers)
{
    const auto plex = TuMake<TuList<Fragile>::PlexManager>(4u);
    {
        TuList<Fragile> kept(plex);
        {
            TuList<Fragile> first(plex);
            TuList<Fragile> second(plex);
            for (int i = 0; i < 4; ++i) {
                (i % 2 == 0 ? first : second).Add(i);
            }
            const AllocationLimit limit(0);
            first.Erase(first.begin());
            second.Add(4); // the node that the first gave back
            second.Erase(second.begin());
            kept.Add(9);
        }
        const AllocationLimit limit(0);
        for (int i = 0; i < 3; ++i) {
            kept.Add(i);
        }
        EXPECT_EQ(kept.GetHead(), 9);
    }
    EXPECT_EQ(Fragile::s_living, 0);
}

} // namespace
