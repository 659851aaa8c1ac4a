#pragma once

#include "tamesh/console.h"
#include "tamesh/exitcode.h"
#include "tamesh/optionstext.h"

#include <string>

namespace tamesh {

// The store of persistent options, whoever has written them. Keys, names and values are UTF-8.
//
// Failure: none is thrown; what cannot be done is reported on the console, and makes the exit code
//          1.

/// Below which key the program and the library keep theirs.
constexpr const char* kOptionsKey = "Software\\TaBase";

/// Shows all values of a key and of those below it.
EExitCode ListOptions(IConsole& console, platform::ERegistryRoot root, const std::string& key);
/// Shows one value.
EExitCode GetOption(IConsole& console, platform::ERegistryRoot root, const std::string& key,
    const std::string& name);
EExitCode SetOption(IConsole& console, platform::ERegistryRoot root, const std::string& key,
    const platform::SRegistryValue& value);
/// Removes a key with all that is below it.
EExitCode RemoveOptions(IConsole& console, platform::ERegistryRoot root, const std::string& key);
/// Saves all values of a key and of those below it, in a form that ImportOptions takes.
EExitCode ExportOptions(IConsole& console, platform::ERegistryRoot root, const std::string& key,
    const std::string& fileName);
/// Writes what was exported, when the whole file has been understood.
EExitCode ImportOptions(IConsole& console, const std::string& fileName);

} // namespace tamesh
