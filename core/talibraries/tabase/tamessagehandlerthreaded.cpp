#include "tabase/tamessagehandlerthreaded.h"

#include "platform/platformclock.h"
#include "platform/platformthread.h"
#include "tabase/tamessagedispatcher.h"
#include "tabase/tamessageloop.h"

#include <algorithm>

template class TuThread<TaMessageHandlerThreaded, TuThreadPolicyMFC>;

const TuRTTI TaMessageHandlerThreaded::RTTI(
    u"TaMessageHandlerThreaded", TaMessageHandler::RTTI, nullptr, nullptr);

TaMessageHandlerThreaded::TaMessageHandlerThreaded(const CString& name, EThreadPriority priority)
    : TaMessageHandler(name)
    , TuThread<TaMessageHandlerThreaded, TuThreadPolicyMFC>(
          *this, &TaMessageHandlerThreaded::mainLoop, name, priority)
{
}

TaMessageHandlerThreaded::~TaMessageHandlerThreaded()
{
    if (IsRunning()) {
        postQuit();
        waitForEnd(kMostMsToEnd);
    }
}

unsigned long long TaMessageHandlerThreaded::GetMemoryUsage() const
{
    return TaMessageHandler::GetMemoryUsage() + TuThread::GetMemoryUsage();
}

void TaMessageHandlerThreaded::SetName(const CString& name)
{
    TaMessageHandler::setName(name);
    TuThread::SetName(name);
}

TuCheckReturn<bool> TaMessageHandlerThreaded::StartAndWait()
{
    if (IsRunning()) {
        return false;
    }
    // A former thread that was killed has left both behind.
    closeQueues();
    setHWND(nullptr);
    m_eventReadyForMessages.Reset();
    m_quitIsRefused = false;
    if (!TuThread::StartAndWait()) {
        return false;
    }
    unsigned int index = 1;
    // A thread that is killed sets no event.
    while (TaMessageDispatcher::waitServing(
               m_eventReadyForMessages, GetTerminateEvent(), kLookMs, index)
            != TuEvent::eWR_Signaled
        && IsRunning()) { }
    if (index != 0) {
        waitForEnd(TuEvent::kInfinite); // it can be started again at once
    }
    return index == 0;
}

bool TaMessageHandlerThreaded::StopAndWait(unsigned int milliseconds) noexcept
{
    if (!IsRunning()) {
        return true;
    }
    signalMessagingFinished();
    return waitForEnd(milliseconds);
}

bool TaMessageHandlerThreaded::waitForEnd(unsigned int milliseconds) noexcept
{
    if (TuThread::getThreadID() == platform::GetCurrentThreadId()) {
        return false;
    }
    const std::uint64_t deadline = platform::GetDeadline(milliseconds);
    const TuEvent& ended = GetTerminateEvent();
    unsigned int index = 0;
    while (IsRunning()) {
        const unsigned int left = platform::GetMillisecondsUntil(deadline);
        const unsigned int slice = std::min(left, kLookMs);
        if (TaMessageDispatcher::waitServing(ended, ended, slice, index) == TuEvent::eWR_Signaled) {
            return WaitUntilTerminate(left);
        }
        if (left == 0) {
            return false;
        }
        if (m_quitIsRefused) {
            postQuit();
        }
    }
    return true;
}

void TaMessageHandlerThreaded::signalMessagingFinished()
{
    TaMessageHandler::signalMessagingFinished();
    postQuit();
}

void TaMessageHandlerThreaded::postQuit() noexcept
{
    const HWND window = TaMessageHandler::GetHWND();
    m_quitIsRefused = platform::PostToWindow(window, platform::eWM_Quit, 0, 0) == platform::eP_Full;
}

TuCheckReturn<bool, TuCheckReturnPolicyAssert> TaMessageHandlerThreaded::mainLoop()
{
    if (!createHWND(*this)) {
        return false;
    }
    m_eventReadyForMessages.Set();
    const bool hasServed = TaMessageLoop::Run();
    const bool isDestroyed = destroyMessageHandler();
    return hasServed && isDestroyed;
}
