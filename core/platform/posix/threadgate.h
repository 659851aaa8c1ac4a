#pragma once

#include <atomic>
#include <cstdint>

namespace platform {

/// Where one thread stands while it is suspended. It is asked there by a signal, whose handler
/// calls Stand(); a new thread stands there first of all.
///
/// Threads: Stand is for the thread itself; the others for one other thread at a time.
class ThreadGate
{
public:
    /// Returns when the gate is open; false where the thread is to be killed.
    [[nodiscard]] bool Stand() noexcept;
    /// The thread will not come any more: nobody need wait for it.
    void Leave() noexcept;

    bool IsClosed() const { return m_state.load(std::memory_order_acquire) == eG_Closed; }
    /// Closes the gate. Returns whether the thread has to be asked to come.
    [[nodiscard]] bool Close() noexcept;
    /// Returns whether the thread stands there in time.
    [[nodiscard]] bool WaitUntilItStands(std::uint64_t deadline) const noexcept;
    /// Opens a closed gate.
    void Open() noexcept;
    /// From now on the thread is killed when it comes.
    void OpenToKill() noexcept;

private:
    enum EState : std::uint32_t
    {
        eG_Closed, // the thread stands here, or has been asked to; from all but eG_Kill
        eG_Opening, // it may go, but may not have noticed; from eG_Closed
        eG_Open, // it has gone; from eG_Opening, by the thread itself
        eG_Kill, // for ever
    };

    std::atomic<std::uint32_t> m_state{ eG_Closed };
    std::atomic<std::uint32_t> m_stands{ 1 }; // a new thread has run nothing
};

} // namespace platform
