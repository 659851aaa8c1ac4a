#pragma once

#include "groundwork/tulist.h"
#include "groundwork/tusingleton.h"
#include "groundwork/tusmartpointer.h"
#include "tabase/tahandlernames.h"
#include "tabase/tamessagehandlerthreaded.h"
#include "tabase/tasendsinflight.h"
#include "tabase/tasendstatuspool.h"
#include "tabase/tasubscriptions.h"

#include <atomic>
#include <cstddef>
#include <new>
#include <utility>

#include "platform/platformmacrospush.h"

class TaMessageString;
class TaMessageDispatcher;
TU_DECLARE_SINGLETON(TABASE_API, TaMessageDispatcher)

/// The post office of the process. Its thread sorts every message before that reaches who has
/// subscribed to it:
///
///     TaMessageDispatcher::PostMessage(TuMake<MeshLoaded>(name));        // returns at once
///     TaMessageDispatcher::SendMessage(QueryExtent(mesh), results);      // when all have answered
///
/// A message reaches the handlers that have subscribed to its class, or to a base of it, and, where
/// it is a TaMessageCommand, to its number: each once, those of its own class first, in the order
/// of subscription. A target is reached only if it is among them. What is posted to one handler is
/// handled in the order in which it was posted, and what one thread has posted before it sends,
/// before that.
///
/// Handlers on the sending thread run inside the call, after what was posted to them before. So no
/// thread waits for itself: neither directly, nor in a ring of threads whose handlers send to each
/// other. There, the handler that closes the ring runs inside the wait of its thread. A send from
/// the dispatcher's own thread is sorted inside the call, too.
///
/// A posted TaMessageString goes to its window, and to no subscriber. The dispatcher itself is
/// never one.
///
/// The thread is started by whoever uses the dispatcher first; on Windows, not while a library is
/// being loaded. ShutdownAndWait ends it for good: from then on a send returns 0 at once, and a
/// post is dropped. Without that it ends at the exit of the process.
///
/// Ownership: posts share their messages; a send only refers to its message. A source name is a
///            literal, or lives as long.
/// Threads:   any thread may send, post and subscribe. A thread that sends holds no lock that a
///            handler takes.
/// Failure:   nothing throws. A handler that throws answers kFail. What finds no memory has no
///            subscribers: its result is 0.
class TABASE_API TaMessageDispatcher : public TaMessageHandlerThreaded,
                                       public TuSingleton<TaMessageDispatcher>
{
public:
    static const TuRTTI RTTI;
    const TuRTTI& GetRTTI() const override { return RTTI; }
    /// Ends the thread, but leaves the object whole: while the process exits, other threads may be
    /// anywhere in a send or a post, and go on in it.
    static void operator delete(TaMessageDispatcher* dispatcher, std::destroying_delete_t) noexcept;
    /// As ever; the second is for what could not be made.
    static void* operator new(std::size_t size) { return ::operator new(size); }
    static void operator delete(void* memory) noexcept { ::operator delete(memory); }

    // Each operation exists twice: as it is, and with the source file and the line of the caller,
    // for traces.

    /// Returns when all subscribers have answered. The answers are added to `results` in the order
    /// in which they came.
    static void SendMessage(const TaMessage& message) noexcept { SendMessage(nullptr, 0, message); }
    static void SendMessage(
        const char16_t* file, unsigned int line, const TaMessage& message) noexcept;
    static void SendMessage(const TaMessage& message, TuList<long long>& results) noexcept
    {
        SendMessage(nullptr, 0, message, results);
    }
    static void SendMessage(const char16_t* file, unsigned int line, const TaMessage& message,
        TuList<long long>& results) noexcept;
    /// Returns the target's answer, 0 where it has not subscribed. The dispatcher as the target is
    /// what SendPrivateMessage does.
    static long long SendMessage(
        const TaMessage& message, const TaMessageHandlerBase& target) noexcept
    {
        return SendMessage(nullptr, 0, message, target);
    }
    static long long SendMessage(const char16_t* file, unsigned int line, const TaMessage& message,
        const TaMessageHandlerBase& target) noexcept;
    /// To the dispatcher itself: returns its answer.
    static long long SendPrivateMessage(const TaMessage& message) noexcept
    {
        return SendPrivateMessage(nullptr, 0, message);
    }
    static long long SendPrivateMessage(
        const char16_t* file, unsigned int line, const TaMessage& message) noexcept;

    /// Returns at once. No message is nothing to post.
    static void PostMessage(TuSmartPointer<const TaMessage> message) noexcept
    {
        PostMessage(nullptr, 0, std::move(message));
    }
    static void PostMessage(
        const char16_t* file, unsigned int line, TuSmartPointer<const TaMessage> message) noexcept;
    static void PostMessage(
        TuSmartPointer<const TaMessage> message, const TaMessageHandlerBase& target) noexcept
    {
        PostMessage(nullptr, 0, std::move(message), target);
    }
    static void PostMessage(const char16_t* file, unsigned int line,
        TuSmartPointer<const TaMessage> message, const TaMessageHandlerBase& target) noexcept;

    // The same in code that includes windows.h.
    PLATFORM_RENAMED(static void, SendMessage, (const TaMessage& m) noexcept, , (m))
    PLATFORM_RENAMED(static void, SendMessage,
        (const char16_t* f, unsigned int l, const TaMessage& m) noexcept, , (f, l, m))
    PLATFORM_RENAMED(
        static void, SendMessage, (const TaMessage& m, TuList<long long>& r) noexcept, , (m, r))
    PLATFORM_RENAMED(static void, SendMessage,
        (const char16_t* f, unsigned int l, const TaMessage& m, TuList<long long>& r) noexcept, ,
        (f, l, m, r))
    PLATFORM_RENAMED(static long long, SendMessage,
        (const TaMessage& m, const TaMessageHandlerBase& t) noexcept, , (m, t))
    PLATFORM_RENAMED(static long long, SendMessage,
        (const char16_t* f, unsigned int l, const TaMessage& m,
            const TaMessageHandlerBase& t) noexcept,
        , (f, l, m, t))
    PLATFORM_RENAMED(
        static void, PostMessage, (const TuSmartPointer<const TaMessage>& m) noexcept, , (m))
    PLATFORM_RENAMED(static void, PostMessage,
        (const char16_t* f, unsigned int l, const TuSmartPointer<const TaMessage>& m) noexcept, ,
        (f, l, m))
    PLATFORM_RENAMED(static void, PostMessage,
        (const TuSmartPointer<const TaMessage>& m, const TaMessageHandlerBase& t) noexcept, ,
        (m, t))
    PLATFORM_RENAMED(static void, PostMessage,
        (const char16_t* f, unsigned int l, const TuSmartPointer<const TaMessage>& m,
            const TaMessageHandlerBase& t) noexcept,
        , (f, l, m, t))

    /// The handler that has subscribed under this name first; null where there is none. Whoever
    /// uses it sees to it that it does not go meanwhile.
    static TaMessageHandlerBase* FindMessageHandler(const CString& name);

    /// Ends the thread, behind what waits already. True where it has ended in time, or there is
    /// none. On the thread itself it only ends the loop: false.
    static bool ShutdownAndWait(unsigned int milliseconds) noexcept;

    /// Drops every subscription of every handler, with what waits for it. Names stay.
    void UnsubscribeAll() override;

    /// Subscriptions, how much waits for each handler, and who waits for whom; from any thread.
    void Dump(TuStreamWriteASCII& stream) const;

protected:
    /// Those who are to receive the message (see TaSubscriptions), or the target, where it is among
    /// them.
    const TaMessageHandlerList& getSubscribers(const TaMessage& message,
        const TaMessageHandlerBase* target) TU_REQUIRES(m_subscriptionsLock);
    long long handleMessage(const TaMessage& message) override;
    void processSendNotification(TaSendNotification& notification) override;
    void processPostNotification(TaPostNotification& notification) override;
    void signalSendNotification() override;
    void signalPostNotification() override;
    long long handleWindowsMessage(
        unsigned int message, unsigned long long wParam, long long lParam) override;
    void onHandlerDelete(const TaMessageHandlerBase& handler) noexcept;
    void onMessageSubscription(const TaMessageSubscription& subscription);

private:
    friend class TuSingleton<TaMessageDispatcher>;
    friend class TaMessageHandlerBase;
    friend class TaMessageHandlerThreaded;
    class TaMessageHandlerDeleted;

    enum EState
    {
        eS_New, // nobody has used it yet
        eS_Starting, // the first who did starts the thread; the others wait for that
        eS_Started, // or failed to start, which is for good
    };

    static constexpr unsigned int kRetryMessage = 45074; // to the dispatcher: wake handlers again
    static constexpr unsigned int kRetryMs = 250;

    TaMessageDispatcher();
    ~TaMessageDispatcher() override = default; // runs only where the constructor throws
    void onInstanceCreated() noexcept { ensureStarted(); }
    void ensureStarted() noexcept;
    /// The dispatcher, with its thread; null when the process is about to end.
    static TaMessageDispatcher* reach() noexcept;
    bool isOnItsThread() const;

    long long sendMessage(const TaMessage& message, const TaMessageHandlerBase* target,
        TuList<long long>* results, SMessageSource source) noexcept;
    void postMessage(TuSmartPointer<const TaMessage> message, const TaMessageHandlerBase* target,
        SMessageSource source) noexcept;
    void waitForAnswers(TaThreadSendStatus& status) noexcept;
    void sortSend(const TaSendNotification& notification) noexcept;
    void sortSend(const TaSendNotification& notification, TaMessageHandlerBase& handler)
        TU_REQUIRES(m_subscriptionsLock);
    void sortPost(TaPostNotification& notification) noexcept;
    void sortPost(TaPostNotification& notification, TaMessageHandlerBase& handler)
        TU_REQUIRES(m_subscriptionsLock);
    static void postToWindow(const TaMessageString& message);

    /// The handler goes: nothing refers to it when this returns.
    static void forget(const TaMessageHandlerBase& handler) noexcept;
    /// Waits for either of two events, which may be the same. On the dispatcher's thread it goes on
    /// sorting meanwhile.
    static TuEvent::EWaitResult waitServing(const TuEvent& event, const TuEvent& otherEvent,
        unsigned int milliseconds, unsigned int& index) noexcept;
    void noteUnwoken(TaMessageHandlerBase& handler) TU_REQUIRES(m_subscriptionsLock);
    void retryWakeUps() noexcept;
    void invalidate(
        TaMessageHandlerBase& handler, const TaMessageSubscription& subscription) noexcept;
    void unsubscribeEverybody(const TaMessageSubscription& subscription)
        TU_REQUIRES(m_subscriptionsLock);

    static std::atomic<TaMessageDispatcher*> s_dispatcher; // null before and after
    static std::atomic<bool> s_isGone;
    static TaMessageDispatcher* s_remains; // after the end

    std::atomic<EState> m_state{ eS_New };
    TuEvent m_startIsDone{ true };
    /// Held while a message is sorted, too, so that no handler goes meanwhile.
    mutable TuCriticalSection m_subscriptionsLock;
    TaSubscriptions m_subscriptions TU_GUARDED_BY(m_subscriptionsLock);
    TaMessageHandlerList m_subscribers; // of the message at hand; of the dispatcher's thread
    TaHandlerNames m_names;
    TuSmartPointer<TaSendStatusPool> m_pool;
    TaSendsInFlight m_inFlight;
    std::atomic<unsigned int> m_servings{ 0 }; // waits of the dispatcher's thread, nested
    TuEvent m_serve{ false }; // something has come meanwhile
    /// Handlers that a wake-up did not reach, for their threads' queues were full.
    TaMessageHandlerList m_unwoken TU_GUARDED_BY(m_subscriptionsLock);
    std::atomic<bool> m_hasUnwoken{ false };
};

#include "platform/platformmacrospop.h"
