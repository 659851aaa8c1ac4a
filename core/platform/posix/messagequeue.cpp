#include "platform/posix/messagequeue.h"

#include "platform/platformclock.h"
#include "platform/posix/currentthread.h"
#include "platform/posix/futex.h"
#include "platform/posix/windowslot.h"
#include "platform/threadvalue.h"

#include <errno.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <new>
#include <utility>

namespace platform {
namespace {

    constinit thread_local MessageQueue* t_queue __attribute__((tls_model("initial-exec")))
    = nullptr;
    constinit thread_local std::atomic<MessageQueue*>* t_place = nullptr;
    constinit thread_local WakeLater* t_wakeLater __attribute__((tls_model("initial-exec")))
    = nullptr;

    /// Queues whose threads this one wakes when it is done with a row of messages.
    class WakesOfRow
    {
    public:
        bool Add(MessageQueue& queue) noexcept
        {
            const auto end = m_queues.begin() + m_count;
            if (std::find(m_queues.begin(), end, &queue) == end) {
                if (m_count == m_queues.size()) {
                    return false;
                }
                m_queues[m_count++] = &queue;
            }
            return true;
        }
        void Wake() noexcept
        {
            while (m_count > 0) {
                m_queues[--m_count]->Wake();
            }
            m_taken = 0;
        }
        /// Before the thread takes a message for `window`; null: it has none.
        void Pass(HWND window) noexcept
        {
            if (m_count > 0 && (window != m_window || ++m_taken == kMostTaken)) {
                Wake();
            }
            m_window = window;
        }

    private:
        static constexpr unsigned int kMostTaken = 64;

        std::array<MessageQueue*, 8> m_queues{};
        std::size_t m_count = 0;
        unsigned int m_taken = 0; // messages, since the first queue was added
        HWND m_window = nullptr; // of the message before
    };
    constinit thread_local WakesOfRow t_wakesOfRow __attribute__((tls_model("initial-exec")));

    const ThreadValue& queueOfThread()
    {
        static const ThreadValue s_queue([](void*) { MessageQueue::EndOfThread(); });
        return s_queue;
    }

    /// Never destroyed, as the queues.
    struct SFreeQueues
    {
        CriticalSection lock;
        MessageQueue* first TU_GUARDED_BY(lock) = nullptr;
    };

    SFreeQueues& freeQueues()
    {
        static SFreeQueues& s_queues = *new SFreeQueues;
        return s_queues;
    }

} // namespace

MessageQueue* MessageQueue::GetCurrent() noexcept
{
    if (t_queue != nullptr) {
        return t_queue;
    }
    const QuickStopGuard unstopped;
    SFreeQueues& all = freeQueues();
    MessageQueue* queue = nullptr;
    {
        const LockGuard guard(all.lock);
        queue = all.first;
        if (queue != nullptr) {
            all.first = queue->m_nextFree;
        }
    }
    if (queue == nullptr) {
        queue = new (std::nothrow) MessageQueue;
    }
    if (queue == nullptr) {
        errno = ENOMEM;
        return nullptr;
    }
    if (!queueOfThread().Set(queue)) {
        giveBack(*queue);
        errno = ENOMEM;
        return nullptr;
    }
    queue->m_place = t_place;
    if (t_place != nullptr) {
        t_place->store(queue, std::memory_order_release);
    }
    return t_queue = queue;
}

void MessageQueue::NoteIn(std::atomic<MessageQueue*>& place) noexcept { t_place = &place; }

void MessageQueue::EndOfThread() noexcept
{
    t_wakesOfRow.Wake();
    if (MessageQueue* const queue = std::exchange(t_queue, nullptr)) {
        (void)queueOfThread().Set(nullptr);
        queue->end();
    }
    t_place = nullptr;
}

void MessageQueue::Abandon(MessageQueue& queue) noexcept { queue.end(); }

void MessageQueue::giveBack(MessageQueue& queue) noexcept
{
    SFreeQueues& all = freeQueues();
    const LockGuard guard(all.lock);
    queue.m_nextFree = all.first;
    all.first = &queue;
}

void MessageQueue::end() noexcept
{
    const QuickStopGuard unstopped;
    if (m_place != nullptr) {
        m_place->store(nullptr, std::memory_order_release);
        m_place = nullptr;
    }
    while (m_firstWindow != nullptr) {
        RemoveWindow(*m_firstWindow);
    }
    {
        const LockGuard guard(m_lock);
        if (m_descriptor != -1) {
            ::close(m_descriptor);
            m_descriptor = -1;
            m_isReadable = false;
        }
        m_posted.Clear();
        m_word = kAwake;
    }
    m_hasDescriptor = false;
    m_row.Clear();
    giveBack(*this);
}

void MessageQueue::AddWindow(SWindowSlot& slot, HWND window) noexcept
{
    const QuickStopGuard unstopped;
    slot.next = m_firstWindow;
    m_firstWindow = &slot;
    // Who finds this queue finds, under its lock, that the handle before is gone.
    slot.queue.store(this, std::memory_order_release);
    // Who finds the handle finds the rest.
    slot.window.store(window, std::memory_order_release);
}

void MessageQueue::RemoveWindow(SWindowSlot& slot) noexcept
{
    const QuickStopGuard unstopped;
    SWindowSlot** link = &m_firstWindow;
    while (*link != &slot) {
        link = &(*link)->next;
    }
    *link = slot.next;
    {
        const LockGuard guard(m_lock);
        const HWND window = slot.window.exchange(nullptr, std::memory_order_relaxed);
        const auto isOfOther = [&](const SWaiting& waiting) { return waiting.window != window; };
        m_posted.Filter(isOfOther);
        m_row.Filter(isOfOther);
        setReadable(isAnyWaiting());
    }
    GiveBackWindowSlot(slot);
}

EPost MessageQueue::Post(const SWindowSlot& slot, const SWindowMessage& message) noexcept
{
    const QuickStopGuard unstopped;
    bool isToBeWoken = false;
    {
        const LockGuard guard(m_lock);
        if (slot.window.load(std::memory_order_relaxed) != message.window) {
            errno = ESRCH;
            return eP_NoWindow;
        }
        if (!addToPosted(message)) {
            errno = ENOMEM;
            return eP_Full;
        }
        ++m_nextSerial;
        setReadable(true);
        isToBeWoken = m_word.load(std::memory_order_relaxed) == kAsleep;
    }
    if (isToBeWoken && (t_wakeLater == nullptr || !t_wakeLater->putOff(*this))) {
        Wake();
    }
    return eP_Posted;
}

/// Equal messages in a row share an entry: a handler's wake-ups, above all.
bool MessageQueue::addToPosted(const SWindowMessage& message) noexcept
{
    if (!m_posted.IsEmpty()) {
        SWaiting& last = m_posted.GetLast();
        if (last.window == message.window && last.message == message.message
            && last.wParam == message.wParam && last.lParam == message.lParam
            && last.count != std::numeric_limits<std::uint32_t>::max()) {
            ++last.count;
            return true;
        }
    }
    return m_posted.Add(SWaiting{
        message.window, message.message, m_nextSerial, 1, message.wParam, message.lParam });
}

void MessageQueue::Wake() noexcept
{
    const QuickStopGuard unstopped; // who is killed between these two would leave the thread asleep
    if (m_word.exchange(kAwake, std::memory_order_relaxed) == kAsleep) {
        WakeOne(m_word);
    }
}

EGetMessage MessageQueue::Take(SWindowMessage& message, bool waits) noexcept
{
    if (m_row.IsEmpty()) {
        t_wakesOfRow.Pass(nullptr);
        if (!takeRow(waits)) {
            return waits ? eGM_Failed : eGM_None;
        }
    }
    const SWaiting& first = m_row.GetFirst();
    // Who ends its loop may not come here again.
    t_wakesOfRow.Pass(first.message != eWM_Quit ? first.window : nullptr);
    message = { first.window, first.message, first.wParam, first.lParam };
    dropFirst();
    if (m_hasDescriptor && m_row.IsEmpty()) {
        const QuickStopGuard unstopped;
        const LockGuard guard(m_lock);
        setReadable(isAnyWaiting());
    }
    if (message.message == eWM_Quit) {
        t_wakesOfRow.Wake(); // there may be no next row
        return eGM_Quit;
    }
    return eGM_Message;
}

bool MessageQueue::TakeSame(HWND window, unsigned int number) noexcept
{
    if (m_row.IsEmpty() || m_hasDescriptor || m_limits != 0) {
        return false;
    }
    const SWaiting& first = m_row.GetFirst();
    if (first.window != window || first.message != number) {
        return false;
    }
    t_wakesOfRow.Pass(window);
    dropFirst();
    return true;
}

void MessageQueue::dropFirst() noexcept
{
    SWaiting& first = m_row.GetFirst();
    if (first.count > 1) {
        ++first.serial;
        --first.count;
    } else {
        const QuickStopGuard unstopped;
        m_row.TakeFirst();
    }
}

/// Takes the row of posted messages; false where there is none and nobody waits for one.
bool MessageQueue::takeRow(bool waits) noexcept
{
    for (;;) {
        {
            const QuickStopGuard unstopped;
            const LockGuard guard(m_lock);
            m_row.Swap(m_posted);
            if (!m_row.IsEmpty()) {
                return true;
            }
            if (!waits) {
                return false;
            }
            m_word.store(kAsleep, std::memory_order_relaxed);
        }
        while (m_word.load(std::memory_order_relaxed) == kAsleep) {
            if (WaitOnWord(m_word, kAsleep, kNever) == eWW_Failed) {
                return false;
            }
        }
    }
}

bool MessageQueue::TakeOf(HWND window, unsigned int number, SWindowMessage& message) noexcept
{
    bool isTaken = false;
    const auto isOther = [&](SWaiting& waiting) {
        if (isTaken || waiting.window != window || waiting.message != number) {
            return true;
        }
        isTaken = true;
        message = { window, number, waiting.wParam, waiting.lParam };
        return --waiting.count != 0;
    };
    const QuickStopGuard unstopped;
    const LockGuard guard(m_lock);
    m_row.Filter(isOther);
    m_posted.Filter(isOther);
    setReadable(isAnyWaiting());
    return isTaken;
}

std::uint32_t MessageQueue::GetEnd() noexcept
{
    const QuickStopGuard unstopped;
    const LockGuard guard(m_lock);
    return m_nextSerial;
}

bool MessageQueue::HasBefore(std::uint32_t end) noexcept
{
    const auto isBefore = [end](const SWaiting& waiting) {
        return static_cast<std::int32_t>(waiting.serial - end) < 0;
    };
    if (!m_row.IsEmpty()) {
        return isBefore(m_row.GetFirst());
    }
    const QuickStopGuard unstopped;
    const LockGuard guard(m_lock);
    return !m_posted.IsEmpty() && isBefore(m_posted.GetFirst());
}

int MessageQueue::GetDescriptor() noexcept
{
    const QuickStopGuard unstopped;
    const LockGuard guard(m_lock);
    if (m_descriptor == -1) {
        m_descriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
        m_hasDescriptor = m_descriptor != -1;
        setReadable(isAnyWaiting());
    }
    return m_descriptor;
}

bool MessageQueue::isAnyWaiting() const noexcept { return !m_row.IsEmpty() || !m_posted.IsEmpty(); }

void MessageQueue::setReadable(bool isReadable) noexcept
{
    if (m_descriptor == -1 || m_isReadable == isReadable) {
        return;
    }
    eventfd_t count = 1;
    if ((isReadable ? ::eventfd_write(m_descriptor, count) : ::eventfd_read(m_descriptor, &count))
        == 0) {
        m_isReadable = isReadable;
    }
}

WakeLater::WakeLater(EWakeUntil until) noexcept
    : m_outer(std::exchange(t_wakeLater, this))
    , m_until(until)
{
}

WakeLater::~WakeLater()
{
    t_wakeLater = m_outer;
    if (m_queue != nullptr && (m_outer == nullptr || !m_outer->putOff(*m_queue))) {
        m_queue->Wake();
    }
}

bool WakeLater::putOff(MessageQueue& queue) noexcept
{
    if (m_until == eWU_NextRow) {
        return t_wakesOfRow.Add(queue);
    }
    if (m_queue == nullptr) {
        m_queue = &queue;
    }
    return m_queue == &queue;
}

void WakeNow() noexcept { t_wakesOfRow.Wake(); }

} // namespace platform
