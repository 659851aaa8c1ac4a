#include "tabase/tamessagedispatcher.h"

#include "groundwork/tustreamwriteasciistring.h"
#include "platform/platformclock.h"
#include "platform/platformtaskmemory.h"
#include "platform/platformthread.h"
#include "tabase/tamessageshutdown.h"
#include "tabase/tamessagestring.h"
#include "tabase/tamessagesubscription.h"

#include <array>
#include <cstring>
#include <limits>
#include <utility>

TU_DEFINE_SINGLETON(TaMessageDispatcher)

const TuRTTI TaMessageDispatcher::RTTI(
    u"TaMessageDispatcher", TaMessageHandlerThreaded::RTTI, nullptr, nullptr);

constinit std::atomic<TaMessageDispatcher*> TaMessageDispatcher::s_dispatcher{ nullptr };
constinit std::atomic<bool> TaMessageDispatcher::s_isGone{ false };
constinit TaMessageDispatcher* TaMessageDispatcher::s_remains = nullptr;

namespace {

constexpr std::uint64_t kNoLimit = std::numeric_limits<std::uint64_t>::max();

} // namespace

/// The handler goes. Sent to the dispatcher privately, and answered by 1.
class TaMessageDispatcher::TaMessageHandlerDeleted : public TaMessage
{
    TU_DECLARE_RTTI

public:
    explicit TaMessageHandlerDeleted(const TaMessageHandlerBase& handler)
        : m_handler(&handler)
    {
    }

    const TaMessageHandlerBase& GetHandler() const { return *m_handler; }

private:
    const TaMessageHandlerBase* m_handler;
};

const TuRTTI TaMessageDispatcher::TaMessageHandlerDeleted::RTTI(
    u"TaMessageDispatcher::TaMessageHandlerDeleted", TaMessage::RTTI, nullptr, nullptr);

TaMessageDispatcher::TaMessageDispatcher()
    : TaMessageHandlerThreaded(u"TaMessageDispatcher", eTP_Normal)
    , m_pool(TuMake<TaSendStatusPool>())
{
    s_dispatcher = this;
}

void TaMessageDispatcher::operator delete(
    TaMessageDispatcher* dispatcher, std::destroying_delete_t) noexcept
{
    s_isGone = true;
    s_dispatcher = nullptr;
    s_remains = dispatcher;
    // Where a handler on its thread has ended the process, the thread goes with that.
    if (!dispatcher->isOnItsThread()) {
        dispatcher->StopAndWait(kMostMsToEnd);
        dispatcher->Terminate(); // lets go a thread that has ended
    }
    dispatcher->closeQueues();
}

// The thread.

void TaMessageDispatcher::ensureStarted() noexcept
{
    EState state = eS_New;
    if (m_state.load(std::memory_order_acquire) == eS_Started || isOnItsThread()) {
        return;
    }
    if (m_state.compare_exchange_strong(state, eS_Starting)) {
        try {
            StartAndWait().MarkRead(); // without a thread there is no window, and so no queue
        } catch (...) { // no memory
        }
        m_state.store(eS_Started, std::memory_order_release);
        m_startIsDone.Set();
    } else {
        while (m_startIsDone.Wait(TuEvent::kInfinite) != TuEvent::eWR_Signaled) { }
    }
}

TaMessageDispatcher* TaMessageDispatcher::reach() noexcept
{
    if (s_isGone.load(std::memory_order_relaxed)) {
        return nullptr;
    }
    try {
        TaMessageDispatcher& dispatcher = GetInstance();
        dispatcher.ensureStarted();
        return &dispatcher;
    } catch (...) { // no memory
        return nullptr;
    }
}

bool TaMessageDispatcher::isOnItsThread() const
{
    return TaMessageHandlerBase::GetThreadID() == platform::GetCurrentThreadId();
}

bool TaMessageDispatcher::ShutdownAndWait(unsigned int milliseconds) noexcept
{
    TaMessageDispatcher* const dispatcher = s_dispatcher.load();
    if (dispatcher == nullptr || !dispatcher->IsRunning()) {
        return true;
    }
    SendPrivateMessage(TaMessageShutDown());
    return dispatcher->waitForEnd(milliseconds);
}

TuEvent::EWaitResult TaMessageDispatcher::waitServing(const TuEvent& event,
    const TuEvent& otherEvent, unsigned int milliseconds, unsigned int& index) noexcept
{
    TaMessageDispatcher* const dispatcher = s_dispatcher.load();
    const bool serves = dispatcher != nullptr && dispatcher->isOnItsThread();
    const TuEvent& serve = serves ? dispatcher->m_serve : event;
    const std::array<const TuEvent*, 3> events{ &event, &otherEvent, &serve };
    if (!serves) {
        return TuEvent::WaitForMultipleEvents(events.data(), 2, milliseconds, &index);
    }
    const std::uint64_t deadline = platform::GetDeadline(milliseconds);
    // From here on, who has something for the dispatcher sets the event, too.
    ++dispatcher->m_servings;
    TuEvent::EWaitResult result = TuEvent::eWR_TimedOut;
    do {
        do {
            result = TuEvent::WaitForMultipleEvents(events.data(), 2, 0, &index);
        } while (result == TuEvent::eWR_TimedOut && dispatcher->runNext(kNoLimit));
        if (result == TuEvent::eWR_TimedOut) {
            platform::WakeNow();
            result = TuEvent::WaitForMultipleEvents(
                events.data(), 3, platform::GetMillisecondsUntil(deadline), &index);
        }
    } while (result == TuEvent::eWR_Signaled && index == 2);
    --dispatcher->m_servings;
    platform::WakeNow(); // what comes next may be a user's code
    return result;
}

// Sending.

long long TaMessageDispatcher::sendMessage(const TaMessage& message,
    const TaMessageHandlerBase* target, TuList<long long>* results, SMessageSource source) noexcept
{
    try {
        const TaSendStatusUse status = m_pool->Take();
        status->Begin(message, source);
        m_inFlight.Enter(*status);
        // Nothing throws from here to the end of the loop. A notification that finds no queue is
        // dropped, which ends the wait.
        queueSendNotification(TaSendNotification(target, message, status, source));
        do {
            waitForAnswers(*status);
            status->RunList();
        } while (!m_inFlight.TryLeave(*status));
        const TuList<long long>& answers = status->GetResults();
        if (results != nullptr) {
            results->Append(answers);
        }
        return answers.IsEmpty() ? 0 : answers.GetTail();
    } catch (...) { // no memory
        return 0;
    }
}

void TaMessageDispatcher::waitForAnswers(TaThreadSendStatus& status) noexcept
{
    const TuEvent& event = status.GetEvent();
    for (;;) {
        // Where a full queue has refused a wake-up, the dispatcher is asked to repeat it.
        const bool repeats = !s_isGone && (m_hasUnwoken || missesWakeUps());
        const unsigned int milliseconds = repeats ? kRetryMs : TuEvent::kInfinite;
        unsigned int index = 0;
        const bool serves = isOnItsThread();
        const TuEvent::EWaitResult result
            = serves ? waitServing(event, event, milliseconds, index) : event.Wait(milliseconds);
        if (result == TuEvent::eWR_Signaled) {
            break;
        }
        if (serves) {
            retryWakeUps(); // its own window waits until it returns
        } else {
            (void)platform::PostToWindow(GetHWND(), kRetryMessage, 0, 0);
        }
    }
    status.GetEvent().Reset();
}

void TaMessageDispatcher::processSendNotification(TaSendNotification& notification)
{
    if (notification.GetTarget() == this) {
        long long result = kFail;
        try {
            result = handleMessage(notification.GetMessage());
        } catch (...) { // the answer says so
        }
        notification.Answer(result);
    } else {
        sortSend(notification);
    }
    if (m_hasUnwoken) {
        retryWakeUps();
    }
}

void TaMessageDispatcher::sortSend(const TaSendNotification& notification) noexcept
{
    const platform::WakeLater later(platform::eWU_NextRow);
    const TuCriticalSectionAuto guard(m_subscriptionsLock);
    try {
        for (TaMessageHandlerBase* const handler :
            getSubscribers(notification.GetMessage(), notification.GetTarget())) {
            sortSend(notification, *handler);
        }
    } catch (...) { // no memory: those that are left are as if they had not subscribed
    }
}

void TaMessageDispatcher::sortSend(
    const TaSendNotification& notification, TaMessageHandlerBase& handler)
{
    TaThreadSendStatus& status = notification.GetStatus();
    const unsigned int thread = handler.m_threadId.load();
    TaSendNotification forHandler(notification, status.Expect(handler, thread));
    if (thread == status.GetThreadID() && handler.canBeReached()) {
        status.AddToRun(handler, std::move(forHandler));
    } else if (!m_inFlight.HandOver(handler, thread, forHandler)
        && handler.queueSendNotification(std::move(forHandler)) && handler.missesWakeUps()) {
        noteUnwoken(handler);
        status.GetEvent().Set(); // the sender is to look again from time to time
    }
}

const TaMessageHandlerList& TaMessageDispatcher::getSubscribers(
    const TaMessage& message, const TaMessageHandlerBase* target)
{
    const TaMessageHandlerList& all = m_subscriptions.GetSubscribers(message, m_subscribers);
    if (target == nullptr) {
        return all;
    }
    const auto found = all.Find(target);
    TaMessageHandlerBase* const handler = found != all.end() ? *found : nullptr;
    m_subscribers.RemoveAll();
    if (handler != nullptr) {
        m_subscribers.Add(handler);
    }
    return m_subscribers;
}

// Posting.

void TaMessageDispatcher::postMessage(TuSmartPointer<const TaMessage> message,
    const TaMessageHandlerBase* target, SMessageSource source) noexcept
{
    if (!message.IsNull()) {
        TaPostNotification notification(target, std::move(message), source);
        queuePostNotification(notification);
    }
}

void TaMessageDispatcher::processPostNotification(TaPostNotification& notification)
{
    const TaMessage& message = notification.GetMessage();
    if (notification.GetTarget() == this) {
        try {
            handleMessage(message);
        } catch (...) { // who has posted it does not wait
        }
    } else if (message.IsKindOf(TaMessageString::RTTI)) {
        postToWindow(dynamic_cast<const TaMessageString&>(message));
    } else {
        sortPost(notification);
    }
    if (m_hasUnwoken) {
        retryWakeUps();
    }
}

void TaMessageDispatcher::sortPost(TaPostNotification& notification) noexcept
{
    const platform::WakeLater later(platform::eWU_NextRow);
    const TuCriticalSectionAuto guard(m_subscriptionsLock);
    try {
        // The last one gets the reference of the dispatcher, or leaves it to that: the end of a
        // message is a user's code, which may send.
        TaMessageHandlerBase* last = nullptr;
        for (TaMessageHandlerBase* const handler :
            getSubscribers(notification.GetMessage(), notification.GetTarget())) {
            if (last != nullptr) {
                TaPostNotification copy(notification);
                sortPost(copy, *last);
            }
            last = handler;
        }
        if (last != nullptr) {
            sortPost(notification, *last);
        }
    } catch (...) { // no memory: those that are left are as if they had not subscribed
    }
}

void TaMessageDispatcher::sortPost(TaPostNotification& notification, TaMessageHandlerBase& handler)
{
    if (handler.queuePostNotification(notification) && handler.missesWakeUps()) {
        noteUnwoken(handler);
    }
}

void TaMessageDispatcher::postToWindow(const TaMessageString& message)
{
    const CString& text = message.GetMessageString();
    const std::size_t size = (text.GetLength() + std::size_t{ 1 }) * sizeof(char16_t);
    void* const block = platform::AllocateTaskMemory(size);
    if (block == nullptr) {
        return;
    }
    std::memcpy(block, text.GetString(), size); // with the zero at its end
    const HWND window = message.GetHWND();
    if (platform::PostToWindow(window, kStringMessage, reinterpret_cast<std::uintptr_t>(window),
            reinterpret_cast<std::intptr_t>(block))
        != platform::eP_Posted) {
        platform::FreeTaskMemory(block);
    }
}

// Wake-ups that a full queue has refused.

void TaMessageDispatcher::noteUnwoken(TaMessageHandlerBase& handler)
{
    m_hasUnwoken = true;
    if (!m_unwoken.Contains(&handler)) {
        m_unwoken.Add(&handler);
    }
}

void TaMessageDispatcher::retryWakeUps() noexcept
{
    const TuCriticalSectionAuto guard(m_subscriptionsLock);
    for (auto handler = m_unwoken.begin(); handler != m_unwoken.end();) {
        if ((*handler)->retryWakeUp()) {
            handler = m_unwoken.Erase(handler);
        } else {
            ++handler;
        }
    }
    m_hasUnwoken = !m_unwoken.IsEmpty();
}

long long TaMessageDispatcher::handleWindowsMessage(
    unsigned int message, unsigned long long wParam, long long lParam)
{
    if (message != kRetryMessage) {
        return TaMessageHandlerThreaded::handleWindowsMessage(message, wParam, lParam);
    }
    retryWakeUps();
    if (missesWakeUps()) {
        runAll();
    }
    return 0;
}

void TaMessageDispatcher::signalSendNotification()
{
    TaMessageHandlerThreaded::signalSendNotification();
    if (m_servings != 0) {
        m_serve.Set();
    }
}

void TaMessageDispatcher::signalPostNotification()
{
    TaMessageHandlerThreaded::signalPostNotification();
    if (m_servings != 0) {
        m_serve.Set();
    }
}

// Subscriptions.

long long TaMessageDispatcher::handleMessage(const TaMessage& message)
{
    platform::WakeNow(); // it may make a window, and so run a user's code
    try {
        if (message.IsKindOf(TaMessageSubscription::RTTI)) {
            onMessageSubscription(dynamic_cast<const TaMessageSubscription&>(message));
            return 0;
        }
        if (message.Is(TaMessageHandlerDeleted::RTTI)) {
            onHandlerDelete(dynamic_cast<const TaMessageHandlerDeleted&>(message).GetHandler());
            return 1;
        }
        if (message.IsKindOf(TaMessageShutDown::RTTI)) {
            signalMessagingFinished();
            return 0;
        }
        return TaMessageHandlerThreaded::handleMessage(message);
    } catch (...) {
        return kFail;
    }
}

void TaMessageDispatcher::onMessageSubscription(const TaMessageSubscription& subscription)
{
    TaMessageHandlerBase& handler = subscription.GetHandler();
    if (&handler == this && subscription.GetAction() != TaMessageSubscription::eA_UnsubscribeAll) {
        return; // it would sort a message to itself for ever
    }
    {
        const TuCriticalSectionAuto guard(m_subscriptionsLock);
        switch (subscription.GetAction()) {
        case TaMessageSubscription::eA_SubscribeType:
            m_names.Add(handler.getOwnName(), handler);
            handler.m_dispatcher = this;
            m_subscriptions.AddType(*subscription.GetType(), handler);
            return;
        case TaMessageSubscription::eA_SubscribeCommand:
            m_names.Add(handler.getOwnName(), handler);
            handler.m_dispatcher = this;
            m_subscriptions.AddCommand(subscription.GetCommandID(), handler);
            return;
        case TaMessageSubscription::eA_UnsubscribeType:
            m_subscriptions.RemoveType(*subscription.GetType(), handler);
            break;
        case TaMessageSubscription::eA_UnsubscribeCommand:
            m_subscriptions.RemoveCommand(subscription.GetCommandID(), handler);
            break;
        case TaMessageSubscription::eA_UnsubscribeAll:
            if (&handler == this) {
                unsubscribeEverybody(subscription);
                return;
            }
            m_names.Remove(handler);
            handler.m_dispatcher = nullptr;
            m_subscriptions.Remove(handler);
            break;
        }
    }
    // Messages end here, and with that a user's code runs.
    invalidate(handler, subscription);
}

void TaMessageDispatcher::invalidate(
    TaMessageHandlerBase& handler, const TaMessageSubscription& subscription) noexcept
{
    handler.invalidateUnsubscribedMessages(subscription);
    m_inFlight.Invalidate(handler, subscription);
}

void TaMessageDispatcher::unsubscribeEverybody(const TaMessageSubscription& subscription)
{
    const TaMessageHandlerList handlers = m_subscriptions.GetHandlers();
    m_subscriptions.RemoveAll();
    for (TaMessageHandlerBase* const handler : handlers) {
        invalidate(*handler, subscription);
    }
}

void TaMessageDispatcher::UnsubscribeAll() { SendPrivateMessage(TaMessageSubscription(*this)); }

void TaMessageDispatcher::onHandlerDelete(const TaMessageHandlerBase& handler) noexcept
{
    m_names.Remove(handler);
    {
        const TuCriticalSectionAuto guard(m_subscriptionsLock);
        m_subscriptions.Remove(handler);
        m_unwoken.Remove(&handler);
    }
    // Another handler may soon have the same address.
    dropMessagesTo(handler);
    m_inFlight.Forget(handler);
}

void TaMessageDispatcher::forget(const TaMessageHandlerBase& handler) noexcept
{
    TaMessageDispatcher* const dispatcher = s_dispatcher.load();
    if (dispatcher == nullptr || dispatcher == &handler) {
        return;
    }
    const TaMessageHandlerDeleted message(handler);
    if (dispatcher->sendMessage(message, dispatcher, nullptr, {}) != 1) {
        dispatcher->onHandlerDelete(handler); // its thread has ended, or not begun
    }
}

TaMessageHandlerBase* TaMessageDispatcher::FindMessageHandler(const CString& name)
{
    const TaMessageDispatcher* const dispatcher = s_dispatcher.load();
    return dispatcher != nullptr ? dispatcher->m_names.Find(name) : nullptr;
}

void TaMessageDispatcher::Dump(TuStreamWriteASCII& stream) const
{
    TuStreamWriteASCIIStringT<CString> text;
    {
        const TuCriticalSectionAuto guard(m_subscriptionsLock);
        text << u"Subscriptions\n";
        m_subscriptions.Dump(text);
        text << u"Waiting\n";
        dumpQueues(text);
        for (const TaMessageHandlerBase* const handler : m_subscriptions.GetHandlers()) {
            handler->dumpQueues(text);
        }
    }
    text << u"Sends in flight\n";
    m_inFlight.Dump(text);
    stream << text.GetText().GetString(); // no lock is held while a stream of a user writes
}

// The operations for everybody.

void TaMessageDispatcher::SendMessage(
    const char16_t* file, unsigned int line, const TaMessage& message) noexcept
{
    if (TaMessageDispatcher* const dispatcher = reach()) {
        dispatcher->sendMessage(message, nullptr, nullptr, { file, line });
    }
}

void TaMessageDispatcher::SendMessage(const char16_t* file, unsigned int line,
    const TaMessage& message, TuList<long long>& results) noexcept
{
    if (TaMessageDispatcher* const dispatcher = reach()) {
        dispatcher->sendMessage(message, nullptr, &results, { file, line });
    }
}

long long TaMessageDispatcher::SendMessage(const char16_t* file, unsigned int line,
    const TaMessage& message, const TaMessageHandlerBase& target) noexcept
{
    TaMessageDispatcher* const dispatcher = reach();
    return dispatcher != nullptr
        ? dispatcher->sendMessage(message, &target, nullptr, { file, line })
        : 0;
}

long long TaMessageDispatcher::SendPrivateMessage(
    const char16_t* file, unsigned int line, const TaMessage& message) noexcept
{
    TaMessageDispatcher* const dispatcher = reach();
    return dispatcher != nullptr
        ? dispatcher->sendMessage(message, dispatcher, nullptr, { file, line })
        : 0;
}

void TaMessageDispatcher::PostMessage(
    const char16_t* file, unsigned int line, TuSmartPointer<const TaMessage> message) noexcept
{
    if (TaMessageDispatcher* const dispatcher = reach()) {
        dispatcher->postMessage(std::move(message), nullptr, { file, line });
    }
}

void TaMessageDispatcher::PostMessage(const char16_t* file, unsigned int line,
    TuSmartPointer<const TaMessage> message, const TaMessageHandlerBase& target) noexcept
{
    if (TaMessageDispatcher* const dispatcher = reach()) {
        dispatcher->postMessage(std::move(message), &target, { file, line });
    }
}
