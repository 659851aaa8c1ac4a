#include "platform/platforminterrupt.h"

#include "platform/platformevent.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

#if !defined(_WIN32)
#include <pthread.h>
#include <unistd.h>
#endif

// That the system's interrupt arrives on Windows, too, is tested with a program of its own, which
// is interrupted from outside (tests/tamesh/program.cmake): a process cannot send it to itself
// alone there.

namespace {

constexpr unsigned int kPatienceMs = 60'000;

// The tests themselves may have been started in the background.
const auto kFormerHandler = std::signal(SIGINT, SIG_DFL);

TEST(PlatformInterruptTest, OneWatchAtATimeHears)
{
    const platform::InterruptWatch first([] {});
    EXPECT_TRUE(first.IsWatching());
    {
        const platform::InterruptWatch second([] {});
        EXPECT_FALSE(second.IsWatching());
    }
    EXPECT_TRUE(first.IsWatching());
}

#if !defined(_WIN32)
TEST(PlatformInterruptTest, EachInterruptIsToldOnAThreadOfItsOwn)
{
    platform::Event told(false);
    const auto self = pthread_self();
    const platform::InterruptWatch watch([&] {
        EXPECT_FALSE(pthread_equal(self, pthread_self()));
        told.Set();
    });
    for (int i = 0; i < 3; ++i) {
        kill(getpid(), SIGINT);
        EXPECT_EQ(told.Wait(kPatienceMs), platform::eW_Signaled);
    }
}

TEST(PlatformInterruptDeathTest, WithoutAWatchTheProgramEnds)
{
    EXPECT_EXIT(
        {
            {
                const platform::InterruptWatch watch([] {});
            }
            kill(getpid(), SIGINT);
            std::_Exit(0);
        },
        testing::KilledBySignal(SIGINT), "");
}

TEST(PlatformInterruptDeathTest, AProgramInTheBackgroundIsNotAsked)
{
    EXPECT_EXIT(
        {
            std::signal(SIGINT, SIG_IGN);
            const platform::InterruptWatch watch([] { std::_Exit(1); });
            kill(getpid(), SIGINT);
            std::_Exit(watch.IsWatching() ? 2 : 0);
        },
        testing::ExitedWithCode(0), "");
}
#endif

} // namespace
