#pragma once

#include <atomic>
#include <cstdint>

/// The one way in which a thread sleeps here: on a word of memory, until somebody changes the word
/// and wakes it. It needs no object of the system's. Locks, events and the ends of threads stand on
/// it.
namespace platform {

enum EWordWait
{
    eWW_Woken, // or the word was another already; perhaps for no reason: look, and wait again
    eWW_TimedOut,
    eWW_Failed, // the system refused
};

/// Sleeps while `word` holds `expected`, until `deadline` (see platformclock.h) at the latest.
[[nodiscard]] EWordWait WaitOnWord(const std::atomic<std::uint32_t>& word, std::uint32_t expected,
    std::uint64_t deadline) noexcept;

/// Wake those who sleep on `word`, after it has been changed. The word itself is not touched: it
/// may be gone by now, as far as the woken thread is concerned.
void WakeOne(const std::atomic<std::uint32_t>& word) noexcept;
void WakeAll(const std::atomic<std::uint32_t>& word) noexcept;

} // namespace platform
