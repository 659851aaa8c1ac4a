#include "groundwork/tutimer.h"

#include <gtest/gtest.h>

namespace {

TEST(TuTimerTest, CountsFromStartToStop)
{
    TuTimer timer(TuTimer::eR_Nanoseconds);
    EXPECT_EQ(timer.GetElapsedTime(), 0u);
    timer.Stop(); // it does not run
    EXPECT_EQ(timer.GetElapsedTime(), 0u);
    timer.Start();
    unsigned long long earlier = timer.GetElapsedTime();
    while (timer.GetElapsedTime() == earlier) { } // it goes on
    timer.Stop();
    const unsigned long long stopped = timer.GetElapsedTime();
    EXPECT_GT(stopped, earlier);
    EXPECT_EQ(timer.GetElapsedTime(), stopped);

    TuTimer coarse(TuTimer::eR_Milliseconds);
    timer.Start();
    coarse.Start();
    while (coarse.GetElapsedTime() < 2) { }
    EXPECT_GE(timer.GetElapsedTime(), 2'000'000u);
}

TEST(TuTimerTest, FormatsHoursAndTheDigitsOfTheResolution)
{
    EXPECT_EQ(TuTimer::GetFormatted(0, TuTimer::eR_Seconds), u"0:00:00");
    EXPECT_EQ(TuTimer::GetFormatted(93'784, TuTimer::eR_Seconds), u"26:03:04");
    EXPECT_EQ(TuTimer::GetFormatted(61'250, TuTimer::eR_Milliseconds), u"0:01:01.250");
    EXPECT_EQ(TuTimer::GetFormatted(7, TuTimer::eR_Microseconds), u"0:00:00.000007");
    EXPECT_EQ(TuTimer::GetFormatted(~0ull, TuTimer::eR_Nanoseconds), u"5124095:34:33.709551615");
}

} // namespace
