#pragma once

#include "platform/platformapi.h"
#include "platform/platformevent.h"

#include <cstdint>
#include <memory>
#include <string_view>

namespace platform {

class ThreadState;

/// The number by which the system knows the calling thread. The number of a thread that has ended
/// may be given to another.
PLATFORM_API std::uint32_t GetCurrentThreadId() noexcept;

/// A thread that this process has started.
///
/// A suspended thread stands still wherever it happens to be, with all locks that it holds there.
/// A killed one leaves everything as it is at that moment: its stack is not unwound, locks that it
/// held stay locked (those of the memory allocator too), memory that it owned is lost. Both are for
/// emergencies and debuggers. A thread is not stopped half-way in an event or a thread object
/// of this library (see StopGuard), nor before its procedure or behind it.
///
/// Elsewhere than on Windows, they interrupt the thread with the signal SIGRTMIN + 5, which no
/// other part of the program may use or block; a thread that does not answer it is given up after
/// ten seconds. A call of the system in which the thread sleeps may then fail with EINTR.
/// Priorities are niceness there, and scheduling classes at both ends: idle, round robin.
///
/// Ownership: the handle does not keep the thread going, nor the thread the handle; movable only.
/// Threads:   all operations may run on any thread at once, but for Create, moves and destruction.
/// Failure:   false; GetLastSystemError() has the reason. All but Create, moves and IsOpen need a
///            handle that is open.
class PLATFORM_API Thread
{
public:
    /// Its result is the exit code; kActive is taken, and becomes 1.
    using Procedure = unsigned int (*)(void* argument);

    static constexpr unsigned int kActive = 259; // the exit code of a thread that has not ended

    Thread() = default;
    ~Thread();
    Thread(Thread&& other) noexcept = default;
    Thread& operator=(Thread&& other) noexcept;

    /// Starts a thread that is suspended and has run nothing yet. Debuggers show its name, or the
    /// first 15 bytes of it.
    [[nodiscard]] bool Create(Procedure procedure, void* argument, std::u16string_view name);
    bool IsOpen() const { return m_state != nullptr; }

    /// Returns when the thread stands still; true, too, for one that does already. A thread that
    /// suspends itself returns when another has resumed it.
    [[nodiscard]] bool Suspend();
    [[nodiscard]] bool Resume();
    /// Ends the thread where it is, and returns when it has ended; false where it had ended before,
    /// and where it does not in ten seconds. A thread that kills itself does not return.
    [[nodiscard]] bool Kill(unsigned int exitCode);

    bool IsActive() const;
    /// kActive until the thread has ended.
    unsigned int GetExitCode() const;
    /// Waits until the thread has ended, with the destructors of its own objects; a thread that
    /// waits for itself gets eW_TimedOut at once.
    [[nodiscard]] EWait WaitForEnd(unsigned int milliseconds) const;

    /// Takes the values -15, -2, -1, 0, 1, 2 and 15. Lowering always works.
    [[nodiscard]] bool SetPriority(int priority);
    int GetPriority() const;

    /// Whether the calling thread is this one.
    bool IsCurrent() const;
    std::uint32_t GetId() const;
    /// What the system's own functions take: a HANDLE, or a pthread_t.
    void* GetNativeHandle() const;

private:
    std::shared_ptr<ThreadState> m_state;
};

} // namespace platform
