#include "platform/platformevent.h"

#include "platform/platformclock.h"
#include "platform/platformthread.h"
#include "support/killedthreads.h"
#include "support/testlatch.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

using platform::Event;

constexpr unsigned int kPatienceMs = 60'000; // spent in full only by a failing test

/// Every test runs with both kinds.
class PlatformEventTest : public testing::TestWithParam<bool>
{
protected:
    static bool IsManual() { return GetParam(); }
};

INSTANTIATE_TEST_SUITE_P(Kinds, PlatformEventTest, testing::Bool(),
    [](const auto& kind) { return kind.param ? "Manual" : "Automatic"; });

TEST_P(PlatformEventTest, SetLetsThroughUntilResetOrOnce)
{
    Event alone(IsManual());
    Event shared(IsManual());
    const Event copy(shared);
    for (Event* event : { &alone, &shared }) {
        EXPECT_EQ(event->Wait(0), platform::eW_TimedOut);
        event->Set();
        event->Set(); // once is enough
        EXPECT_EQ(event->Wait(platform::kWaitForever), platform::eW_Signaled);
        EXPECT_EQ(event->Wait(0), IsManual() ? platform::eW_Signaled : platform::eW_TimedOut);
        event->Set();
        event->Reset();
        EXPECT_EQ(event->Wait(1), platform::eW_TimedOut);
        event->Set(); // it has been slept on by now
        EXPECT_EQ(event->Wait(0), platform::eW_Signaled);
    }
}

TEST_P(PlatformEventTest, CopiesShareOneFlagThatOutlivesTheOriginal)
{
    auto original = std::make_unique<Event>(IsManual());
    original->Set();
    Event copy(*original);
    Event assigned(IsManual());
    const Event former(assigned);
    assigned = copy;
    original.reset();
    EXPECT_EQ(assigned.Wait(0), platform::eW_Signaled);
    copy.Reset();
    EXPECT_EQ(assigned.Wait(0), platform::eW_TimedOut);
    copy.Set();
    EXPECT_EQ(former.Wait(0), platform::eW_TimedOut); // given up by the assignment
}

TEST_P(PlatformEventTest, OneSetLetsAllThroughOrOne)
{
    constexpr int kWaiters = 40; // more than are woken in one go
    Event gate(IsManual());
    Event passed(false);
    TestLatch ready(kWaiters + 1);
    std::atomic<int> count = 0;
    std::vector<std::jthread> waiters;
    for (int i = 0; i < kWaiters; ++i) {
        waiters.emplace_back([&] {
            ready.arrive_and_wait();
            EXPECT_EQ(gate.Wait(kPatienceMs), platform::eW_Signaled);
            ++count;
            passed.Set();
        });
    }
    ready.arrive_and_wait();
    for (int i = 1; i <= kWaiters; ++i) {
        if (i == 1 || !IsManual()) {
            gate.Set();
        }
        while (count < i) {
            ASSERT_EQ(passed.Wait(kPatienceMs), platform::eW_Signaled);
        }
    }
    waiters.clear();
    EXPECT_EQ(gate.Wait(0), IsManual() ? platform::eW_Signaled : platform::eW_TimedOut);
}

TEST_P(PlatformEventTest, WhoWasLetThroughMayDestroyTheEventAtOnce)
{
    std::atomic<Event*> next = nullptr;
    const std::jthread setter([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            if (Event* event = next.exchange(nullptr)) {
                event->Set();
            }
        }
    });
    for (int i = 0; i < 2'000; ++i) {
        auto event = std::make_unique<Event>(IsManual());
        next = event.get();
        ASSERT_EQ(event->Wait(kPatienceMs), platform::eW_Signaled);
        event = std::make_unique<Event>(IsManual());
        (void)Event(*event); // has been shared: the flag lies elsewhere
        next = event.get();
        while (event->Wait(0) != platform::eW_Signaled) { }
    }
}

TEST_P(PlatformEventTest, WaitForAnyTakesTheFirstThatIsSetAndNoOther)
{
    Event events[] = { Event(IsManual()), Event(IsManual()), Event(IsManual()) };
    const Event* const all[] = { &events[0], &events[1], &events[2], &events[1] };
    std::size_t index = 99;
    EXPECT_EQ(Event::WaitForAny(all, 4, 1, index), platform::eW_TimedOut);
    EXPECT_EQ(index, 99u);
    events[2].Set();
    events[1].Set();
    EXPECT_EQ(Event::WaitForAny(all, 4, kPatienceMs, index), platform::eW_Signaled);
    EXPECT_EQ(index, 1u);
    EXPECT_EQ(events[2].Wait(0), platform::eW_Signaled);
    events[1].Reset();
    events[2].Reset();

    std::jthread setter([&] { events[1].Set(); });
    EXPECT_EQ(Event::WaitForAny(all, 4, kPatienceMs, index), platform::eW_Signaled);
    EXPECT_EQ(index, 1u);
    setter.join();
    EXPECT_EQ(events[1].Wait(0), IsManual() ? platform::eW_Signaled : platform::eW_TimedOut);

    EXPECT_EQ(Event::WaitForAny(all, 0, kPatienceMs, index), platform::eW_Failed);
    const Event* const withNull[] = { &events[1], nullptr };
    events[1].Set();
    EXPECT_EQ(Event::WaitForAny(withNull, 2, 0, index), platform::eW_Failed);
}

/// Two threads wait for the same two automatic events, with time-outs that run out meanwhile: each
/// Set lets exactly one of them through.
TEST(PlatformEventRaceTest, NoSetIsLostAndNoneCountsTwice)
{
    constexpr int kSets = 20'000;
    const Event events[] = { Event(false), Event(false) };
    const Event* const both[] = { &events[0], &events[1] };
    Event taken(false);
    std::atomic<int> count = 0;
    std::atomic<bool> done = false;
    std::vector<std::jthread> waiters;
    for (int i = 0; i < 2; ++i) {
        waiters.emplace_back([&, i] {
            std::size_t index = 0;
            while (!done) {
                if (Event::WaitForAny(both, 2, i == 0 ? 1 : kPatienceMs, index)
                    == platform::eW_Signaled) {
                    ++count;
                    taken.Set();
                }
            }
        });
    }
    for (int i = 0; i < kSets; ++i) {
        Event(events[i % 2]).Set();
        while (count <= i) {
            ASSERT_EQ(taken.Wait(kPatienceMs), platform::eW_Signaled) << i;
        }
        ASSERT_EQ(count, i + 1);
    }
    done = true;
    Event(events[0]).Set();
    Event(events[1]).Set();
}

/// Waits again and again, and counts.
struct SSleeper
{
    static unsigned int Run(void* sleeper)
    {
        auto* self = static_cast<SSleeper*>(sleeper);
        while (self->event.Wait(platform::kWaitForever) == platform::eW_Signaled) {
            ++self->count;
            self->woken.Set();
        }
        return 0;
    }

    void Start(platform::Thread& thread)
    {
        ASSERT_TRUE(thread.Create(Run, this, u"sleeper"));
        ASSERT_TRUE(thread.Resume());
    }

    Event event{ false };
    Event woken{ false };
    std::atomic<int> count = 0;
};

TEST(PlatformEventKillTest, AThreadThatWasKilledInItsSleepTakesNoSet)
{
    SKIP_IF_SIGNALS_ARE_DELAYED();
    SSleeper sleeper;
    const Event copy(sleeper.event); // so that the list outlives the dead
    for (int round = 1; round <= 5; ++round) { // the next one gets the set
        platform::Thread dead;
        sleeper.Start(dead);
        sleeper.event.Set();
        ASSERT_EQ(sleeper.woken.Wait(kPatienceMs), platform::eW_Signaled);
        for (int i = 0; i < 1'000; ++i) {
            std::this_thread::yield(); // it falls asleep again
        }
        ASSERT_TRUE(dead.Suspend() && dead.Resume()); // which does not end its wait
        ASSERT_TRUE(dead.Kill(3));
        EXPECT_EQ(sleeper.count, round);
    }
}

/// A thread that was stopped while it sets or waits must not have stopped the events, too.
TEST(PlatformEventKillTest, AThreadThatIsStoppedStopsNoEvent)
{
    SKIP_IF_SIGNALS_ARE_DELAYED();
    for (int round = 0; round < 20; ++round) {
        SSleeper sleeper;
        Event gone(true);
        platform::Thread busy;
        sleeper.Start(busy);
        const std::jthread setter([&] {
            while (gone.Wait(0) != platform::eW_Signaled) {
                sleeper.event.Set();
            }
        });
        for (int i = 0; i < 50; ++i) {
            ASSERT_TRUE(busy.Suspend());
            sleeper.event.Reset();
            (void)sleeper.woken.Wait(0);
            ASSERT_TRUE(busy.Resume());
        }
        ASSERT_TRUE(busy.Kill(3));
        sleeper.event.Reset();
        sleeper.woken.Set();
        gone.Set();
    }
}

} // namespace
