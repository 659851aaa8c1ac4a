#pragma once

#include "tamesh/console.h"
#include "tamesh/exitcode.h"

#include <string>

namespace tamesh {

/// Shows a document in a page for browsers; see MakeReport. As the other commands, it throws
/// nothing.
EExitCode ReportDocument(
    IConsole& console, const std::string& documentFile, const std::string& pageFile);

} // namespace tamesh
