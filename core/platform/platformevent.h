#pragma once

#include "platform/platformapi.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace platform {

class EventState;

enum EWait
{
    eW_TimedOut = 0,
    eW_Signaled = 1,
    eW_Failed = 2, // nothing to wait for, no memory, or the system refused
};

/// A flag that threads set and sleep on. A manual event stays set until it is reset and lets
/// everybody through; an automatic one lets one thread through and is reset by that.
///
/// Until somebody sleeps on it, or copies it, an event is one word and owns nothing.
///
/// Ownership: copies share one flag, which lives until the last of them is gone.
/// Threads:   all operations may run on any thread at once, but for assignment and destruction. A
///            thread that Set has let through may destroy the event at once, even before Set has
///            returned. What a thread wrote before Set is visible to whom that Set let through.
/// Failure:   only copying throws, std::bad_alloc.
class PLATFORM_API Event
{
public:
    explicit Event(bool manual) noexcept;
    ~Event();
    Event(const Event& other);
    Event& operator=(const Event& other);

    void Set() noexcept;
    void Reset() noexcept;

    /// Returns when the event is set, or the time-out (in milliseconds, see kWaitForever) has run
    /// out. A time-out of 0 asks only.
    [[nodiscard]] EWait Wait(unsigned int milliseconds) const noexcept;

    /// The same for the first of any number of events; `index` receives which. No events, or a null
    /// one among them, is a failure at once. Of several that are set, the first is taken. An event
    /// may stand there twice.
    [[nodiscard]] static EWait WaitForAny(const Event* const* events, std::size_t count,
        unsigned int milliseconds, std::size_t& index) noexcept;

private:
    friend class EventWaiter;

    /// Takes the flag where it is set.
    bool tryTake() const noexcept;
    /// What the copies share, made where there is none yet; null without memory.
    EventState* share() const noexcept;

    /// The flag and its kind while the event is alone, else the address of what its copies and
    /// those who sleep share. Once shared, an event stays it.
    mutable std::atomic<std::uintptr_t> m_word;
};

} // namespace platform
