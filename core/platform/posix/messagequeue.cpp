#include "platform/posix/messagequeue.h"

#include "platform/platformclock.h"
#include "platform/posix/futex.h"
#include "platform/posix/windowslot.h"
#include "platform/stopguard.h"
#include "platform/threadvalue.h"

#include <errno.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <utility>

namespace platform {
namespace {

    /// Rows that grew longer than this give their memory back.
    constexpr std::size_t kMostKept = 16'384;

    constinit thread_local MessageQueue* t_queue __attribute__((tls_model("initial-exec")))
    = nullptr;
    constinit thread_local std::atomic<MessageQueue*>* t_place = nullptr;
    constinit thread_local WakeLater* t_wakeLater __attribute__((tls_model("initial-exec")))
    = nullptr;

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
    const StopGuard unstopped;
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
    if (queue == nullptr || !queueOfThread().Set(queue)) {
        delete queue; // which nobody has seen yet, or not for long
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
    if (MessageQueue* const queue = std::exchange(t_queue, nullptr)) {
        (void)queueOfThread().Set(nullptr);
        queue->end();
    }
    t_place = nullptr;
}

void MessageQueue::Abandon(MessageQueue& queue) noexcept { queue.end(); }

void MessageQueue::end() noexcept
{
    const StopGuard unstopped;
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
        m_posted = Messages();
        m_word = kAwake;
    }
    m_row = Messages();
    m_next = 0;
    SFreeQueues& all = freeQueues();
    const LockGuard guard(all.lock);
    m_nextFree = all.first;
    all.first = this;
}

void MessageQueue::AddWindow(SWindowSlot& slot, HWND window) noexcept
{
    const StopGuard unstopped;
    slot.next = m_firstWindow;
    m_firstWindow = &slot;
    slot.queue.store(this, std::memory_order_relaxed);
    // Who finds the handle finds the rest.
    slot.window.store(window, std::memory_order_release);
}

void MessageQueue::RemoveWindow(SWindowSlot& slot) noexcept
{
    const StopGuard unstopped;
    SWindowSlot** link = &m_firstWindow;
    while (*link != &slot) {
        link = &(*link)->next;
    }
    *link = slot.next;
    {
        const LockGuard guard(m_lock);
        const HWND window = slot.window.exchange(nullptr, std::memory_order_relaxed);
        std::erase_if(m_posted, [&](const SWindowMessage& m) { return m.window == window; });
        // Those in the row pass when their turn comes: their window is gone.
    }
    GiveBackWindowSlot(slot);
}

EPost MessageQueue::Post(const SWindowSlot& slot, const SWindowMessage& message) noexcept
{
    const StopGuard unstopped;
    bool isAsleep = false;
    {
        const LockGuard guard(m_lock);
        if (slot.window.load(std::memory_order_relaxed) != message.window) {
            errno = ESRCH;
            return eP_NoWindow;
        }
        try {
            m_posted.push_back(message);
        } catch (const std::bad_alloc&) {
            errno = ENOMEM;
            return eP_Full;
        }
        signalDescriptor();
        isAsleep = m_word.load(std::memory_order_relaxed) == kAsleep;
        if (isAsleep) {
            m_word.store(kAwake, std::memory_order_relaxed);
        }
    }
    if (isAsleep) {
        if (t_wakeLater != nullptr && t_wakeLater->m_queue == nullptr) {
            t_wakeLater->m_queue = this;
        } else {
            Wake();
        }
    }
    return eP_Posted;
}

void MessageQueue::Wake() noexcept { WakeOne(m_word); }

EGetMessage MessageQueue::Take(SWindowMessage& message, bool waits) noexcept
{
    for (;;) {
        while (m_next < m_row.size()) {
            message = m_row[m_next++];
            // Messages to windows that have gone meanwhile go with them.
            if (FindWindowSlot(message.window) != nullptr) {
                return message.message == eWM_Quit ? eGM_Quit : eGM_Message;
            }
        }
        if (!takeRow(waits)) {
            return waits ? eGM_Failed : eGM_None;
        }
    }
}

/// Takes the row of posted messages; false where there is none and nobody waits for one.
bool MessageQueue::takeRow(bool waits) noexcept
{
    {
        const StopGuard unstopped;
        m_next = 0;
        m_row.clear();
        if (m_row.capacity() > kMostKept) {
            m_row = Messages();
        }
    }
    for (;;) {
        {
            const StopGuard unstopped;
            const LockGuard guard(m_lock);
            m_row.swap(m_posted);
            if (!m_row.empty()) {
                return true;
            }
            calmDescriptor();
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
    const auto isMeant = [&](const SWindowMessage& candidate) {
        return candidate.window == window && candidate.message == number;
    };
    const auto takeFrom = [&](Messages& messages, std::size_t first) {
        const auto begin = messages.begin() + static_cast<std::ptrdiff_t>(first);
        const auto found = std::find_if(begin, messages.end(), isMeant);
        if (found == messages.end()) {
            return false;
        }
        message = *found;
        messages.erase(found);
        return true;
    };
    const StopGuard unstopped;
    if (takeFrom(m_row, m_next)) {
        return true;
    }
    const LockGuard guard(m_lock);
    return takeFrom(m_posted, 0);
}

std::size_t MessageQueue::GetCount() noexcept
{
    const StopGuard unstopped;
    const LockGuard guard(m_lock);
    return m_row.size() - m_next + m_posted.size();
}

void MessageQueue::UpdateDescriptor() noexcept
{
    const StopGuard unstopped;
    const LockGuard guard(m_lock);
    if (m_next == m_row.size() && m_posted.empty()) {
        calmDescriptor();
    }
}

int MessageQueue::GetDescriptor() noexcept
{
    const StopGuard unstopped;
    const LockGuard guard(m_lock);
    if (m_descriptor == -1) {
        m_descriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
        if (m_next < m_row.size() || !m_posted.empty()) {
            signalDescriptor();
        }
    }
    return m_descriptor;
}

void MessageQueue::signalDescriptor() noexcept
{
    if (m_descriptor != -1 && !m_isReadable) {
        m_isReadable = ::eventfd_write(m_descriptor, 1) == 0;
    }
}

void MessageQueue::calmDescriptor() noexcept
{
    if (m_isReadable) {
        eventfd_t count = 0;
        m_isReadable = ::eventfd_read(m_descriptor, &count) != 0;
    }
}

WakeLater::WakeLater() noexcept
    : m_outer(std::exchange(t_wakeLater, this))
{
}

WakeLater::~WakeLater()
{
    t_wakeLater = m_outer;
    if (m_queue != nullptr) {
        m_queue->Wake();
    }
}

} // namespace platform
