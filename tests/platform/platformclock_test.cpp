#include "platform/platformclock.h"

#include "platform/platformevent.h"

#include <gtest/gtest.h>

TEST(PlatformClockTest, ProcessorTimeGrowsWithWorkAndNotWithWaiting)
{
    constexpr std::uint64_t kMillisecond = 1'000'000;
    constexpr unsigned int kWaitMs = 400;
    const std::uint64_t deadline = platform::GetDeadline(60'000);
    const std::uint64_t start = platform::GetProcessorTime();
    std::uint64_t worked = 0;
    while (worked < 100 * kMillisecond && platform::GetMillisecondsUntil(deadline) != 0) {
        worked = platform::GetProcessorTime() - start;
    }
    EXPECT_GE(worked, 100 * kMillisecond);

    const std::uint64_t before = platform::GetProcessorTime();
    const platform::Event never(true);
    EXPECT_EQ(never.Wait(kWaitMs), platform::eW_TimedOut);
    EXPECT_LT(platform::GetProcessorTime() - before, kWaitMs / 2 * kMillisecond);
}
