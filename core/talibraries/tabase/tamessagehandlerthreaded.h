#pragma once

#include "groundwork/tuthread.h"
#include "tabase/tamessagehandler.h"

#include <atomic>

#include "platform/platformmacrospush.h"

class TaMessageHandlerThreaded;

// Both libraries and their users see one thread class.
extern template class TABASE_API TuThread<TaMessageHandlerThreaded, TuThreadPolicyMFC>;

/// A message handler with a thread of its own.
///
///     class Importer : public TaMessageHandlerThreaded
///     {
///     public:
///         Importer() : TaMessageHandlerThreaded(u"Importer", eTP_BelowNormal) { }
///         ~Importer() override { StopAndWait(TuEvent::kInfinite); }
///         ...
///     };
///
///     if (!importer.StartAndWait()) ...
///
/// Its thread makes the window (onSubscribeMessages is called then), serves it until the loop is
/// ended, and destroys it (onUnsubscribeMessages).
///
/// Ownership: the most derived destructor calls StopAndWait first: when it is done, hooks and
///            members of the derived class are gone. The destructor here waits for ten seconds, and
///            then kills the thread.
/// Threads:   as said at TaMessageHandlerBase and TuThread.
class TABASE_API TaMessageHandlerThreaded
    : public TaMessageHandler,
      public TuThread<TaMessageHandlerThreaded, TuThreadPolicyMFC>
{
public:
    static const TuRTTI RTTI;

    TaMessageHandlerThreaded(const CString& name, EThreadPriority priority);
    const TuRTTI& GetRTTI() const override { return RTTI; }
    ~TaMessageHandlerThreaded() override;

    /// The handler's, which is the thread's, too.
    const CString& GetName() const override { return TaMessageHandler::GetName(); }
    unsigned long long GetMemoryUsage() const override;
    /// Before it starts and subscribes.
    void SetName(const CString& name);

    /// Starts the thread, and returns when the window is there: true; or when the thread has ended
    /// without.
    TuCheckReturn<bool> StartAndWait() override;
    /// Ends the loop behind what waits already, and waits for the end of the thread, in
    /// milliseconds. True where there is none (any more). On the thread itself it only ends the
    /// loop: false.
    bool StopAndWait(unsigned int milliseconds) noexcept;
    /// Set while the window is there, and afterwards until the next start.
    const TuEvent& getEventReadyForMessages() const { return m_eventReadyForMessages; }

    using TaMessageHandler::GetThreadID;

protected:
    /// Ends the loop behind what waits already.
    void signalMessagingFinished() override;

private:
    friend class TaMessageDispatcher;

    static constexpr unsigned int kMostMsToEnd = 10'000; // for the destructor
    static constexpr unsigned int kLookMs = 100; // how often who waits looks whether all is well

    TuCheckReturn<bool, TuCheckReturnPolicyAssert> mainLoop();

    void postQuit() noexcept;
    bool waitForEnd(unsigned int milliseconds) noexcept;

    TuEvent m_eventReadyForMessages{ true };
    std::atomic<bool> m_quitIsRefused{ false }; // by a full queue: it is to be posted again
};

#include "platform/platformmacrospop.h"
