#include "tabase/tamessageloop.h"

#include "groundwork/tuevent.h"
#include "platform/platformwindow.h"

bool TaMessageLoop::Run() noexcept
{
    // A system that cannot give out a message may be able to in a moment.
    constexpr unsigned int kPauseMs = 10;
    constexpr unsigned int kMostFailures = 100;
    const TuEvent never(true);
    platform::SWindowMessage message;
    for (unsigned int failures = 0; failures < kMostFailures;) {
        switch (platform::WaitForMessage(message)) {
        case platform::eGM_Message:
            failures = 0;
            platform::DispatchToWindow(message);
            break;
        case platform::eGM_Quit:
            return true;
        default:
            ++failures;
            (void)never.Wait(kPauseMs);
            break;
        }
    }
    return false;
}

bool TaMessageLoop::WaitAndHandle() noexcept
{
    platform::SWindowMessage message;
    if (platform::WaitForMessage(message) != platform::eGM_Message) {
        return false;
    }
    platform::DispatchToWindow(message);
    return true;
}

bool TaMessageLoop::HandleWaiting() noexcept { return platform::HandleWaitingMessages(); }

int TaMessageLoop::GetDescriptor() noexcept { return platform::GetMessageDescriptor(); }
