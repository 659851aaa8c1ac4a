#include "platform/platformerror.h"

#include "platform/platformtext.h"
#include "platform/win32/platformwindows.h"

namespace platform {

SSystemError GetLastSystemError()
{
    const DWORD number = ::GetLastError();
    // The longest message of the system is far below this; a longer one would be left out. Without
    // inserts: a message that has some would read what nobody has passed.
    wchar_t text[2048];
    DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS
            | FORMAT_MESSAGE_MAX_WIDTH_MASK, // no line breaks
        nullptr, number, 0, text, static_cast<DWORD>(std::size(text)), nullptr);
    while (length > 0
        && (text[length - 1] == L' ' || text[length - 1] == L'\r' || text[length - 1] == L'\n')) {
        --length;
    }
    ::SetLastError(number); // what looks for a message may fail on its own
    return { number, FromWide({ text, length }) };
}

void SetLastSystemError(unsigned int number) { ::SetLastError(number); }

} // namespace platform
