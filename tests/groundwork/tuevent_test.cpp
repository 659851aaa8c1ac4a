#include "groundwork/tuevent.h"

#include "groundwork/tuarray.h"

#include <gtest/gtest.h>

#include <deque>
#include <thread>
#include <vector>

namespace {

constexpr unsigned int kPatienceMs = 60'000; // spent in full only by a failing test

// A tree holds one per node.
static_assert(sizeof(TuEvent) <= 32);

TEST(TuEventTest, AnyOfThousandEventsWakesOneWaitAndTellsWhich)
{
    for (const unsigned int count : { 64u, 65u, 1'000u }) {
        std::deque<TuEvent> events;
        TuArray<const TuEvent*> all;
        for (unsigned int i = 0; i < count; ++i) {
            all.Add(&events.emplace_back(false));
        }
        unsigned int index = 0;
        EXPECT_EQ(TuEvent::WaitForMultipleEvents(all, 1, &index), TuEvent::eWR_TimedOut);
        const std::jthread setter([&] { events[count - 1].Set(); });
        EXPECT_EQ(TuEvent::WaitForMultipleEvents(all, kPatienceMs, &index), TuEvent::eWR_Signaled);
        EXPECT_EQ(index, count - 1);
    }
    EXPECT_EQ(TuEvent::WaitForMultipleEvents({}, TuEvent::kInfinite), TuEvent::eWR_Failed);
    EXPECT_EQ(TuEvent::WaitForMultipleEvents({ nullptr }, TuEvent::kInfinite), TuEvent::eWR_Failed);
}

TEST(TuEventTest, AQuestionTakesTheFlagOfAnAutomaticEvent)
{
    TuEvent event(false);
    EXPECT_TRUE(event.Set());
    EXPECT_TRUE(event.IsSet());
    EXPECT_EQ(TuEvent::WaitForSingleEvent(event, 0), TuEvent::eWR_TimedOut);
}

/// Sixteen threads hand one token round a ring, each sleeping on an event of its own and on one
/// that all share; every set has to wake its thread, or the token stands still.
TEST(TuEventTest, NoWakeUpIsLostInHundredThousandSets)
{
    constexpr unsigned int kThreads = 16;
    constexpr unsigned int kSets = 100'000;
    std::deque<TuEvent> turns;
    for (unsigned int i = 0; i < kThreads; ++i) {
        turns.emplace_back(i % 2 == 1); // both kinds
    }
    TuEvent stop(true);
    unsigned int sets = 0; // belongs to whoever has the token
    std::vector<std::jthread> threads;
    for (unsigned int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            const TuArray<const TuEvent*> events{ &turns[i], &stop };
            unsigned int index = 0;
            for (;;) {
                ASSERT_EQ(TuEvent::WaitForMultipleEvents(events, kPatienceMs, &index),
                    TuEvent::eWR_Signaled);
                if (index == 1) {
                    return;
                }
                turns[i].Reset();
                ++sets;
                (sets < kSets ? turns[(i + 1) % kThreads] : stop).Set();
            }
        });
    }
    turns[0].Set();
    threads.clear();
    EXPECT_EQ(sets, kSets);
}

} // namespace
