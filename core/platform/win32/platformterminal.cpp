#include "platform/platformterminal.h"

#include "platform/inputlines.h"
#include "platform/platformtext.h"
#include "platform/win32/platformwindows.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>

namespace platform {
namespace {

    HANDLE handleOf(EStandardStream stream)
    {
        return ::GetStdHandle(stream == eSS_Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
    }

    bool isConsole(HANDLE handle)
    {
        DWORD mode = 0;
        return ::GetConsoleMode(handle, &mode) != 0;
    }

    /// A console takes UTF-16: what bytes mean to it depends on a setting that it shares with other
    /// programs.
    bool writeConsole(HANDLE console, std::wstring_view text)
    {
        constexpr std::size_t kMostUnits = 8192; // older systems refuse more than 64 KB at once
        while (!text.empty()) {
            std::size_t units = std::min(text.size(), kMostUnits);
            if (units < text.size() && IS_HIGH_SURROGATE(text[units - 1])) {
                --units;
            }
            DWORD put = 0;
            if (!::WriteConsoleW(console, text.data(), static_cast<DWORD>(units), &put, nullptr)
                || put == 0) {
                return false;
            }
            text.remove_prefix(put);
        }
        return true;
    }

    bool writeBytes(HANDLE handle, std::string_view text)
    {
        constexpr std::size_t kMostBytes = 1 << 30;
        while (!text.empty()) {
            DWORD put = 0;
            const auto size = static_cast<DWORD>(std::min(text.size(), kMostBytes));
            if (!::WriteFile(handle, text.data(), size, &put, nullptr)) {
                return false;
            }
            if (put == 0) {
                // Whoever started the program may have made the pipe one that does not wait; there
                // is no way to wait until it has room.
                if (::GetFileType(handle) != FILE_TYPE_PIPE) {
                    return false;
                }
                ::Sleep(1);
            }
            text.remove_prefix(put);
        }
        return true;
    }

    /// 0 at the end, and where nothing can be read.
    std::size_t readInput(char* bytes, std::size_t size)
    {
        DWORD got = 0;
        const auto most = static_cast<DWORD>(size);
        return ::ReadFile(::GetStdHandle(STD_INPUT_HANDLE), bytes, most, &got, nullptr) ? got : 0;
    }

    /// A console hands out whole lines, with their ends. One that Ctrl-C has cut off is empty.
    bool readConsoleLine(HANDLE console, std::string& line)
    {
        std::wstring text;
        do {
            wchar_t piece[1024];
            DWORD got = 0;
            ::SetLastError(NO_ERROR);
            if (!::ReadConsoleW(console, piece, static_cast<DWORD>(std::size(piece)), &got, nullptr)
                || (got == 0 && ::GetLastError() != ERROR_OPERATION_ABORTED)) {
                return false;
            }
            if (got == 0) {
                text = L"\n";
            }
            text.append(piece, got);
        } while (!text.ends_with(L'\n'));
        text.erase(std::min(text.find_first_of(L"\r\n"), text.size()));
        if (text.starts_with(L'\x1A')) {
            return false; // Ctrl-Z, which ends the input there
        }
        line = ToUtf8(FromWide(text));
        return true;
    }

} // namespace

void SecureStandardStreams()
{
    for (const DWORD stream : { STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE }) {
        ::SetLastError(NO_ERROR);
        if (::GetFileType(::GetStdHandle(stream)) == FILE_TYPE_UNKNOWN
            && ::GetLastError() != NO_ERROR) {
            // The number of a handle that is not there may become that of the next file.
            ::SetStdHandle(stream, nullptr);
        }
    }
}

void SurviveFailingWrites() { } // they only fail here: the system knows no signals

bool IsTerminal(EStandardStream stream) { return isConsole(handleOf(stream)); }

unsigned int GetTerminalWidth(EStandardStream stream)
{
    constexpr unsigned int kUsualWidth = 80;
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    const bool known = ::GetConsoleScreenBufferInfo(handleOf(stream), &screen) != 0
        && screen.srWindow.Right >= screen.srWindow.Left;
    // What the user sees: the buffer may be wider.
    return known ? static_cast<unsigned int>(screen.srWindow.Right - screen.srWindow.Left) + 1
                 : kUsualWidth;
}

bool WriteStandard(EStandardStream stream, std::string_view text)
{
    const HANDLE handle = handleOf(stream);
    return isConsole(handle) ? writeConsole(handle, ToWide(FromUtf8(text)))
                             : writeBytes(handle, text);
}

bool IsInputTerminal() { return isConsole(::GetStdHandle(STD_INPUT_HANDLE)); }

bool ReadStandardLine(std::string& line)
{
    const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
    return isConsole(input) ? readConsoleLine(input, line) : TakeLine(line, readInput);
}

void WriteTrace(std::string_view text) { ::OutputDebugStringW(ToWide(FromUtf8(text)).c_str()); }

} // namespace platform
