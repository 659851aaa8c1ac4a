#pragma once

#include "platform/platformapi.h"

#include <string>
#include <string_view>

/// Conversions between the encodings that meet at the border to the system. A malformed sequence
/// becomes U+FFFD; nothing is read past the end of the given text.
namespace platform {

PLATFORM_API std::string ToUtf8(std::u16string_view text);
PLATFORM_API std::u16string FromUtf8(std::string_view text);

/// `wchar_t` holds UTF-16 on Windows and UTF-32 on Linux.
PLATFORM_API std::wstring ToWide(std::u16string_view text);
PLATFORM_API std::u16string FromWide(std::wstring_view text);

/// The system code page: UTF-8 on Linux, the active code page on Windows. What it cannot hold is
/// replaced as the system does it.
PLATFORM_API std::string ToCodePage(std::u16string_view text);
PLATFORM_API std::u16string FromCodePage(std::string_view text);

} // namespace platform
