#pragma once

#include "groundwork/tuevent.h"
#include "tamesh/console.h"
#include "tamesh/exitcode.h"
#include "tamesh/session/linesource.h"
#include "tamesh/settings.h"

#include <string>

namespace tamesh {

class SessionTree;

/// Opens the file, where there is one, and carries out what the user types. What goes wrong is
/// said, and the next line is read. An interrupt breaks all that is under way; then the shell goes
/// on, and clears `interrupt`, which is the console's. Returns how the last command ended.
EExitCode RunShell(IConsole& console, TuEvent& interrupt, Settings& settings,
    const std::string& file, ILineSource* lines = nullptr);

/// What may stand in the place of the last word of a line: commands, meshes, files.
std::vector<std::string> CompleteLine(const SessionTree& tree, const std::string& line);

} // namespace tamesh
