#include "tamesh/displaytext.h"

#include "groundwork/cstring.h"

#include <filesystem>

namespace tamesh {

namespace {

    bool isContinuation(char unit) { return (static_cast<unsigned char>(unit) & 0xC0) == 0x80; }

    /// Some terminals also obey U+0080 to U+009F.
    bool isLongControl(std::string_view rest)
    {
        return rest.size() > 1 && rest[0] == '\xC2' && static_cast<unsigned char>(rest[1]) >= 0x80
            && static_cast<unsigned char>(rest[1]) < 0xA0;
    }

} // namespace

std::string_view CutText(std::string_view text, std::size_t bytes)
{
    if (bytes < text.size()) {
        while (bytes > 0 && isContinuation(text[bytes])) {
            --bytes;
        }
    }
    return text.substr(0, bytes);
}

std::string MakeDisplayText(std::string_view text)
{
    constexpr std::size_t kLongest = 300;
    const std::string_view start = CutText(text, kLongest);
    std::string shown;
    for (std::size_t i = 0; i < start.size(); ++i) {
        const auto unit = static_cast<unsigned char>(start[i]);
        const bool longControl = isLongControl(start.substr(i));
        shown += unit < 0x20 || unit == 0x7F || longControl ? '?' : start[i];
        i += longControl ? 1 : 0;
    }
    return start.size() < text.size() ? shown + "..." : shown;
}

std::string MakeDisplayName(std::string_view path)
{
    const std::filesystem::path name
        = std::filesystem::path(CString::FromUtf8(path).GetView()).filename();
    return MakeDisplayText(CString(name.u16string()).ToUtf8());
}

} // namespace tamesh
