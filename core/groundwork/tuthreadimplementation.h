#pragma once

#include "groundwork/tuthread.h"

template <class T, class Policy>
TuThread<T, Policy>::TuThread(const TuThread& other)
    : TuIClassName<1>(other)
    , m_flags(other.m_flags.load())
    , m_owner(other.m_owner)
    , m_method(other.m_method)
    , m_threadHandle(other.m_threadHandle)
    , m_threadId(other.m_threadId.load())
    , m_terminateEvent(other.m_terminateEvent)
    , m_priority(other.m_priority.load())
    , m_status(other.m_status)
{
}

template <class T, class Policy> TuThread<T, Policy>::~TuThread()
{
    if (m_isStarter && !IsFlagsSet(eFlagAutoDelete) && IsRunning()) {
        Terminate();
    }
    m_threadHandle.Close();
}

template <class T, class Policy> bool TuThread<T, Policy>::Start()
{
    if (const TuThreadHandle::Shared former = m_threadHandle.Get()) {
        if (hasStatus(eStatusStarted) && !hasStatus(eStatusFinished)) {
            return false;
        }
        if (former->WaitForEnd(kMostMsToEnd) != platform::eW_Signaled) {
            return false;
        }
        m_threadHandle.Close();
    }
    *m_status = 0;
    TuThreadHandle::Shared thread;
    try {
        thread = std::make_shared<platform::Thread>();
    } catch (...) { // no memory: no thread
        return false;
    }
    if (!Policy::Create(*thread, threadProcedure, this, GetName())) {
        return false;
    }
    if (m_threadId
        != 0) { // a former run may have set it; a first one finds it as its owner left it
        m_terminateEvent.Reset();
    }
    // Everything is in place before the thread runs: it may delete this object at its end.
    m_threadHandle.Set(thread);
    m_threadId = thread->GetId();
    *m_status |= eStatusStarted;
    m_isStarter = true;
    const EThreadPriority priority = m_priority;
    if (thread->GetPriority() != priority) {
        SetPriority(priority);
    }
    return thread->Resume();
}

template <class T, class Policy> TuCheckReturn<bool> TuThread<T, Policy>::StartAndWait()
{
    TuEvent started(true);
    if (!m_startEvent.Expect(started)) {
        return false;
    }
    if (!Start()) {
        m_startEvent.Signal(); // nobody waits
        return false;
    }
    // From here on the object may be gone.
    while (started.Wait(TuEvent::kInfinite) != TuEvent::eWR_Signaled) { } // fails without memory
    return true;
}

// Outside of the class, so that on Windows a library that has an instance exports them, too.
template <class T, class Policy> void TuThread<T, Policy>::onBeforeRun() { }

template <class T, class Policy> void TuThread<T, Policy>::onAfterRun(unsigned long) { }

template <class T, class Policy> unsigned int TuThread<T, Policy>::threadProcedure(void* thread)
{
    return static_cast<TuThread*>(thread)->run();
}

template <class T, class Policy> unsigned int TuThread<T, Policy>::run()
{
    *m_status |= eStatusRunning;
    attempt(&TuThread::runBefore);
    m_startEvent.Signal();
    if (IsSuccessful()) {
        attempt(&TuThread::runMethod);
    }
    if (IsSuccessful()) {
        attempt(&TuThread::runAfter);
    }
    clearStatus(eStatusRunning);
    *m_status |= eStatusFinished;
    const unsigned int exitCode = IsSuccessful() ? 0 : 1;
    const bool deletesItself = IsFlagsSet(eFlagAutoDelete);
    // Who waits for this event may destroy the object, and its destructor waits for the end.
    m_terminateEvent.Set();
    if (deletesItself) {
        delete this;
    }
    return exitCode;
}

template <class T, class Policy> void TuThread<T, Policy>::attempt(bool (TuThread::*work)())
{
    bool succeeded = false;
    try {
        succeeded = (this->*work)();
    } catch (...) { // the status says that there was one
    }
    if (!succeeded) {
        *m_status |= eStatusFailed;
    }
}

template <class T, class Policy>
TuCheckReturn<bool> TuThread<T, Policy>::WaitUntilTerminate(unsigned int milliseconds) const
{
    const TuThreadHandle::Shared thread = m_threadHandle.Get();
    return thread != nullptr && thread->WaitForEnd(milliseconds) != platform::eW_TimedOut;
}

template <class T, class Policy> void TuThread<T, Policy>::Terminate()
{
    const TuThreadHandle::Shared thread = m_threadHandle.Get();
    if (thread == nullptr) {
        return;
    }
    const bool isSuicide = thread->IsCurrent(); // then nothing is done after the kill
    if (!isSuicide && !endThread(*thread)) {
        return;
    }
    m_startEvent.Signal();
    m_threadHandle.Close();
    *m_status = eStatusFinished;
    if (isSuicide) {
        (void)thread->Kill(platform::Thread::kActive);
    }
}

template <class T, class Policy> bool TuThread<T, Policy>::endThread(platform::Thread& thread)
{
    // A run that has finished is on its way out, perhaps with the allocator's lock: let it go.
    if (hasStatus(eStatusFinished) && thread.WaitForEnd(kMostMsToEnd) == platform::eW_Signaled) {
        return true;
    }
    return thread.Kill(platform::Thread::kActive) || !thread.IsActive();
}

template <class T, class Policy> bool TuThread<T, Policy>::Suspend()
{
    if (!hasStatus(eStatusRunning)) {
        return false;
    }
    if ((m_status->fetch_or(eStatusSuspended) & eStatusSuspended) != 0) {
        return true;
    }
    // The bit is set before, so that another thread can resume one that suspends itself.
    const TuThreadHandle::Shared thread = m_threadHandle.Get();
    bool isSuspended = thread != nullptr && thread->Suspend();
    if (isSuspended && !hasStatus(eStatusRunning)) {
        // The run was over when the thread came to stand: nobody would resume it.
        isSuspended = false;
        (void)thread->Resume();
    }
    if (!isSuspended) {
        clearStatus(eStatusSuspended);
    }
    return isSuspended;
}

template <class T, class Policy> bool TuThread<T, Policy>::Resume()
{
    if (!hasStatus(eStatusRunning)) {
        return false;
    }
    // Whatever the bit says: a Suspend on another thread may be half-way between it and the system,
    // and a thread that is not suspended does not mind.
    clearStatus(eStatusSuspended);
    const TuThreadHandle::Shared thread = m_threadHandle.Get();
    const bool isResumed = thread != nullptr && thread->Resume();
    if (!isResumed) {
        *m_status |= eStatusSuspended;
    }
    return isResumed;
}

template <class T, class Policy> bool TuThread<T, Policy>::IsRunning() const
{
    const TuThreadHandle::Shared thread = m_threadHandle.Get();
    return thread != nullptr && thread->IsActive();
}

// Also what is short: MinGW-w64 exports nothing of an instance that lies in the class.

template <class T, class Policy> bool TuThread<T, Policy>::IsSuccessful() const
{
    return !hasStatus(eStatusFailed);
}

template <class T, class Policy> void TuThread<T, Policy>::SetFlags(EFlags flags)
{
    m_flags = flags;
}

template <class T, class Policy> void TuThread<T, Policy>::AddFlags(EFlags flags)
{
    m_flags |= flags;
}

template <class T, class Policy> void TuThread<T, Policy>::RemoveFlags(EFlags flags)
{
    m_flags &= ~static_cast<unsigned int>(flags);
}

template <class T, class Policy> bool TuThread<T, Policy>::IsFlagsSet(EFlags flags) const
{
    return GetFlags().IsSet(flags);
}

template <class T, class Policy> bool TuThread<T, Policy>::IsOneFlagSet(EFlags flags) const
{
    return GetFlags().IsOneSet(flags);
}

template <class T, class Policy>
TuFlags<typename TuThread<T, Policy>::EFlags> TuThread<T, Policy>::GetFlags() const
{
    return TuFlags<EFlags>::FromBits(m_flags);
}

template <class T, class Policy> void TuThread<T, Policy>::SetName(const CString& name)
{
    setName(name);
}

template <class T, class Policy> void TuThread<T, Policy>::SetTerminateEvent(TuEvent& event)
{
    m_terminateEvent = event;
}

template <class T, class Policy> const TuEvent& TuThread<T, Policy>::GetTerminateEvent() const
{
    return m_terminateEvent;
}

template <class T, class Policy> std::uint32_t TuThread<T, Policy>::getThreadID() const
{
    return m_threadId;
}

template <class T, class Policy> bool TuThread<T, Policy>::SetPriority(EThreadPriority priority)
{
    m_priority = priority;
    return m_threadHandle.SetPriority(priority, GetName());
}

template <class T, class Policy> EThreadPriority TuThread<T, Policy>::GetPriority() const
{
    const TuThreadHandle::Shared thread = m_threadHandle.Get();
    return thread != nullptr && thread->IsActive()
        ? static_cast<EThreadPriority>(thread->GetPriority())
        : m_priority.load();
}

template <class T, class Policy> bool TuThread<T, Policy>::step(bool (*next)(EThreadPriority&))
{
    EThreadPriority priority = GetPriority();
    return next(priority) && SetPriority(priority);
}

template <class T, class Policy> bool TuThread<T, Policy>::SpeedUp() { return step(TuStepUp); }

template <class T, class Policy> bool TuThread<T, Policy>::SlowDown() { return step(TuStepDown); }

template <class T, class Policy> void* TuThread<T, Policy>::GetThreadHandle() const
{
    const TuThreadHandle::Shared thread = m_threadHandle.Get();
    return thread != nullptr ? thread->GetNativeHandle() : nullptr;
}
