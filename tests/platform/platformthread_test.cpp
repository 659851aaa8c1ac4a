#include "platform/platformthread.h"

#include "platform/platformclock.h"
#include "support/killedthreads.h"

#include <gtest/gtest.h>
#if !defined(_WIN32)
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#endif

#include <atomic>
#include <cstdlib>
#include <thread>

namespace {

using platform::Thread;

constexpr unsigned int kPatienceMs = 60'000; // spent in full only by a failing test

bool start(Thread& thread, unsigned int (*procedure)(void*), void* argument)
{
    return thread.Create(procedure, argument, u"test") && thread.Resume();
}

/// False where it does not end.
bool awaitEnd(const Thread& thread)
{
    return thread.WaitForEnd(kPatienceMs) == platform::eW_Signaled;
}

unsigned int answer(void* number) { return *static_cast<unsigned int*>(number); }

/// Counts until it is told to stop.
struct SCounter
{
    static unsigned int Run(void* counter)
    {
        auto* self = static_cast<SCounter*>(counter);
        while (!self->stop) {
            ++self->count;
            std::this_thread::yield();
        }
        return 0;
    }
    void WaitForProgress() const
    {
        const unsigned long long before = count;
        while (count == before) {
            std::this_thread::yield();
        }
    }

    std::atomic<unsigned long long> count = 0;
    std::atomic<bool> stop = false;
};

TEST(PlatformThreadTest, EndsWithTheExitCodeOfItsProcedure)
{
    for (unsigned int code : { 0u, 7u, Thread::kActive }) {
        Thread former;
        ASSERT_TRUE(former.Create(answer, &code, u"thread with a na\u00efve name"));
        EXPECT_TRUE(former.IsActive());
        EXPECT_EQ(former.GetExitCode(), Thread::kActive);
        EXPECT_EQ(former.WaitForEnd(0), platform::eW_TimedOut); // it has not been resumed
        EXPECT_NE(former.GetNativeHandle(), nullptr);
        Thread thread = std::move(former);
        EXPECT_FALSE(former.IsOpen()); // NOLINT(bugprone-use-after-move): empty after a move
        ASSERT_TRUE(thread.Resume());
        ASSERT_TRUE(awaitEnd(thread));
        EXPECT_EQ(thread.GetExitCode(), code == Thread::kActive ? 1u : code);
        EXPECT_FALSE(thread.Suspend());
        EXPECT_FALSE(thread.Kill(1));
    }
}

TEST(PlatformThreadTest, KnowsItselfAndDoesNotWaitForItself)
{
    Thread self;
    ASSERT_TRUE(start(
        self,
        [](void* argument) {
            auto& here = *static_cast<Thread*>(argument);
            EXPECT_TRUE(here.IsCurrent());
            EXPECT_EQ(here.GetId(), platform::GetCurrentThreadId());
            EXPECT_EQ(here.WaitForEnd(platform::kWaitForever), platform::eW_TimedOut);
            return 0u;
        },
        &self));
    EXPECT_FALSE(self.IsCurrent());
    EXPECT_NE(self.GetId(), platform::GetCurrentThreadId());
    ASSERT_TRUE(awaitEnd(self));
}

TEST(PlatformThreadTest, HasEndedOnlyWhenItsOwnObjectsAreDestroyed)
{
    static std::atomic<int> s_alive = 0;
    struct SOfThread
    {
        SOfThread() { ++s_alive; }
        ~SOfThread()
        {
            std::this_thread::yield();
            --s_alive;
        }
    };
    Thread thread;
    ASSERT_TRUE(start(
        thread,
        [](void*) {
            static thread_local const SOfThread object;
            return static_cast<unsigned int>(s_alive);
        },
        nullptr));
    ASSERT_TRUE(awaitEnd(thread));
    EXPECT_EQ(thread.GetExitCode(), 1u);
    EXPECT_EQ(s_alive, 0);
}

TEST(PlatformThreadTest, ASuspendedThreadStandsStillUntilItIsResumed)
{
    SKIP_IF_SIGNALS_ARE_DELAYED();
    SCounter counter;
    Thread thread;
    ASSERT_TRUE(thread.Create(SCounter::Run, &counter, u"counter"));
    EXPECT_TRUE(thread.Suspend()); // as it is anyway
    ASSERT_TRUE(thread.Resume());
    for (int round = 0; round < 100; ++round) {
        counter.WaitForProgress();
        ASSERT_TRUE(thread.Suspend());
        ASSERT_TRUE(thread.Suspend()); // it is not counted
        const unsigned long long count = counter.count;
        for (int i = 0; i < 100; ++i) {
            std::this_thread::yield();
            ASSERT_EQ(counter.count, count);
        }
        ASSERT_TRUE(thread.Resume());
    }
    // And at once after it was resumed, wherever it is on its way.
    for (int round = 0; round < 5'000; ++round) {
        ASSERT_TRUE(thread.Suspend()) << round;
        ASSERT_TRUE(thread.Resume()) << round;
    }
    counter.WaitForProgress();
    counter.stop = true;
    ASSERT_TRUE(awaitEnd(thread));
}

TEST(PlatformThreadTest, AThreadThatSuspendsItselfGoesOnWhenAnotherResumesIt)
{
    struct SSleeper
    {
        Thread thread;
        std::atomic<bool> awake = false;
    } sleeper;
    ASSERT_TRUE(start(
        sleeper.thread,
        [](void* argument) {
            auto& here = *static_cast<SSleeper*>(argument);
            const bool suspended = here.thread.Suspend();
            here.awake = true;
            return suspended ? 5u : 6u;
        },
        &sleeper));
    while (!sleeper.awake) {
        ASSERT_TRUE(sleeper.thread.Resume() || sleeper.awake);
        std::this_thread::yield();
    }
    ASSERT_TRUE(awaitEnd(sleeper.thread));
    EXPECT_EQ(sleeper.thread.GetExitCode(), 5u);
}

TEST(PlatformThreadTest, AThreadIsKilledWhereverItIs)
{
    SKIP_IF_SIGNALS_ARE_DELAYED();
    const auto kill = [](Thread& thread) {
        EXPECT_TRUE(thread.Kill(11));
        EXPECT_FALSE(thread.IsActive());
        EXPECT_EQ(thread.GetExitCode(), 11u);
        EXPECT_EQ(thread.WaitForEnd(0), platform::eW_Signaled);
        EXPECT_FALSE(thread.Resume());
    };
    for (const bool isSuspended : { false, true }) {
        SCounter counter;
        Thread thread;
        ASSERT_TRUE(start(thread, SCounter::Run, &counter));
        counter.WaitForProgress();
        ASSERT_TRUE(!isSuspended || thread.Suspend());
        kill(thread);
    }
    for (int round = 0; round < 200; ++round) { // it has not run yet
        unsigned int code = 0;
        Thread thread;
        ASSERT_TRUE(thread.Create(answer, &code, u"new"));
        kill(thread);
    }
}

TEST(PlatformThreadTest, PrioritiesGoDownTheLadder)
{
    SCounter counter;
    Thread thread;
    ASSERT_TRUE(thread.Create(SCounter::Run, &counter, u"lower"));
    EXPECT_EQ(thread.GetPriority(), 0);
    for (const int priority : { 0, -1, -2, -15 }) {
        EXPECT_TRUE(thread.SetPriority(priority));
        EXPECT_EQ(thread.GetPriority(), priority);
    }
#if !defined(_WIN32)
    const auto id = static_cast<pid_t>(thread.GetId());
    EXPECT_EQ(sched_getscheduler(id), SCHED_IDLE);
    EXPECT_GT(getpriority(PRIO_PROCESS, thread.GetId()), getpriority(PRIO_PROCESS, 0));
#endif
    EXPECT_FALSE(thread.SetPriority(4));
    EXPECT_EQ(thread.GetPriority(), -15);
    counter.stop = true;
    ASSERT_TRUE(thread.Resume());
    ASSERT_TRUE(awaitEnd(thread));
}

#if !defined(_WIN32)
TEST(PlatformThreadTest, DebuggersShowTheStartOfItsName)
{
    Thread thread;
    char name[64] = "";
    ASSERT_TRUE(thread.Create(
        [](void* argument) {
            pthread_getname_np(pthread_self(), static_cast<char*>(argument), 64);
            return 0u;
        },
        name, u"fourteen bytes\u00e4")); // the last character would be cut in two
    ASSERT_TRUE(thread.Resume());
    ASSERT_TRUE(awaitEnd(thread));
    EXPECT_STREQ(name, "fourteen bytes");
}

TEST(PlatformThreadDeathTest, AForkedChildHasANumberOfItsOwn)
{
    testing::FLAGS_gtest_death_test_style = "fast"; // which forks
    const std::uint32_t ofParent = platform::GetCurrentThreadId();
    EXPECT_EXIT(std::_Exit(platform::GetCurrentThreadId() != ofParent ? 0 : 1),
        testing::ExitedWithCode(0), "");
}
#endif

} // namespace
