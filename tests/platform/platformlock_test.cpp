#include "groundwork/tucriticalsection.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

#if !defined(_WIN32)
static_assert(sizeof(TuCriticalSection) <= 16);
#endif

/// A function of its own: the thread-safety analysis does not know recursive locks.
void countInside(TuCriticalSection& lock, int& inside)
{
    const TuCriticalSectionAuto again(lock);
    ++inside;
}

TEST(PlatformLockTest, KeepsOtherThreadsOutUntilTheLastLeave)
{
    TuCriticalSection lock;
    int inside = 0;
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int step = 0; step < 10'000; ++step) {
                const TuCriticalSectionAuto outer(lock);
                countInside(lock, inside);
                EXPECT_EQ(inside, 1); // the inner leave let nobody in
                --inside;
            }
        });
    }
}

} // namespace
