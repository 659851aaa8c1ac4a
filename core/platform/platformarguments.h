#pragma once

#include "platform/platformapi.h"

#include <string>
#include <vector>

namespace platform {

/// The words of the command line after the program's name, in UTF-8, from what main() was given. On
/// Windows they are asked of the system instead: main() gets them in a code page, which may lack
/// characters of a file's name.
PLATFORM_API std::vector<std::string> GetArguments(int count, const char* const* words);

} // namespace platform
