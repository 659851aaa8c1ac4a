#pragma once

#include "platform/platformlock.h"
#include "platform/platformwindow.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

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
    /// The thread is to look again.
    void Wake() noexcept;

    EGetMessage Take(SWindowMessage& message, bool waits) noexcept;
    bool TakeOf(HWND window, unsigned int number, SWindowMessage& message) noexcept;
    /// How many messages wait.
    std::size_t GetCount() noexcept;
    /// The descriptor stops being readable where nothing waits.
    void UpdateDescriptor() noexcept;
    int GetDescriptor() noexcept;

private:
    using Messages = std::vector<SWindowMessage>;

    MessageQueue() noexcept = default;
    ~MessageQueue() = default;

    bool takeRow(bool waits) noexcept;
    void signalDescriptor() noexcept TU_REQUIRES(m_lock);
    void calmDescriptor() noexcept TU_REQUIRES(m_lock);
    void end() noexcept;

    Messages m_row; // of the thread, which has handled those before m_next
    std::size_t m_next = 0;
    SWindowSlot* m_firstWindow = nullptr;
    std::atomic<MessageQueue*>* m_place = nullptr; // where it is noted, or null
    MessageQueue* m_nextFree = nullptr; // among the queues without a thread

    CriticalSection m_lock;
    Messages m_posted TU_GUARDED_BY(m_lock);
    int m_descriptor TU_GUARDED_BY(m_lock) = -1;
    bool m_isReadable TU_GUARDED_BY(m_lock) = false; // the descriptor
    /// kAsleep is written under the lock by the thread, before it sleeps on the word; kAwake by who
    /// has something for it, also under the lock.
    std::atomic<std::uint32_t> m_word{ kAwake };
    static constexpr std::uint32_t kAwake = 0;
    static constexpr std::uint32_t kAsleep = 1;
};

} // namespace platform
