#include "groundwork/tuthread.h"

#include "support/killedthreads.h"
#include "support/userrights.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

constexpr unsigned int kPatienceMs = 60'000; // spent in full only by a failing test

/// Does what its test tells it, and notes what it did.
class Worker
{
public:
    enum EWork
    {
        eW_Succeed,
        eW_Fail,
        eW_Throw,
        eW_WaitForGo,
    };

    explicit Worker(EWork first = eW_Succeed)
        : work(first)
    {
    }
    TuCheckReturn<bool> Work()
    {
        notes += "work ";
        started.Set();
        if (work == eW_Throw) {
            throw std::runtime_error("work");
        }
        if (work == eW_WaitForGo) {
            go.Wait(TuEvent::kInfinite);
        }
        return work != eW_Fail;
    }

    std::atomic<EWork> work;
    std::string notes; // of the run; to be read when it has ended
    TuEvent started{ true };
    TuEvent go{ true };
    TuEvent deleted{ true };
};

class NotedThread : public TuThread<Worker>
{
public:
    explicit NotedThread(Worker& worker, EThreadPriority priority = eTP_Normal)
        : TuThread(worker, &Worker::Work, u"noted", priority)
        , m_worker(worker)
    {
    }
    /// The hooks and their members are still there while the run ends.
    ~NotedThread() override
    {
        if (!IsFlagsSet(eFlagAutoDelete)) {
            m_worker.go.Set();
            WaitUntilTerminate(kPatienceMs).MarkRead();
        }
        m_worker.deleted.Set();
    }
    bool RunsOn() const { return getThreadID() == platform::GetCurrentThreadId(); }

    bool throwsBefore = false;
    bool throwsAfter = false;
    bool waitsBefore = false;

protected:
    void onBeforeRun() override
    {
        m_worker.notes += RunsOn() ? "before " : "elsewhere ";
        if (waitsBefore) {
            m_worker.started.Set();
            m_worker.go.Wait(TuEvent::kInfinite);
        }
        if (throwsBefore) {
            throw 1;
        }
    }
    void onAfterRun(unsigned long exitCode) override
    {
        m_worker.notes += "after " + std::to_string(exitCode) + ' ';
        if (throwsAfter) {
            throw std::runtime_error("after");
        }
    }

private:
    Worker& m_worker;
};

void finish(const TuThread<Worker>& thread)
{
    ASSERT_EQ(thread.GetTerminateEvent().Wait(kPatienceMs), TuEvent::eWR_Signaled);
    ASSERT_TRUE(thread.WaitUntilTerminate(kPatienceMs));
    EXPECT_FALSE(thread.IsRunning());
}

TEST(TuThreadTest, RunsHooksAndWorkInOrderUntilOneFails)
{
    struct SCase
    {
        const char* notes;
        Worker::EWork work = Worker::eW_Succeed;
        bool throwsBefore = false;
        bool throwsAfter = false;
        bool isSuccessful = false;
    };
    Worker worker;
    NotedThread thread(worker);
    EXPECT_FALSE(thread.WaitUntilTerminate(0)); // there is none yet
    EXPECT_EQ(thread.GetThreadHandle(), nullptr);
    // The same object every time: a new start forgets the former run.
    for (const SCase& run : { SCase{ "before work ", Worker::eW_Fail },
             SCase{ .notes = "before work after 0 ", .isSuccessful = true },
             SCase{ "before work ", Worker::eW_Throw },
             SCase{ .notes = "before ", .throwsBefore = true },
             SCase{ .notes = "before work after 0 ", .throwsAfter = true } }) {
        worker.work = run.work;
        worker.notes.clear();
        thread.throwsBefore = run.throwsBefore;
        thread.throwsAfter = run.throwsAfter;
        ASSERT_TRUE(thread.StartAndWait());
        finish(thread);
        EXPECT_EQ(worker.notes, run.notes);
        EXPECT_EQ(thread.IsSuccessful(), run.isSuccessful);
    }
    EXPECT_NE(thread.GetThreadHandle(), nullptr);
}

TEST(TuThreadTest, DoesNotStartTwiceAndForgetsTheEndOfTheFormerRun)
{
    Worker worker(Worker::eW_WaitForGo);
    NotedThread thread(worker);
    TuEvent ended(true);
    thread.SetTerminateEvent(ended);
    for (int run = 0; run < 3; ++run) {
        ASSERT_TRUE(thread.StartAndWait());
        EXPECT_FALSE(ended.IsSet());
        EXPECT_FALSE(thread.Start());
        EXPECT_FALSE(thread.StartAndWait());
        EXPECT_TRUE(thread.IsRunning());
        EXPECT_FALSE(thread.WaitUntilTerminate(0));
        worker.go.Set();
        ASSERT_EQ(ended.Wait(kPatienceMs), TuEvent::eWR_Signaled);
        worker.go.Reset(); // and at once the next run
    }
    finish(thread);
}

TEST(TuThreadTest, AnAutomaticallyDeletedThreadIsGoneAtTheEndOfItsRun)
{
    for (const bool waits : { false, true }) {
        Worker worker;
        auto* thread = new NotedThread(worker, eTP_BelowNormal);
        thread->AddFlags(NotedThread::eFlagAutoDelete);
        EXPECT_TRUE(waits ? thread->StartAndWait().GetValue() : thread->Start());
        ASSERT_EQ(worker.deleted.Wait(kPatienceMs), TuEvent::eWR_Signaled);
        EXPECT_EQ(worker.notes, "before work after 0 ");
    }
}

TEST(TuThreadTest, TerminateEndsTheRunWhereItIsAndTheObjectCanStartAgain)
{
    SKIP_IF_SIGNALS_ARE_DELAYED();
    Worker worker(Worker::eW_WaitForGo);
    NotedThread thread(worker);
    thread.Terminate(); // nothing to end
    ASSERT_TRUE(thread.Start());
    ASSERT_EQ(worker.started.Wait(kPatienceMs), TuEvent::eWR_Signaled);
    thread.Terminate();
    EXPECT_FALSE(thread.IsRunning());
    EXPECT_EQ(thread.GetThreadHandle(), nullptr);
    EXPECT_FALSE(thread.WaitUntilTerminate(0));
    EXPECT_FALSE(thread.GetTerminateEvent().IsSet()); // only the run itself sets it

    worker.go.Set();
    thread.throwsBefore = true;
    ASSERT_TRUE(thread.Start());
    finish(thread);
    EXPECT_FALSE(thread.IsSuccessful());
    thread.Terminate(); // the status is "finished", and no more
    EXPECT_TRUE(thread.IsSuccessful());
}

/// Works without memory: a thread that is killed in the allocator stops all others.
struct QuietWorker
{
    TuCheckReturn<bool> Work() { return true; }
};

TEST(TuThreadTest, TerminateMayMeetTheRunAnywhereOnItsWay)
{
    SKIP_IF_SIGNALS_ARE_DELAYED();
    QuietWorker worker;
    TuThread<QuietWorker> thread(worker, &QuietWorker::Work, u"quiet", eTP_Normal);
    for (int round = 0; round < 200; ++round) {
        ASSERT_TRUE(thread.StartAndWait());
        thread.Terminate();
        ASSERT_FALSE(thread.IsRunning());
    }
}

TEST(TuThreadTest, WhoWaitsForTheStartIsLetGoWhenTheThreadIsKilledBefore)
{
    SKIP_IF_SIGNALS_ARE_DELAYED();
    Worker worker;
    NotedThread thread(worker);
    thread.waitsBefore = true;
    std::atomic<bool> returned = false;
    {
        const std::jthread starter([&] { returned = thread.StartAndWait(); });
        ASSERT_EQ(worker.started.Wait(kPatienceMs), TuEvent::eWR_Signaled);
        EXPECT_FALSE(returned);
        thread.Terminate();
    }
    EXPECT_TRUE(returned);
}

TEST(TuThreadTest, TheStartedObjectEndsItsRunAndACopyDoesNot)
{
    SKIP_IF_SIGNALS_ARE_DELAYED();
    Worker worker(Worker::eW_WaitForGo);
    std::optional<TuThread<Worker>> thread(
        std::in_place, worker, &Worker::Work, u"original", eTP_Normal);
    ASSERT_TRUE(thread->StartAndWait());
    ASSERT_EQ(worker.started.Wait(kPatienceMs), TuEvent::eWR_Signaled);
    {
        TuThread<Worker> copy(*thread);
        EXPECT_EQ(copy.GetThreadHandle(), thread->GetThreadHandle());
        EXPECT_FALSE(copy.Start());
        EXPECT_TRUE(copy.Suspend());
        EXPECT_TRUE(copy.Resume());
    }
    EXPECT_TRUE(thread->IsRunning());
    const TuThread<Worker> copy(*thread);
    thread.reset(); // kills
    EXPECT_FALSE(copy.IsRunning());
    EXPECT_TRUE(copy.WaitUntilTerminate(0));
}

/// Its thread is not gone yet when the work is done.
struct LingeringWorker
{
    struct SOfThread
    {
        ~SOfThread()
        {
            for (int i = 0; i < 20; ++i) {
                std::this_thread::yield();
            }
            ++s_ended;
        }
    };

    TuCheckReturn<bool> Work()
    {
        static thread_local const SOfThread object;
        (void)object;
        return true;
    }

    static inline std::atomic<int> s_ended = 0;
};

/// Who destroys the object as soon as the run says that it is done must not hurt the thread.
TEST(TuThreadTest, TheObjectMayGoAsSoonAsItsTerminateEventIsSet)
{
    TuEvent ended(true);
    LingeringWorker worker;
    LingeringWorker::s_ended = 0;
    for (int round = 1; round <= 300; ++round) {
        TuThread<LingeringWorker> thread(worker, &LingeringWorker::Work, u"short", eTP_Normal);
        thread.SetTerminateEvent(ended);
        for (int run = 2 * round - 1; run <= 2 * round; ++run) {
            ended.Reset();
            ASSERT_TRUE(thread.Start()); // waits for the former run
            ASSERT_GE(LingeringWorker::s_ended, run - 1); // it was let go to its very end
            ASSERT_EQ(ended.Wait(kPatienceMs), TuEvent::eWR_Signaled);
            ASSERT_FALSE(thread.Suspend());
        }
    }
}

/// Suspends its thread again and again while another resumes it: no call may be lost.
TEST(TuThreadTest, AWorkerThatSuspendsItselfIsResumedByAnother)
{
    struct SSleeper
    {
        TuCheckReturn<bool> Work()
        {
            for (int round = 0; round < 2'000; ++round) {
                if (!thread.Suspend()) {
                    return false;
                }
            }
            return true;
        }

        TuThread<SSleeper> thread{ *this, &SSleeper::Work, u"sleeper", eTP_Normal };
    } sleeper;
    SKIP_IF_SIGNALS_ARE_DELAYED();
    ASSERT_TRUE(sleeper.thread.Start());
    while (!sleeper.thread.WaitUntilTerminate(0)) {
        sleeper.thread.Resume();
    }
    EXPECT_TRUE(sleeper.thread.IsSuccessful());
}

TEST(TuThreadTest, SuspendsOnlyWhatRunsAndDoesNotCount)
{
    SKIP_IF_SIGNALS_ARE_DELAYED();
    Worker worker(Worker::eW_WaitForGo);
    NotedThread thread(worker);
    EXPECT_FALSE(thread.Suspend());
    EXPECT_FALSE(thread.Resume());
    ASSERT_TRUE(thread.StartAndWait());
    EXPECT_TRUE(thread.Resume()); // nothing to do
    EXPECT_TRUE(thread.Suspend());
    EXPECT_TRUE(thread.Suspend());
    worker.go.Set();
    EXPECT_FALSE(thread.WaitUntilTerminate(1));
    EXPECT_TRUE(thread.Resume());
    finish(thread);
    EXPECT_FALSE(thread.Suspend());
}

/// Makes no thread while it refuses; keeps the last one that it made.
struct SRefusingPolicy
{
    static bool Create(platform::Thread& thread, platform::Thread::Procedure procedure,
        void* argument, const CString& name)
    {
        s_thread = &thread;
        return !s_refuses && thread.Create(procedure, argument, name);
    }

    static inline bool s_refuses = false;
    static inline platform::Thread* s_thread = nullptr;
};

TEST(TuThreadTest, StartFailsWithoutAThreadAndTheExitCodeTellsFailure)
{
    Worker worker;
    TuThread<Worker, SRefusingPolicy> thread(worker, &Worker::Work, u"refused", eTP_Normal);
    SRefusingPolicy::s_refuses = true;
    EXPECT_FALSE(thread.Start());
    EXPECT_FALSE(thread.StartAndWait());
    SRefusingPolicy::s_refuses = false;
    for (const auto work : { Worker::eW_Succeed, Worker::eW_Fail }) {
        worker.work = work;
        ASSERT_TRUE(thread.StartAndWait());
        ASSERT_TRUE(thread.WaitUntilTerminate(kPatienceMs));
        EXPECT_EQ(SRefusingPolicy::s_thread->GetExitCode(), work == Worker::eW_Fail ? 1u : 0u);
    }
    SRefusingPolicy::s_refuses = true;
    EXPECT_FALSE(thread.Start());
    EXPECT_TRUE(thread.GetTerminateEvent().IsSet()); // there is no run that has not ended
    SRefusingPolicy::s_refuses = false;
}

void expectLadder(NotedThread& thread)
{
    for (const int priority : { -2, -1, 0, 1, 2, 15 }) {
        EXPECT_TRUE(thread.SpeedUp()) << priority;
        EXPECT_EQ(thread.GetPriority(), priority);
    }
    EXPECT_FALSE(thread.SpeedUp());
    for (const int priority : { 2, 1, 0, -1, -2, -15 }) {
        EXPECT_TRUE(thread.SlowDown()) << priority;
        EXPECT_EQ(thread.GetPriority(), priority);
    }
    EXPECT_FALSE(thread.SlowDown());
}

TEST(TuThreadTest, PrioritiesMoveAlongTheLadder)
{
    Worker worker(Worker::eW_WaitForGo);
    NotedThread thread(worker, eTP_Idle);
    expectLadder(thread);
    EXPECT_TRUE(thread.SetPriority(static_cast<EThreadPriority>(3)));
    EXPECT_FALSE(thread.SpeedUp() || thread.SlowDown());
    EXPECT_EQ(thread.GetPriority(), 3);

    thread.SetPriority(eTP_Lowest);
    ASSERT_TRUE(thread.StartAndWait());
    EXPECT_EQ(thread.GetPriority(), eTP_Lowest); // of the living thread
    EXPECT_TRUE(thread.SlowDown());
    EXPECT_EQ(thread.GetPriority(), eTP_Idle);
}

TEST(TuThreadTest, PrioritiesGoUpWhereTheUserMayRaiseThem)
{
    if (!MayRaisePriorities()) {
        GTEST_SKIP() << "without CAP_SYS_NICE the system refuses to raise a priority: "
                        "TuThreadDeathTest is the test of that";
    }
    Worker worker(Worker::eW_WaitForGo);
    NotedThread thread(worker, eTP_Idle);
    ASSERT_TRUE(thread.StartAndWait());
    expectLadder(thread);
}

#if !defined(_WIN32) // there, everybody may raise priorities
TEST(TuThreadDeathTest, APriorityThatIsRefusedIsLoggedInOneLine)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            if (!BecomeOrdinaryUser()) {
                std::_Exit(7);
            }
            Worker worker(Worker::eW_WaitForGo);
            NotedThread thread(worker, eTP_AboveNormal);
            const bool isStarted = thread.StartAndWait(); // it logs, and starts all the same
            const bool isAsBefore = thread.GetPriority() == eTP_Normal;
            const bool isLowered = thread.SlowDown();
            const bool isRefused = !thread.SpeedUp() && thread.GetPriority() == eTP_BelowNormal;
            worker.go.Set();
            const bool isKept = thread.WaitUntilTerminate(kPatienceMs)
                && thread.GetPriority() == eTP_Normal; // what was asked for, for the next start
            std::_Exit(isStarted && isAsBefore && isLowered && isRefused && isKept ? 0 : 1);
        },
        testing::ExitedWithCode(0),
        "^(core/groundwork/tuthread\\(679\\): error: \\(noted\\) 13 - Permission denied\n){2}$");
}
#endif

} // namespace
