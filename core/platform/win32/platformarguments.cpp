#include "platform/platformarguments.h"

#include "platform/platformtext.h"
#include "platform/win32/platformwindows.h"

#include <shellapi.h>

#include <memory>

namespace platform {

std::vector<std::string> GetArguments(int, const char* const*)
{
    int count = 0;
    const std::unique_ptr<wchar_t*, decltype(&::LocalFree)> words(
        ::CommandLineToArgvW(::GetCommandLineW(), &count), ::LocalFree);
    std::vector<std::string> arguments;
    for (int i = 1; words != nullptr && i < count; ++i) {
        arguments.push_back(ToUtf8(FromWide(words.get()[i])));
    }
    return arguments;
}

} // namespace platform
