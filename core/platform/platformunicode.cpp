#include "platform/platformtext.h"

#include <utf8.h>

#include <iterator>

namespace platform {
namespace {

    constexpr char32_t kReplacement = 0xFFFD;

    bool isHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
    bool isLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

    /// Takes one code point off the front of `text`; a lone surrogate is a replacement character.
    char32_t takeCodePoint(std::u16string_view& text)
    {
        const char32_t unit = text.front();
        text.remove_prefix(1);
        if (isHighSurrogate(unit) && !text.empty() && isLowSurrogate(text.front())) {
            const char32_t low = text.front();
            text.remove_prefix(1);
            return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
        }
        return isHighSurrogate(unit) || isLowSurrogate(unit) ? kReplacement : unit;
    }

    void appendCodePoint(std::u16string& text, char32_t codePoint)
    {
        if (codePoint < 0x10000) {
            text += static_cast<char16_t>(codePoint);
        } else {
            text += static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10));
            text += static_cast<char16_t>(0xDC00 + ((codePoint - 0x10000) & 0x3FF));
        }
    }

} // namespace

std::string ToUtf8(std::u16string_view text)
{
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        utf8::unchecked::append(takeCodePoint(text), std::back_inserter(result));
    }
    return result;
}

std::u16string FromUtf8(std::string_view text)
{
    std::string valid;
    if (!utf8::is_valid(text.begin(), text.end())) {
        utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(valid), kReplacement);
        text = valid;
    }
    std::u16string result;
    result.reserve(text.size());
    utf8::unchecked::utf8to16(text.begin(), text.end(), std::back_inserter(result));
    return result;
}

std::wstring ToWide(std::u16string_view text)
{
    if constexpr (sizeof(wchar_t) == sizeof(char16_t)) {
        return std::wstring(text.begin(), text.end());
    } else {
        std::wstring result;
        result.reserve(text.size());
        while (!text.empty()) {
            result += static_cast<wchar_t>(takeCodePoint(text));
        }
        return result;
    }
}

std::u16string FromWide(std::wstring_view text)
{
    if constexpr (sizeof(wchar_t) == sizeof(char16_t)) {
        return std::u16string(text.begin(), text.end());
    } else {
        std::u16string result;
        result.reserve(text.size());
        for (const wchar_t unit : text) {
            const auto codePoint = static_cast<char32_t>(unit);
            const bool valid = codePoint <= 0x10FFFF && !isHighSurrogate(codePoint)
                && !isLowSurrogate(codePoint);
            appendCodePoint(result, valid ? codePoint : kReplacement);
        }
        return result;
    }
}

} // namespace platform
