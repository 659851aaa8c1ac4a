#include "platform/platformarguments.h"

namespace platform {

std::vector<std::string> GetArguments(int count, const char* const* words)
{
    return count > 1 ? std::vector<std::string>(words + 1, words + count)
                     : std::vector<std::string>();
}

} // namespace platform
