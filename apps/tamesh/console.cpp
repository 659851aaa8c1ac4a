#include "tamesh/console.h"

#include "platform/platformterminal.h"
#include "tamesh/exitcode.h"

#include <chrono>
#include <cstdlib>

namespace tamesh {

bool StandardConsole::WriteOutput(std::string_view text)
{
    return platform::WriteStandard(platform::eSS_Output, text);
}

void StandardConsole::WriteError(std::string_view text)
{
    platform::WriteStandard(platform::eSS_Error, text);
}

bool StandardConsole::IsErrorTerminal() const { return platform::IsTerminal(platform::eSS_Error); }

unsigned int StandardConsole::GetErrorWidth() const
{
    return platform::GetTerminalWidth(platform::eSS_Error);
}

std::uint64_t StandardConsole::GetMilliseconds() const
{
    using namespace std::chrono;
    return static_cast<std::uint64_t>(
        duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

void StandardConsole::Interrupt()
{
    constexpr std::uint64_t kImpatience = 1000; // in milliseconds
    const std::uint64_t now = GetMilliseconds();
    if (!m_interrupt.IsSet()) {
        m_interruptTime = now;
        m_interrupt.Set();
    } else if (now - m_interruptTime >= kImpatience) {
        std::_Exit(eEC_Interrupted);
    }
}

} // namespace tamesh
