#include "tamesh/session/script.h"

#include "tamesh/meshfailure.h"
#include "tamesh/session/commandwords.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

/// What is no script must be refused with a MeshFailure, and nothing else; and every text is a word
/// that can be written in a script.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace tamesh;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        for (const SScriptCommand& command : ParseScript(text, "script")) {
            if (command.line == 0 || command.command.text.empty()) {
                std::abort();
            }
        }
    } catch (const MeshFailure&) {
        // Refused as it should be.
    }
    const auto commands = SplitCommandLine(QuoteWord(text));
    if (commands.size() != 1 || commands[0].words.size() != 1 || commands[0].words[0] != text) {
        std::abort();
    }
    return 0;
}
