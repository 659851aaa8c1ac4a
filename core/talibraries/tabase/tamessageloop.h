#pragma once

#include "tabase/tabaseapi.h"

/// The loop of the calling thread, for all handlers that have their windows on it.
///
/// A thread with nothing else to do calls Run. One that has a loop already (of a user interface,
/// say) lets that watch the descriptor, and calls HandleWaiting where it is readable. On Windows
/// there is no descriptor: any loop that serves windows serves handlers, too.
///
/// Threads: each thread has its own.
/// Failure: none.
class TABASE_API TaMessageLoop
{
public:
    /// Serves the handlers until the loop is ended: true. False where the system does not give out
    /// messages any more.
    [[nodiscard]] static bool Run() noexcept;
    /// Waits for something, and handles that alone. False when the loop is to end, or the system
    /// does not give out messages any more.
    static bool WaitAndHandle() noexcept;
    /// Handles what waits now, but nothing that comes meanwhile. False when the loop is to end.
    static bool HandleWaiting() noexcept;
    /// Readable while something waits; -1 where there is none. It belongs to the thread.
    static int GetDescriptor() noexcept;
};
