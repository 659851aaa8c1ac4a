#include "platform/platformterminal.h"
#include "tamesh/session/linesource.h"

namespace tamesh {

std::optional<std::string> PlainLines::ReadLine(const std::string& prompt)
{
    if (platform::IsInputTerminal()) {
        platform::WriteStandard(platform::eSS_Error, prompt);
    }
    std::string line;
    return platform::ReadStandardLine(line) ? std::optional(std::move(line)) : std::nullopt;
}

} // namespace tamesh
