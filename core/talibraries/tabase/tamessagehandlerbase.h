#pragma once

#include "groundwork/tucheckreturn.h"
#include "groundwork/tuiclassname.h"
#include "groundwork/tulatesterror.h"
#include "groundwork/turtti.h"
#include "platform/platformwindow.h"
#include "tabase/tabaseapi.h"
#include "tabase/tanotificationqueue.h"
#include "tabase/tapostnotification.h"
#include "tabase/tasendnotification.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>

#include "platform/platformmacrospush.h"

class TaMessage;
class TaMessageCreateHWND;
class TaMessageDispatcher;
class TaMessageSubscription;

/// What receives messages from the TaMessageDispatcher. Derive from TaMessageHandler, for a handler
/// on a thread that has a loop already, or from TaMessageHandlerThreaded, for one with a thread of
/// its own; override handleMessage and onSubscribeMessages.
///
/// A handler has a hidden window. Who has something for it puts that into one of its two queues,
/// for what was sent and for what was posted, and posts one wake-up to the window for each; so the
/// handler works in the order of the wake-ups, on the thread of its window. A wake-up may find
/// nothing left; one that the system refuses, for its queue is full, is made good by the next.
///
/// Before a handler has a window, and from when that has gone, nothing reaches it: what is sent to
/// it then counts as not answered, what is posted is dropped.
///
/// Ownership: whoever made it. On its end it leaves the dispatcher, which waits for that one's
///            thread; nothing refers to it then. End it on the thread of its window, or after that
///            thread's end, and first of all in the most derived destructor: what others do with it
///            at that time needs the object whole.
/// Threads:   what is sent and posted is handled on the thread of the window; subscribing,
///            unsubscribing and the questions may be done on any. Name it before it subscribes.
/// Failure:   what handleMessage throws becomes the answer kFail; of a post, it is dropped.
class TABASE_API TaMessageHandlerBase : public TuIClassName<2>
{
public:
    static const TuRTTI RTTI;

    /// What a handler answers that has failed: E_FAIL, 0x80004005 in its 32 bits.
    static constexpr long long kFail = static_cast<std::int32_t>(0x80004005u);

    // The numbers of its window messages.
    static constexpr unsigned int kSendSignal = 45056;
    static constexpr unsigned int kPostSignal = 45057;
    /// A text for a TaMessageString: the window, and the text, ended by a zero, in a block of task
    /// memory, which is the receiver's.
    static constexpr unsigned int kStringMessage = 45073;

    virtual const TuRTTI& GetRTTI() const { return RTTI; }
    virtual ~TaMessageHandlerBase();
    TaMessageHandlerBase(const TaMessageHandlerBase&) = delete;
    TaMessageHandlerBase& operator=(const TaMessageHandlerBase&) = delete;

    /// Of the window's thread; 0 until there is a window.
    virtual unsigned int GetThreadID() const { return m_threadId.load(); }
    /// Null while there is none.
    virtual HWND GetHWND() const = 0;

protected:
    virtual void setHWND(HWND window);
    /// What the window is made with; null, and there is none.
    virtual platform::WindowProcedure getWindowProc() { return nullptr; }

public:
    /// From everything; the dispatcher forgets the name, too.
    virtual void UnsubscribeAll();

protected:
    /// On the window's thread. The result goes to who has sent the message. What nobody treats ends
    /// here: it is reported as misrouted, and answered by kFail. A TaMessageCreateHWND makes the
    /// window of the handler that it names, with the answer 1, or 0 where that failed.
    virtual long long handleMessage(const TaMessage& message);

public:
    virtual void ReplyMessage() { }

protected:
    /// Call handleMessage.
    virtual void processSendNotification(TaSendNotification& notification);
    virtual void processPostNotification(TaPostNotification& notification);
    /// Asks the handler to end its loop, where it has one.
    virtual void signalMessagingFinished() = 0;
    /// On the window's thread, when the window is there, and before it goes.
    virtual void onSubscribeMessages() { }
    virtual void onUnsubscribeMessages() { }
    // Messages of the system (below 1024), of the window's class (to 32767), of the application (to
    // 49151), and registered ones (to 65535). The first two are done with where `handled` is set to
    // 1; else the system treats them as it would without a handler.
    virtual void onSystemWindowsMessage([[maybe_unused]] unsigned int message,
        [[maybe_unused]] unsigned long long wParam, [[maybe_unused]] long long lParam,
        [[maybe_unused]] int& handled)
    {
    }
    virtual void onUserWindowsMessage([[maybe_unused]] unsigned int message,
        [[maybe_unused]] unsigned long long wParam, [[maybe_unused]] long long lParam,
        [[maybe_unused]] int& handled)
    {
    }
    virtual long long handleWindowsMessage([[maybe_unused]] unsigned int message,
        [[maybe_unused]] unsigned long long wParam, [[maybe_unused]] long long lParam)
    {
        return 0;
    }
    virtual long long handleRegisteredMessage([[maybe_unused]] unsigned int message,
        [[maybe_unused]] unsigned long long wParam, [[maybe_unused]] long long lParam)
    {
        return 0;
    }
    /// Post a wake-up to the window. They are called under the lock of the queue, so that there is
    /// one wake-up per notification, in the same order; all that an override may do is to wake
    /// somebody else, too.
    virtual void signalPostNotification();
    virtual void signalSendNotification();

public:
    bool Is(const TuRTTI& record) const { return &GetRTTI() == &record; }
    bool IsKindOf(const TuRTTI& record) const { return GetRTTI().IsKindOf(record); }
    const char16_t* GetClassName() const { return GetRTTI().GetClassName(); }
    PLATFORM_RENAMED(const char16_t*, GetClassName, (), const, ())

    // These return when the dispatcher has changed its lists; they do nothing when it has ended.
    // After an unsubscription, what waits already is not handled any more.

    /// To the class of the sample, and to those that derive from it; a TaMessageCommand stands for
    /// its command.
    void SubscribeMessage(const TaMessage& sample);
    void SubscribeCommand(unsigned long long commandId);
    void UnsubscribeMessage(const TaMessage& sample);
    void UnsubscribeCommand(unsigned long long commandId);

    /// Why the system refused the window the last time; null where it did not.
    const TuLatestError* GetLatestError() const { return m_latestError.get(); }

protected:
    explicit TaMessageHandlerBase(const CString& name);

    /// Makes the window of `handler` on the calling thread. False where it has one already, or the
    /// system refused.
    bool createHWND(TaMessageHandlerBase& handler);
    /// Before the window goes: from here on, nothing reaches the handler, and who waits for its
    /// answers is told that there will be none.
    void closeQueues() noexcept;
    /// For the ends of handlers: see Ownership. May be called again.
    void leaveDispatcher() noexcept;
    bool hasWindowOnThisThread() const;

    /// Handles a message to the window. Where `handled` is 0 afterwards, the system is to treat it.
    long long WindowProcHook(
        unsigned int message, unsigned long long wParam, long long lParam, int& handled) noexcept;
    /// The procedure of the windows of all handlers, which calls that one.
    static long long windowProcedure(
        HWND window, unsigned int message, unsigned long long wParam, long long lParam) noexcept;

    /// Take the first notification of both queues, and process it.
    void onSendNotification() noexcept;
    void onPostNotification() noexcept;
    /// Processes what was posted up to now.
    void flushPostNotifications() noexcept;
    /// Drops what waits and the subscription invalidates.
    void invalidateUnsubscribedMessages(const TaMessageSubscription& subscription) noexcept;

private:
    friend class TaMessageDispatcher;
    friend class TaSendsInFlight;
    friend class TaThreadSendStatus;

    /// Whether the notification is on its way; else it was dropped.
    bool queueSendNotification(TaSendNotification notification) noexcept;
    /// The same; what was not queued is left to the caller.
    bool queuePostNotification(TaPostNotification& notification) noexcept;
    /// Takes the notification over where it is true.
    template <class Notification>
    bool queueNotification(TaNotificationQueue<Notification>& queue, Notification& notification,
        void (TaMessageHandlerBase::*signal)());
    bool missesWakeUps() const { return m_missesWakeUps.load(std::memory_order_relaxed); }
    /// False where the queue is still full.
    bool retryWakeUp() noexcept;
    /// Whether its window is there, and the window's thread.
    bool canBeReached() const;
    void dumpQueues(TuStreamWriteASCII& stream) const;
    void reportDropped(const TaPostNotification& notification) const noexcept;
    void postSignal(unsigned int number, platform::EPost& result);

    void onWakeUp() noexcept;
    /// Processes the first of both queues, where it came before `limit`; false where there is none.
    bool runNext(std::uint64_t limit) noexcept;
    /// Processes what waits now, in the order in which it came.
    void runAll() noexcept;
    void run(TaSendNotification& notification) noexcept;
    void run(TaPostNotification& notification) noexcept;
    template <class Predicate> void drop(Predicate isMeant) noexcept;
    /// Of those that were given `target`, which goes.
    void dropMessagesTo(const TaMessageHandlerBase& target) noexcept;
    void onWindowCreated(HWND window);
    long long onMessageCreateHWND(const TaMessageCreateHWND& message);
    void onStringMessage(HWND window, char16_t* text) noexcept;
    void subscribe(const TaMessageSubscription& subscription);
    /// The name without a virtual call: for who may meet a handler at its end.
    const CString& getOwnName() const { return TuIClassName<2>::GetName(); }

    TaNotificationQueue<TaSendNotification> m_sends;
    TaNotificationQueue<TaPostNotification> m_posts;
    std::atomic<unsigned int> m_threadId{ 0 };
    std::atomic<TaMessageDispatcher*> m_dispatcher{ nullptr }; // that it is registered with
    std::atomic<std::uint64_t> m_tickets{ 0 }; // how many notifications have come
    std::atomic<bool> m_missesWakeUps{ false }; // the next one stands for those, too
    std::unique_ptr<TuLatestError> m_latestError;
    /// Goes with the handler: tells, after a call of a user's code, whether that has ended it.
    std::shared_ptr<const char> m_life = std::make_shared<const char>();
    bool m_hasLeft = false;
};

#include "platform/platformmacrospop.h"
