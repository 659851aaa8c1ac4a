#include "groundwork/tuplexmanager.h"

#include "groundwork/tulist.h"
#include "support/allocationlimit.h"
#include "support/expectfailure.h"
#include "support/fragile.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <set>

namespace {

using Plex = TuPlexManager<long long>;

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
using SmallPlex = TuPlexManager<long long, SmallBlocksPolicy>;

template <class Manager>
void expectBlocks(
    Manager& plex, unsigned int nodeCount, unsigned int blockCount, std::size_t largest)
{
    const AllocationLimit limit(1000);
    std::set<long long*> nodes;
    for (unsigned int i = 0; i < nodeCount; ++i) {
        nodes.insert(plex.Allocate());
    }
    EXPECT_EQ(nodes.size(), nodeCount);
    EXPECT_EQ(1000 - limit.GetLeft(), blockCount);
    EXPECT_EQ(limit.GetLargest(), largest);
}

TEST(TuPlexManagerTest, AllocatesOneBlockPerBlockSizeNodesOrSeveralForALargeCount)
{
    expectBlocks(*TuMake<Plex>(10u), 25, 3, sizeof(void*) + 10 * sizeof(long long));
    expectBlocks(*TuMake<SmallPlex>(16u), 16, 3, 64); // 7 + 7 + 2
}

TEST(TuPlexManagerTest, WithoutMemoryItThrowsAndKeepsWhatItGot)
{
    const auto plex = TuMake<SmallPlex>(16u);
    for (int i = 0; i < 2; ++i) {
        const AllocationLimit limit(i == 0 ? 1 : 0);
        const auto takeEight = [&] {
            for (int node = 0; node < 8; ++node) {
                *plex->Allocate() = node;
            }
        };
        ExpectFailure<TuExceptionOutOfMemory>(takeEight, u"core/groundwork/tuplexmanager", 284);
    }
    *plex->Allocate() = 1;
}

TEST(TuPlexManagerTest, ABlockOfMoreThanFourGigabytesIsSplitNotCut)
{
    using SLarge = std::array<char, 4096>;
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
        small->Free(small->Allocate());
        *small->Allocate() = 'x';
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
            first.Add(1);
            second.Add(2);
            const AllocationLimit limit(0);
            first.Erase(first.begin());
            for (int i = 0; i < 2; ++i) {
                second.Add(i); // the node that the first gave back, and the third of the block
            }
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
