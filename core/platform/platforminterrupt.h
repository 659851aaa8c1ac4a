#pragma once

#include "platform/platformapi.h"

#include <functional>
#include <memory>

namespace platform {

/// Hears when the user asks the program to stop: Ctrl-C at a console or a terminal, or SIGINT from
/// elsewhere. A process has one at a time.
///
/// Elsewhere than on Windows a thread waits for the signal, which is blocked in the thread that
/// makes the watch, and in those that it starts from then on: make it before there are others. No
/// code runs in a signal handler. A program that was started with the signal ignored, as one in the
/// background of a script is, is not asked.
///
/// Ownership: not movable; must go before what the callback refers to.
/// Threads:   the callback is called on a thread of its own, one call after the other; the
///            destructor waits for one that is under way.
/// Failure:   IsWatching() answers false where the system refused, or another watch lives; the
///            program then ends at Ctrl-C, as it would without one.
class PLATFORM_API InterruptWatch
{
public:
    explicit InterruptWatch(std::function<void()> onInterrupt);
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;

    bool IsWatching() const { return m_state != nullptr; }

private:
    struct SState;

    std::unique_ptr<SState> m_state;
};

} // namespace platform
