#include "groundwork/tuplexmanager.h"

#include "groundwork/tuexceptions.h"
#include "groundwork/tusmartpointer.h"
#include "support/allocationlimit.h"
#include "support/expectfailure.h"
#include "support/fragile.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <set>

namespace {

using Plex = TuPlexManager<long long>;

struct SmallBlocksPolicy : TuPlexManagerPolicy
{
    static constexpr std::size_t kMaximumBlockBytes = 64; // a link and seven nodes of 8 bytes
};
using SmallPlex = TuPlexManager<long long, SmallBlocksPolicy>;

TEST(TuPlexManagerTest, RefusesABlockSizeOfZeroAndANullNode)
{
    ExpectFailure<TuExceptionPreconditionViolation>(
        [] { Plex plex(0); }, u"core/groundwork/tuplexmanager", 162);
    ExpectFailure<TuExceptionPreconditionViolation>(
        [] { TuMake<Plex>()->Free(nullptr); }, u"core/groundwork/tuplexmanagerpolicy", 264);
}

template <class Manager>
void expectBlocks(Manager&& plex, unsigned int nodes, unsigned int blocks, std::size_t largest)
{
    const AllocationLimit limit(1000);
    std::set<long long*> places;
    while (places.size() != nodes) {
        ASSERT_TRUE(places.insert(plex.Allocate()).second);
    }
    EXPECT_EQ(1000 - limit.GetLeft(), blocks);
    EXPECT_EQ(limit.GetLargest(), largest);
}

TEST(TuPlexManagerTest, AllocatesOneBlockPerBlockSizeNodesOrSeveralForALargeCount)
{
    expectBlocks(Plex(10), 25, 3, sizeof(void*) + 10 * sizeof(long long));
    expectBlocks(SmallPlex(16), 16, 3, 64); // 7 + 7 + 2
}

TEST(TuPlexManagerTest, WithoutMemoryItThrowsAndKeepsWhatItGot)
{
    SmallPlex plex(16);
    for (const unsigned int allowed : { 1u, 0u }) { // of three; the first gives seven nodes
        const AllocationLimit limit(allowed);
        const auto takeEight = [&] {
            for (int node = 0; node < 8; ++node) {
                *plex.Allocate() = node;
            }
        };
        ExpectFailure<TuExceptionOutOfMemory>(takeEight, u"core/groundwork/tuplexmanager", 284);
    }
    *plex.Allocate() = 1;
}

TEST(TuPlexManagerTest, ABlockOfMoreThanFourGigabytesIsSplitNotCut)
{
    using SLarge = std::array<char, 4096>;
    TuPlexManager<SLarge> plex(0xFFFFFFFFu);
    const AllocationLimit limit(0);
    EXPECT_THROW(static_cast<void>(plex.Allocate()), TuExceptionOutOfMemory);
    EXPECT_GT(limit.GetLargest(), TuPlexManagerPolicy::kMaximumBlockBytes - sizeof(SLarge));
    EXPECT_LE(limit.GetLargest(), TuPlexManagerPolicy::kMaximumBlockBytes);
}

TEST(TuPlexManagerTest, SmallNodesStillHoldTheLinkAndStrictOnesAreAligned)
{
    struct alignas(std::max_align_t) SStrict
    {
        char byte;
    };
    TuPlexManager<char> small(3);
    TuPlexManager<SStrict> strict(3);
    for (int i = 0; i < 5; ++i) {
        small.Free(small.Allocate());
        *small.Allocate() = 'x';
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(strict.Allocate()) % alignof(SStrict), 0u);
    }
}

TEST(TuPlexManagerTest, RoomComesBackWhenAConstructorFails)
{
    TuPlexManager<Fragile> plex(1);
    const Fragile original(5);
    Fragile::s_copiesUntilFailure = 1;
    const AllocationLimit limit(1);
    EXPECT_THROW(static_cast<void>(plex.Make(original)), std::runtime_error);
    plex.Destroy(plex.Make(original));
}

} // namespace
