#include "tabase/tamessagehandlerbase.h"

#include "groundwork/tustreamwriteasciitrace.h"
#include "platform/platformtaskmemory.h"
#include "platform/platformthread.h"
#include "tabase/tamessagecommand.h"
#include "tabase/tamessagecreatehwnd.h"
#include "tabase/tamessagedispatcher.h"
#include "tabase/tamessagehandler.h"
#include "tabase/tamessagestring.h"
#include "tabase/tamessagesubscription.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

const TuRTTI TaMessageHandlerBase::RTTI(u"TaMessageHandlerBase", nullptr, nullptr);

// Windows exports the constants of a class where a source repeats them.
constexpr long long TaMessageHandlerBase::kFail;
constexpr unsigned int TaMessageHandlerBase::kSendSignal;
constexpr unsigned int TaMessageHandlerBase::kPostSignal;
constexpr unsigned int TaMessageHandlerBase::kStringMessage;

TaMessageHandlerBase::TaMessageHandlerBase(const CString& name)
    : TuIClassName<2>(name)
{
}

TaMessageHandlerBase::~TaMessageHandlerBase()
{
    closeQueues();
    leaveDispatcher();
}

void TaMessageHandlerBase::leaveDispatcher() noexcept
{
    if (!std::exchange(m_hasLeft, true)) {
        TaMessageDispatcher::forget(*this);
    }
}

void TaMessageHandlerBase::setHWND(HWND) { }

// Subscribing.

void TaMessageHandlerBase::subscribe(const TaMessageSubscription& subscription)
{
    TaMessageDispatcher::SendPrivateMessage(subscription);
}

void TaMessageHandlerBase::SubscribeMessage(const TaMessage& sample)
{
    using Subscription = TaMessageSubscription;
    if (const auto* const command = dynamic_cast<const TaMessageCommand*>(&sample)) {
        SubscribeCommand(command->GetWParam());
    } else {
        subscribe(Subscription(*this, Subscription::eA_SubscribeType, sample.GetRTTI()));
    }
}

void TaMessageHandlerBase::SubscribeCommand(unsigned long long commandId)
{
    subscribe({ *this, TaMessageSubscription::eA_SubscribeCommand, commandId });
}

void TaMessageHandlerBase::UnsubscribeMessage(const TaMessage& sample)
{
    using Subscription = TaMessageSubscription;
    if (const auto* const command = dynamic_cast<const TaMessageCommand*>(&sample)) {
        UnsubscribeCommand(command->GetWParam());
    } else {
        subscribe(Subscription(*this, Subscription::eA_UnsubscribeType, sample.GetRTTI()));
    }
}

void TaMessageHandlerBase::UnsubscribeCommand(unsigned long long commandId)
{
    subscribe({ *this, TaMessageSubscription::eA_UnsubscribeCommand, commandId });
}

void TaMessageHandlerBase::UnsubscribeAll() { subscribe(TaMessageSubscription(*this)); }

// The window.

bool TaMessageHandlerBase::createHWND(TaMessageHandlerBase& handler)
{
    static constinit std::atomic<unsigned int> s_next{ 0 };
    const std::string name = "TaMessageHandlerBase_" + std::to_string(s_next.fetch_add(1));
    const platform::WindowProcedure procedure = handler.getWindowProc();
    if (handler.GetHWND() != nullptr || procedure == nullptr) {
        return false;
    }
    const HWND window = platform::CreateMessageWindow(
        std::u16string(name.begin(), name.end()).c_str(), procedure, &handler);
    if (window == nullptr) {
        handler.m_latestError = std::make_unique<TuLatestError>();
        handler.closeQueues();
        handler.setHWND(nullptr);
        return false;
    }
    return true;
}

bool TaMessageHandlerBase::hasWindowOnThisThread() const
{
    return m_threadId == platform::GetCurrentThreadId() && platform::IsMessageWindow(GetHWND());
}

long long TaMessageHandlerBase::windowProcedure(
    HWND window, unsigned int message, unsigned long long wParam, long long lParam) noexcept
{
    if (message == platform::eWM_Create) {
        // Whoever hears of the handler from here on finds it complete.
        auto* const created
            = static_cast<TaMessageHandlerBase*>(platform::GetCreationParameter(lParam));
        platform::SetWindowValue(window, created);
        created->onWindowCreated(window);
    }
    auto* const handler = static_cast<TaMessageHandlerBase*>(platform::GetWindowValue(window));
    int handled = 0;
    long long result = 0;
    if (handler != nullptr) {
        result = handler->WindowProcHook(message, wParam, lParam, handled);
    }
    return handled != 0 ? result : platform::PassToDefault(window, message, wParam, lParam);
}

void TaMessageHandlerBase::onWindowCreated(HWND window)
{
    setHWND(window);
    m_threadId = platform::GetCurrentThreadId();
    {
        const TuCriticalSectionAuto guard(m_sends.lock);
        m_sends.isOpen = true;
    }
    const TuCriticalSectionAuto guard(m_posts.lock);
    m_posts.isOpen = true;
}

long long TaMessageHandlerBase::WindowProcHook(
    unsigned int message, unsigned long long wParam, long long lParam, int& handled) noexcept
{
    handled = 1;
    switch (message) {
    case kSendSignal:
        onSendNotification();
        return 0;
    case kPostSignal: {
        // While the wake-up behind this one is another such, the way by the loop can be saved. The
        // window goes with the handler.
        const HWND window = GetHWND();
        do {
            onPostNotification();
        } while (platform::TakeSameMessage(window, kPostSignal));
        return 0;
    }
    case kStringMessage:
        onStringMessage(reinterpret_cast<HWND>(wParam), reinterpret_cast<char16_t*>(lParam));
        return 0;
    default:
        break;
    }
    try {
        const std::weak_ptr<const char> life(m_life);
        if (message == platform::eWM_Create) {
            onSubscribeMessages();
        } else if (message == platform::eWM_Destroy) {
            onUnsubscribeMessages();
        }
        handled = 0;
        if (life.expired()) {
            return 0;
        }
        if (message < platform::eWM_FirstUser) {
            onSystemWindowsMessage(message, wParam, lParam, handled);
            return 0;
        }
        if (message < platform::eWM_FirstApp) {
            onUserWindowsMessage(message, wParam, lParam, handled);
            return 0;
        }
        handled = 1;
        if (message < platform::eWM_FirstRegistered) {
            return handleWindowsMessage(message, wParam, lParam);
        }
        return handleRegisteredMessage(message, wParam, lParam);
    } catch (...) { // the system calls this, and could do nothing with it
        return kFail;
    }
}

void TaMessageHandlerBase::onStringMessage(HWND window, char16_t* text) noexcept
{
    if (text == nullptr) {
        return;
    }
    TuSmartPointer<const TaMessage> message;
    try {
        message = TuMake<TaMessageString>(window, CString(text));
    } catch (...) { // no memory: as if it had not come
    }
    platform::FreeTaskMemory(text);
    if (!message.IsNull()) {
        TaPostNotification notification(this, std::move(message), {});
        run(notification);
    }
}

// The queues.

template <class Notification>
bool TaMessageHandlerBase::queueNotification(TaNotificationQueue<Notification>& queue,
    Notification& notification, void (TaMessageHandlerBase::*signal)())
{
    const platform::WakeLater unlocked; // the thread that is woken takes the lock next
    const TuCriticalSectionAuto guard(queue.lock);
    if (!queue.isOpen) {
        return false;
    }
    notification.m_ticket = m_tickets.fetch_add(1, std::memory_order_relaxed);
    if (!queue.records.Add(std::move(notification))) {
        return false;
    }
    if (!queue.MayHaveAny()) {
        queue.isUsed = true; // before the signal looks who waits how
    }
    queue.signal = platform::eP_Posted;
    (this->*signal)();
    if (queue.signal == platform::eP_NoWindow) { // its thread has ended
        notification = queue.records.TakeLast();
        return false;
    }
    if (queue.signal == platform::eP_Full) {
        m_missesWakeUps = true;
    }
    return true;
}

bool TaMessageHandlerBase::queueSendNotification(TaSendNotification notification) noexcept
{
    TaMessageTrace::Report(SMessageTrace::eS_Queued, true, notification.GetMessage(),
        notification.GetSource(), &getOwnName());
    try {
        return queueNotification(
            m_sends, notification, &TaMessageHandlerBase::signalSendNotification);
    } catch (...) { // no memory
        return false;
    }
}

bool TaMessageHandlerBase::queuePostNotification(TaPostNotification& notification) noexcept
{
    TaMessageTrace::Report(SMessageTrace::eS_Queued, false, notification.GetMessage(),
        notification.GetSource(), &getOwnName());
    bool isQueued = false;
    try {
        isQueued = queueNotification(
            m_posts, notification, &TaMessageHandlerBase::signalPostNotification);
    } catch (...) { // no memory
    }
    if (!isQueued) { // then it has not been moved
        reportDropped(notification);
    }
    return isQueued;
}

void TaMessageHandlerBase::reportDropped(const TaPostNotification& notification) const noexcept
{
    TaMessageTrace::Report(SMessageTrace::eS_Dropped, false, notification.GetMessage(),
        notification.GetSource(), &getOwnName());
}

// The locks are held: overrides cannot say so.

void TaMessageHandlerBase::signalSendNotification() TU_NO_THREAD_SAFETY_ANALYSIS
{
    postSignal(kSendSignal, m_sends.signal);
}

void TaMessageHandlerBase::signalPostNotification() TU_NO_THREAD_SAFETY_ANALYSIS
{
    postSignal(kPostSignal, m_posts.signal);
}

void TaMessageHandlerBase::postSignal(unsigned int number, platform::EPost& result)
{
    result = platform::PostToWindow(GetHWND(), number, 0, 0);
}

bool TaMessageHandlerBase::retryWakeUp() noexcept
{
    const TuCriticalSectionAuto guard(m_posts.lock);
    if (!m_posts.isOpen || !missesWakeUps()) {
        return true;
    }
    m_posts.signal = platform::eP_Posted;
    signalPostNotification();
    return m_posts.signal != platform::eP_Full;
}

bool TaMessageHandlerBase::canBeReached() const
{
    const TuCriticalSectionAuto guard(m_sends.lock);
    return m_sends.isOpen && platform::IsMessageWindow(GetHWND());
}

void TaMessageHandlerBase::dumpQueues(TuStreamWriteASCII& stream) const
{
    stream << u"  '" << getOwnName() << u"': " << static_cast<unsigned int>(m_sends.GetCount())
           << u" sent, " << static_cast<unsigned int>(m_posts.GetCount()) << u" posted, thread "
           << m_threadId.load() << u"\n";
}

// There are wake-ups without a notification: those of what was dropped, or ran elsewhere. So each
// stands for the next of both queues, or a send would overtake a post.

void TaMessageHandlerBase::onSendNotification() noexcept { onWakeUp(); }

void TaMessageHandlerBase::onPostNotification() noexcept { onWakeUp(); }

void TaMessageHandlerBase::onWakeUp() noexcept
{
    if (missesWakeUps()) {
        runAll();
    } else {
        runNext(m_posts.kNone);
    }
}

void TaMessageHandlerBase::runAll() noexcept
{
    m_missesWakeUps.exchange(false); // from here on, what has set it is in sight
    const std::uint64_t limit = m_tickets.load();
    const std::weak_ptr<const char> life(m_life);
    while (!life.expired() && runNext(limit)) { }
}

bool TaMessageHandlerBase::runNext(std::uint64_t limit) noexcept
{
    // Of a post and a send that come meanwhile, only the second might be seen.
    limit = std::min(limit, m_tickets.load());
    do {
        if (m_sends.MayHaveAny()) {
            if (auto sent = m_sends.Take(std::min(limit, m_posts.GetFirstTicket()))) {
                run(*sent);
                return true;
            }
        }
        if (auto posted = m_posts.Take(limit)) {
            run(*posted);
            return true;
        }
        // The post in front of what was sent may have been dropped just now.
    } while (m_sends.MayHaveAny() && m_sends.GetFirstTicket() < limit);
    return false;
}

void TaMessageHandlerBase::flushPostNotifications() noexcept
{
    // One by one, so that what a handler drops on the way is not handled any more.
    const std::uint64_t limit = m_tickets.load();
    const std::weak_ptr<const char> life(m_life);
    while (!life.expired()) {
        auto notification = m_posts.Take(limit);
        if (!notification.has_value()) {
            return;
        }
        run(*notification);
    }
}

void TaMessageHandlerBase::run(TaSendNotification& notification) noexcept
{
    TaMessageTrace::Report(SMessageTrace::eS_Delivered, true, notification.GetMessage(),
        notification.GetSource(), &getOwnName());
    try {
        processSendNotification(notification);
    } catch (...) {
        notification.Answer(kFail);
    }
}

void TaMessageHandlerBase::run(TaPostNotification& notification) noexcept
{
    std::optional<CString> name; // a copy: the handler may end itself meanwhile
    if (TaMessageTrace::IsOn()) {
        try {
            name = getOwnName();
        } catch (...) { // no memory: the trace does without it
        }
    }
    TaMessageTrace::Report(SMessageTrace::eS_Delivered, false, notification.GetMessage(),
        notification.GetSource(), &getOwnName());
    try {
        processPostNotification(notification);
    } catch (...) { // who has posted it does not wait
    }
    if (!notification.GetSharedMessage().IsNull()) { // the dispatcher passes it on
        TaMessageTrace::Report(SMessageTrace::eS_Answered, false, notification.GetMessage(),
            notification.GetSource(), name ? &*name : nullptr);
    }
}

void TaMessageHandlerBase::processSendNotification(TaSendNotification& notification)
{
    long long result = kFail;
    try {
        result = handleMessage(notification.GetMessage());
    } catch (...) { // the answer says so
    }
    notification.Answer(result); // the handler may be gone
}

void TaMessageHandlerBase::processPostNotification(TaPostNotification& notification)
{
    try {
        handleMessage(notification.GetMessage());
    } catch (...) { // who has posted it does not wait
    }
}

long long TaMessageHandlerBase::handleMessage(const TaMessage& message)
{
    if (const auto* const create = dynamic_cast<const TaMessageCreateHWND*>(&message)) {
        return onMessageCreateHWND(*create);
    }
    TuStreamWriteASCIITraceDiagnostic trace;
    trace << u"ERROR: Fehlgeleitete Meldung: Empfänger '" << GetName() << u"', Meldung '"
          << message.GetClassName() << u"'\n";
    return kFail;
}

long long TaMessageHandlerBase::onMessageCreateHWND(const TaMessageCreateHWND& message)
{
    return createHWND(message.GetHandler()) ? 1 : 0;
}

template <class Predicate> void TaMessageHandlerBase::drop(Predicate isMeant) noexcept
{
    m_sends.Drop(isMeant);
    m_posts.Drop([&](const TaPostNotification& notification) {
        const bool drops = isMeant(notification);
        if (drops) {
            reportDropped(notification);
        }
        return drops;
    });
}

void TaMessageHandlerBase::invalidateUnsubscribedMessages(
    const TaMessageSubscription& subscription) noexcept
{
    drop([&](const auto& notification) {
        return subscription.IsInvalidating(notification.GetMessage());
    });
}

void TaMessageHandlerBase::dropMessagesTo(const TaMessageHandlerBase& target) noexcept
{
    drop([&](const auto& notification) { return notification.GetTarget() == &target; });
}

void TaMessageHandlerBase::closeQueues() noexcept
{
    {
        const TuCriticalSectionAuto guard(m_sends.lock);
        m_sends.isOpen = false;
    }
    {
        const TuCriticalSectionAuto guard(m_posts.lock);
        m_posts.isOpen = false;
    }
    m_threadId = 0;
    drop([](const auto&) { return true; });
}
