#pragma once

#include "tamesh/session/commandwords.h"
#include "tamesh/session/sessioncommand.h"

#include <string>
#include <string_view>
#include <vector>

namespace tamesh {

/// Makes a command of its words. `help`, and `--help` behind any command, become eCI_Help. Throws
/// CommandError.
SCommand ParseCommand(const SCommandWords& words);

/// All commands of a line.
std::vector<SCommand> ParseCommandLine(std::string_view line);

/// The names of all commands, in the order in which `help` shows them.
std::vector<std::string> GetCommandNames();

} // namespace tamesh
