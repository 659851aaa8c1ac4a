#pragma once

#include "groundwork/cstring.h"
#include "tabase/tabaseapi.h"

#include <atomic>

class TaMessage;

/// Where a message was sent or posted, as the caller gave it; null and 0 where he did not.
struct SMessageSource
{
    const char16_t* file = nullptr;
    unsigned int line = 0;
};

/// One step of a message on its way, as a trace hook sees it. Everything it points to lives for as
/// long as the hook runs.
struct SMessageTrace
{
    enum EStep
    {
        eS_Queued = 0, // behind what waits for the handler, or for the thread that sends
        eS_Delivered = 1, // the handler begins with it
        eS_Answered = 2, // the handler is done with it
        eS_Dropped = 3, // the handler is gone, or does not want it any more
    };

    EStep step;
    bool isSend; // else it was posted
    const char16_t* messageClass;
    unsigned int messageID;
    SMessageSource source; // of the one who sent it
    const CString* handler; // its name; null where it may be gone
    unsigned int threadID; // of the thread on which the step is made
};

/// The hook that sees the way of all messages, so that a hang can be explained. It is off until it
/// is set, and then costs the look at one word.
///
/// Threads: any thread may set it. It is called on the threads of the steps, some of them with the
///          locks of queues held: it must not send, post, subscribe or wait.
/// Failure: the hook throws nothing.
class TABASE_API TaMessageTrace
{
public:
    using Hook = void (*)(const SMessageTrace& trace) noexcept;

    /// Returns the former one; null turns it off.
    static Hook SetHook(Hook hook) noexcept;
    static bool IsOn() noexcept { return s_hook.load(std::memory_order_acquire) != nullptr; }

    /// `handler` is a name; it may be null.
    static void Report(SMessageTrace::EStep step, bool isSend, const TaMessage& message,
        SMessageSource source, const CString* handler) noexcept
    {
        if (IsOn()) {
            report(step, isSend, message, source, handler);
        }
    }

private:
    static void report(SMessageTrace::EStep step, bool isSend, const TaMessage& message,
        SMessageSource source, const CString* handler) noexcept;

    static std::atomic<Hook> s_hook;
};
