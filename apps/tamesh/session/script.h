#pragma once

#include "tamesh/exitcode.h"
#include "tamesh/session/sessioncommand.h"
#include "tamesh/settings.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tamesh {

/// A command of a script.
struct SScriptCommand
{
    std::uint64_t line = 0; // counts from 1
    SCommand command;
};

/// The commands of a script, of which a line holds any number. Throws MeshFailure for the first
/// line that is wrong; `name` is that of the file.
std::vector<SScriptCommand> ParseScript(std::string_view text, const std::string& name);

/// What `tamesh run` does.
struct SRunOptions
{
    std::string file; // a mesh or a document
    std::string script;
    bool isKeptGoing = false; // behind a command that fails
};

/// Opens the file, and carries out the commands of the script, once all of it is understood. What
/// fails ends it, unless it is to go on: commands in the background still come to their end, and
/// the exit code tells. An interrupt breaks all that is under way, and ends it.
EExitCode RunScript(IConsole& console, Settings& settings, const SRunOptions& options);

} // namespace tamesh
