#pragma once

#include "platform/platformapi.h"

#include <cstdint>
#include <string>

/// A window's handle: on Windows the system's own; elsewhere a number that looks like an address
/// and is none. There no two windows of a process ever have the same.
struct HWND__; // NOLINT(bugprone-reserved-identifier): the name there
using HWND = HWND__*;

namespace platform {

class MessageQueue;

/// The numbers of window messages; the same on all systems.
enum EWindowMessage : unsigned int
{
    eWM_Create = 1, // sent to a new window; GetCreationParameter has what its maker gave along
    eWM_Destroy = 2, // sent to a window that is about to go
    eWM_Close = 16, // asks a window to go, which PassToDefault does
    eWM_Quit = 18, // ends the loop of the thread
    eWM_Command = 273,
    eWM_FirstUser = 1024, // from here on to 32767: of the window's class
    eWM_FirstApp = 32768, // to 49151: of the application
    eWM_FirstRegistered = 49152, // to 65535: registered with the system by name
};

/// What handles the messages of a window, on the thread of the window. Nothing may be thrown.
using WindowProcedure
    = long long (*)(HWND window, unsigned int message, unsigned long long wParam, long long lParam);

/// Windows that nobody sees, and that only receive messages: what wakes a thread for a piece of
/// work, in the order in which the pieces came.
///
/// The thread that makes a window owns it. Each thread with windows has one queue for all of them:
/// posting puts a message at its end, from any thread; the loop of the thread takes messages from
/// its head and calls the procedures of their windows:
///
///     SWindowMessage message;
///     for (;;) {
///         switch (WaitForMessage(message)) {
///         case eGM_Message: DispatchToWindow(message); break;
///         case eGM_Quit: return;
///         case eGM_Failed: ...
///         }
///     }
///
/// Any other loop will do that lets a thread sleep on a descriptor: where that of
/// GetMessageDescriptor is readable, it calls HandleWaitingMessages. (On Windows there is none: any
/// loop that serves windows serves these, too.)
///
/// On all systems: messages to one thread keep the order in which they were posted, and a quit
/// message is one of them. A window that goes takes its waiting messages with it; posting to it
/// fails from then on. So it is when its thread has ended or was killed, but then without
/// eWM_Destroy. A thread that waits costs its posters one call of the system for the message that
/// wakes it, and none while it is awake.
///
/// Threads: a window is made and destroyed, and its messages are taken and dispatched, on its own
///          thread. Everything else may be called by any.
/// Failure: by result; GetLastSystemError() has the reason.

/// Makes a class of windows of that name and one window of it. The procedure receives eWM_Create
/// before this returns. Null: it answered -1 to that, or destroyed the window; or the name is taken
/// (on Windows, where a window that ends with its thread leaves its class); or the system refused.
[[nodiscard]] PLATFORM_API HWND CreateMessageWindow(
    const char16_t* className, WindowProcedure procedure, void* parameter) noexcept;
/// The procedure receives eWM_Destroy before this returns; then window and class are gone.
PLATFORM_API bool DestroyMessageWindow(HWND window) noexcept;

/// Whether there is such a window, of this process or another.
[[nodiscard]] PLATFORM_API bool IsMessageWindow(HWND window) noexcept;
/// Empty where there is no such window.
[[nodiscard]] PLATFORM_API std::u16string GetWindowClassName(HWND window);
/// From the second parameter of eWM_Create.
[[nodiscard]] PLATFORM_API void* GetCreationParameter(long long lParam) noexcept;
/// A value that the window keeps for its procedure; null at first, and where there is no window.
[[nodiscard]] PLATFORM_API void* GetWindowValue(HWND window) noexcept;
PLATFORM_API void SetWindowValue(HWND window, void* value) noexcept;
/// What a procedure does with a message that it does not treat.
PLATFORM_API long long PassToDefault(
    HWND window, unsigned int message, unsigned long long wParam, long long lParam) noexcept;

enum EPost
{
    eP_Posted,
    eP_NoWindow, // or its thread has ended
    eP_Full, // on Windows a queue holds 10,000 messages; elsewhere, as many as there is memory for
};

[[nodiscard]] PLATFORM_API EPost PostToWindow(
    HWND window, unsigned int message, unsigned long long wParam, long long lParam) noexcept;

/// Until when a thread puts off waking others.
enum EWakeUntil
{
    eWU_EndOfScope,
    /// Until it takes a message for another window or has none left, or has taken some more; it
    /// wakes them itself with WakeNow, before it runs what may take long. For a thread that passes
    /// much on: who sleeps is woken once for a row of messages, and does not push aside the one
    /// that is about to have more for him.
    eWU_NextRow,
};

/// While it lives, its thread puts off waking those that it posts to: for who posts under a lock
/// that the woken thread takes next. Another that posts there meanwhile wakes it. May be nested:
/// the outer one then takes over what the inner one has put off. There is room for a few; the
/// others are woken at once. It has no effect on Windows, where posting is one call.
class PLATFORM_API WakeLater
{
public:
    explicit WakeLater(EWakeUntil until = eWU_EndOfScope) noexcept;
    ~WakeLater();
    WakeLater(const WakeLater&) = delete;
    WakeLater& operator=(const WakeLater&) = delete;

#if !defined(_WIN32)
private:
    friend class MessageQueue;

    bool putOff(MessageQueue& queue) noexcept;

    WakeLater* m_outer;
    const EWakeUntil m_until;
    MessageQueue* m_queue = nullptr; // whose thread is to be woken
#endif
};

/// Wakes whom the calling thread has put off to its next row of messages.
PLATFORM_API void WakeNow() noexcept;

struct SWindowMessage
{
    HWND window = nullptr;
    unsigned int message = 0;
    unsigned long long wParam = 0;
    long long lParam = 0;
};

enum EGetMessage
{
    eGM_Message,
    eGM_Quit,
    eGM_None, // only where nobody waits for one
    eGM_Failed,
};

/// Waits for the next message to any window of the calling thread.
[[nodiscard]] PLATFORM_API EGetMessage WaitForMessage(SWindowMessage& message) noexcept;
/// The same without a wait.
[[nodiscard]] PLATFORM_API EGetMessage TakeMessage(SWindowMessage& message) noexcept;
/// Takes the first waiting message of that number to that window, out of order.
[[nodiscard]] PLATFORM_API bool TakeMessageOf(
    HWND window, unsigned int number, SWindowMessage& message) noexcept;
/// For a procedure of such a message, which can go on with the next one at once: takes the very
/// next message of the thread where it is another one of that number to that window, and is known
/// without asking the system. False on Windows, and while HandleWaitingMessages counts.
[[nodiscard]] PLATFORM_API bool TakeSameMessage(HWND window, unsigned int number) noexcept;
/// Calls the procedure of the window, unless that is gone.
PLATFORM_API void DispatchToWindow(const SWindowMessage& message) noexcept;
/// Takes and dispatches the messages that wait now, but none that come meanwhile. False where one
/// of them was a quit message; those behind it still wait then.
[[nodiscard]] PLATFORM_API bool HandleWaitingMessages() noexcept;
/// Readable exactly while messages wait for the calling thread; -1 where the system has none. It
/// belongs to the thread, and is closed when that ends.
[[nodiscard]] PLATFORM_API int GetMessageDescriptor() noexcept;

/// Lets tests refuse messages: where the hook is true, posting answers eP_Full. Null takes it off.
using PostRefusal = bool (*)(HWND window, unsigned int message);
PLATFORM_API void SetPostRefusal(PostRefusal refusal) noexcept;

} // namespace platform
