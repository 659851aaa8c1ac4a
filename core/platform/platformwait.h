#pragma once

#include "platform/platformapi.h"

#include <atomic>
#include <cstdint>

/// The one way in which a thread sleeps: on a word of memory, until somebody changes the word and
/// wakes it. It needs no object of the system's. Locks, events and the end of a thread stand on it.
namespace platform {

enum EWordWait
{
    eWW_Woken, // or the word was another already; perhaps for no reason: look, and wait again
    eWW_TimedOut,
    eWW_Failed, // the system refused
};

/// Sleeps while `word` holds `expected`, until `deadline` (see platformclock.h) at the latest.
[[nodiscard]] PLATFORM_API EWordWait WaitOnWord(const std::atomic<std::uint32_t>& word,
    std::uint32_t expected, std::uint64_t deadline) noexcept;

/// Wake those who sleep on `word`, after it has been changed. The word itself is not touched: it
/// may be gone by now, as far as the woken thread is concerned.
PLATFORM_API void WakeOne(const std::atomic<std::uint32_t>& word) noexcept;
PLATFORM_API void WakeAll(const std::atomic<std::uint32_t>& word) noexcept;

} // namespace platform
