#include "groundwork/tucriticalsection.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

TEST(PlatformLockTest, KeepsOtherThreadsOutUntilTheLastLeave)
{
    constexpr int kThreads = 4;
    constexpr int kSteps = 10'000;
    TuCriticalSection lock;
    int inside = 0;
    int total = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([&] {
                for (int step = 0; step < kSteps; ++step) {
                    const TuCriticalSectionAuto outer(lock);
                    {
                        const TuCriticalSectionAuto inner(lock); // recursive
                        ++inside;
                    }
                    EXPECT_EQ(inside, 1); // the inner leave let nobody in
                    --inside;
                    ++total;
                }
            });
        }
    }
    EXPECT_EQ(total, kThreads * kSteps);
}

} // namespace
