#pragma once

#include "groundwork/tucheckreturn.h"
#include "groundwork/tuevent.h"
#include "groundwork/tuflags.h"
#include "groundwork/tuiclassname.h"
#include "groundwork/tuthreadhandle.h"
#include "groundwork/tuthreadpriority.h"
#include "groundwork/tuthreadstart.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>

/// The usual policy of TuThread: a thread of the system.
struct TuThreadPolicyMFC
{
    [[nodiscard]] static bool Create(platform::Thread& thread,
        platform::Thread::Procedure procedure, void* argument, const CString& name)
    {
        return thread.Create(procedure, argument, name);
    }
};

/// A named thread that runs a member function of its owner.
///
///     TuCheckReturn<bool> Loader::load();      // true: it worked
///     ...
///     TuThread<Loader, TuThreadPolicyMFC> thread(*this, &Loader::load, u"Loader", eTP_Normal);
///     if (!thread.Start()) ...
///     thread.WaitUntilTerminate(TuEvent::kInfinite).MarkRead();
///
/// The new thread calls onBeforeRun, the function, and, where both went well, onAfterRun; then it
/// sets the terminate event, and ends with exit code 0, or 1 where one of them failed. It can then
/// be started again.
///
/// The destructor kills a thread that still runs. It comes too late for a derived class, whose
/// hooks and members are gone by then: let the derived destructor, or the owner, ask the work to
/// end and wait. What a killed thread leaves behind is said at platform::Thread; its terminate
/// event is not set, so wait for that with a time-out where somebody may call Terminate.
///
/// Ownership: the owner outlives the run. Copies are of the same thread: they share its status, and
///            may wait for it, suspend and kill it. It is the object that was started whose hooks
///            it calls and whose destructor ends it. With eFlagAutoDelete the object, made by new,
///            deletes itself at the end of the run: nobody may touch it after Start but the run.
/// Threads:   one thread starts, restarts, names and destroys, and names only while no other uses
///            the object; the rest may be called by any. The status is advisory.
/// Failure:   nothing throws, but for construction and names (std::bad_alloc). What the function
///            and the hooks throw is dropped; IsSuccessful() tells. Neither may call
///            pthread_exit.
template <class T, class Policy = TuThreadPolicyMFC>
class GROUNDWORK_TEMPLATE TuThread : public TuIClassName<1>
{
public:
    using Method = TuCheckReturn<bool, TuCheckReturnPolicyAssert> (T::*)();

    enum EFlags : unsigned int
    {
        eFlagAutoDelete = 1,
    };

    TuThread(T& owner, Method method, const CString& name, EThreadPriority priority)
        : TuIClassName<1>(name)
        , m_owner(&owner)
        , m_method(method)
        , m_priority(priority)
        , m_status(std::make_shared<std::atomic<unsigned int>>(0u))
    {
    }
    TuThread(const TuThread& other);
    TuThread& operator=(const TuThread&) = delete;
    virtual ~TuThread();

    /// False where a run is still going on, or the system has no thread left. Waits for the end of
    /// a former run that has finished, and resets the terminate event.
    virtual bool Start();
    /// Returns when onBeforeRun has run on the new thread, or that was killed. False, too, where
    /// another caller is waiting here.
    virtual TuCheckReturn<bool> StartAndWait();

    /// Whether the thread has ended, or waiting for it failed; false without a thread, when the
    /// time-out (in milliseconds) ran out, and on the thread itself.
    TuCheckReturn<bool> WaitUntilTerminate(unsigned int milliseconds) const;
    /// Kills the thread where it stands, and gives it up. A run that has finished is let go. A
    /// thread that cannot be killed stays, and the object with it.
    void Terminate();
    /// Suspend stops the thread wherever it is, with all locks that it holds there; false unless it
    /// is running. Both are true where there is nothing to do.
    bool Suspend();
    bool Resume();

    bool IsRunning() const;
    bool IsSuccessful() const;

    /// Kept for the next start, and applied to the thread where there is one; false where the
    /// system refuses that, which is logged.
    bool SetPriority(EThreadPriority priority);
    /// Of the thread where one runs, else as it was set.
    EThreadPriority GetPriority() const;
    /// One step on the ladder; false at its end, and for a priority that is not on it.
    bool SpeedUp();
    bool SlowDown();

    void SetFlags(EFlags flags);
    void AddFlags(EFlags flags);
    void RemoveFlags(EFlags flags);
    bool IsFlagsSet(EFlags flags) const;
    bool IsOneFlagSet(EFlags flags) const;
    TuFlags<EFlags> GetFlags() const;

    /// For the next start: a running thread keeps the name that debuggers show.
    void SetName(const CString& name);
    /// From now on the end of a run sets `event`; before Start.
    void SetTerminateEvent(TuEvent& event);
    const TuEvent& GetTerminateEvent() const;
    /// A HANDLE or a pthread_t, as the system has it; null without a thread.
    void* GetThreadHandle() const;

protected:
    std::uint32_t getThreadID() const;

    /// On the new thread, before and after the function. The exit code is 0: after a failure
    /// onAfterRun is not called.
    virtual void onBeforeRun();
    virtual void onAfterRun(unsigned long exitCode);

private:
    enum EStatus : unsigned int
    {
        eStatusStarted = 1, // Start has made the thread
        eStatusRunning = 2, // the thread is in its procedure
        eStatusFinished = 4, // the procedure is done, or was killed
        eStatusSuspended = 8,
        eStatusFailed = 16, // a hook or the function threw, or the function answered false
    };

    /// How long the end of a run that has finished may take: nothing is left to do in it.
    static constexpr unsigned int kMostMsToEnd = 10'000;

    static unsigned int threadProcedure(void* thread);
    unsigned int run();
    void attempt(bool (TuThread::*work)());
    bool runBefore()
    {
        onBeforeRun();
        return true;
    }
    bool runMethod() { return (m_owner->*m_method)(); }
    bool runAfter()
    {
        onAfterRun(0);
        return true;
    }
    bool step(bool (*next)(EThreadPriority&));
    bool endThread(platform::Thread& thread);

    bool hasStatus(unsigned int bits) const { return (*m_status & bits) != 0; }
    void clearStatus(unsigned int bits) { *m_status &= ~bits; }

    std::atomic<unsigned int> m_flags{ 0 };
    T* m_owner;
    Method m_method;
    TuThreadHandle m_threadHandle;
    std::atomic<std::uint32_t> m_threadId{ 0 };
    TuThreadStart m_startEvent; // of a caller of StartAndWait
    TuEvent m_terminateEvent{ true };
    std::atomic<EThreadPriority> m_priority;
    std::shared_ptr<std::atomic<unsigned int>> m_status; // shared with the copies
    bool m_isStarter = false; // the thread runs this object, not a copy
};

#include "groundwork/tuthreadimplementation.h"
