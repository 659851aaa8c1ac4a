#include "platform/platformtext.h"

#include "platform/win32/platformwindows.h"

#include <limits>
#include <stdexcept>

namespace platform {
namespace {

    /// The conversions of the system count in `int`.
    int checkedLength(std::size_t length)
    {
        if (length > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
            throw std::length_error("the text is too long for the system's code page");
        }
        return static_cast<int>(length);
    }

} // namespace

std::string ToCodePage(std::u16string_view text)
{
    if (::GetACP() == CP_UTF8) {
        return ToUtf8(text); // malformed text is then the same as everywhere
    }
    const std::wstring wide = ToWide(text);
    const int units = checkedLength(wide.size());
    const auto convert = [&](char* bytes, int size) {
        return ::WideCharToMultiByte(CP_ACP, 0, wide.data(), units, bytes, size, nullptr, nullptr);
    };
    std::string result(static_cast<std::size_t>(convert(nullptr, 0)), '\0');
    convert(result.data(), checkedLength(result.size()));
    return result;
}

std::u16string FromCodePage(std::string_view text)
{
    if (::GetACP() == CP_UTF8) {
        return FromUtf8(text);
    }
    const int bytes = checkedLength(text.size());
    const auto convert = [&](wchar_t* units, int size) {
        return ::MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, units, size);
    };
    std::wstring result(static_cast<std::size_t>(convert(nullptr, 0)), L'\0');
    convert(result.data(), checkedLength(result.size()));
    return FromWide(result);
}

} // namespace platform
