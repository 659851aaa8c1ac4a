#pragma once

#include "tamesh/console.h"
#include "tamesh/exitcode.h"

#include <string>
#include <vector>

namespace tamesh {

// What is done with documents that may be damaged. As the other commands, they throw nothing.

/// Goes over whole documents, and shows of each what has written it, its chunks, what is wrong with
/// them, and the verdict. The exit code is 1 where one is damaged, or holds what this program
/// cannot read.
EExitCode CheckDocuments(IConsole& console, const std::vector<std::string>& documentFiles);

/// Makes a new document of all parts of a damaged one that are not, and shows what becomes of each;
/// one of an old version is converted. The exit code is 1 where a part is lost. Where no part is
/// left, nothing is written.
EExitCode SalvageDocument(
    IConsole& console, const std::string& documentFile, const std::string& newFile);

} // namespace tamesh
