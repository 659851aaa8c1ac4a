#pragma once

#include "platform/blockrow.h"
#include "platform/platformlock.h"
#include "platform/platformwindow.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace platform {

struct SWindowSlot;

/// The messages that wait for the windows of one thread. Posters add to one row of messages; the
/// thread takes that row as a whole, and then message by message without a lock.
///
/// Ownership: made for a thread that makes a window or asks for messages, given to another when
///            that has ended, and never destroyed: who posts to a window that goes at this moment
///            may still look at it.
/// Threads:   Post, Wake and Abandon are for any thread, the rest for the one whose queue it is.
class MessageQueue
{
public:
    /// The calling thread's; null without memory.
    static MessageQueue* GetCurrent() noexcept;
    /// Tells the calling thread where to note its queue, for whoever may kill the thread. Before
    /// that place goes, the thread calls EndOfThread, which ends its windows.
    static void NoteIn(std::atomic<MessageQueue*>& place) noexcept;
    static void EndOfThread() noexcept;
    /// Ends the windows of a thread that was killed.
    static void Abandon(MessageQueue& queue) noexcept;

    /// From here on, messages to the window arrive.
    void AddWindow(SWindowSlot& slot, HWND window) noexcept;
    /// From here on, none do, and those that wait are gone.
    void RemoveWindow(SWindowSlot& slot) noexcept;

    EPost Post(const SWindowSlot& slot, const SWindowMessage& message) noexcept;
    /// The thread is to look again, if it sleeps.
    void Wake() noexcept;

    EGetMessage Take(SWindowMessage& message, bool waits) noexcept;
    /// Takes the next message where it is such a one and has come with the row at hand.
    bool TakeSame(HWND window, unsigned int number) noexcept;
    /// While somebody counts what is taken, TakeSame takes nothing.
    void Limit(bool isLimited) noexcept { m_limits += isLimited ? 1 : -1; }
    bool TakeOf(HWND window, unsigned int number, SWindowMessage& message) noexcept;
    /// The serial number that the next message will have, and whether one before it still waits.
    std::uint32_t GetEnd() noexcept;
    bool HasBefore(std::uint32_t end) noexcept;
    int GetDescriptor() noexcept;

private:
    struct SWaiting
    {
        HWND window;
        unsigned int message;
        std::uint32_t serial; // of the first; counts on through the messages, and round
        std::uint32_t count; // of equal messages that came one behind the other
        unsigned long long wParam;
        long long lParam;
    };
    /// A block stays below what the allocator of the C library takes for large.
    using Row = BlockRow<SWaiting, 24>;

    MessageQueue() noexcept = default;
    ~MessageQueue() = default;

    static void giveBack(MessageQueue& queue) noexcept;
    bool takeRow(bool waits) noexcept;
    bool addToPosted(const SWindowMessage& message) noexcept TU_REQUIRES(m_lock);
    void dropFirst() noexcept;
    bool isAnyWaiting() const noexcept TU_REQUIRES(m_lock);
    void setReadable(bool isReadable) noexcept TU_REQUIRES(m_lock);
    void end() noexcept;

    Row m_row; // of the thread: what it has taken from the other
    int m_limits = 0;
    bool m_hasDescriptor = false; // so that a thread without one need not look under the lock
    SWindowSlot* m_firstWindow = nullptr;
    std::atomic<MessageQueue*>* m_place = nullptr; // where it is noted, or null
    MessageQueue* m_nextFree = nullptr; // among the queues without a thread

    CriticalSection m_lock;
    Row m_posted TU_GUARDED_BY(m_lock);
    std::uint32_t m_nextSerial TU_GUARDED_BY(m_lock) = 0;
    int m_descriptor TU_GUARDED_BY(m_lock) = -1;
    bool m_isReadable TU_GUARDED_BY(m_lock) = false; // the descriptor
    /// kAsleep is written under the lock by the thread, before it sleeps on the word; kAwake by who
    /// wakes it. Who puts that off leaves the word, so that anybody else may do it first.
    std::atomic<std::uint32_t> m_word{ kAwake };
    static constexpr std::uint32_t kAwake = 0;
    static constexpr std::uint32_t kAsleep = 1;
};

} // namespace platform
