#include "tamesh/htmltext.h"

#include "groundwork/cstring.h"
#include "tamesh/displaytext.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>

namespace tamesh {

HtmlText& HtmlText::Text(std::string_view text)
{
    constexpr std::size_t kEnough = 1000; // more than is shown
    const std::string valid = CString::FromUtf8(CutText(text, kEnough)).ToUtf8();
    for (const char unit : MakeDisplayText(valid)) {
        switch (unit) {
        case '&':
            m_text += "&amp;";
            break;
        case '<':
            m_text += "&lt;";
            break;
        case '>':
            m_text += "&gt;";
            break;
        case '"':
            m_text += "&quot;";
            break;
        case '\'':
            m_text += "&#39;";
            break;
        default:
            m_text += unit;
        }
    }
    return *this;
}

HtmlText& HtmlText::Place(double number)
{
    std::array<char, 512> text{}; // the largest double has 309 digits before the point
    const auto end = std::to_chars(
        text.data(), text.data() + text.size(), number, std::chars_format::fixed, 3);
    m_text.append(text.data(), end.ptr);
    return *this;
}

HtmlText& HtmlText::Base64(std::span<const unsigned char> bytes)
{
    constexpr std::string_view kDigits
        = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    m_text.reserve(m_text.size() + (bytes.size() + 2) / 3 * 4);
    for (; !bytes.empty(); bytes = bytes.subspan(std::min<std::size_t>(3, bytes.size()))) {
        std::uint32_t word = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            word = word << 8 | (i < bytes.size() ? bytes[i] : 0u);
        }
        for (std::size_t i = 0; i < 4; ++i) {
            m_text += i <= bytes.size() ? kDigits[word >> (18 - 6 * i) & 0x3F] : '=';
        }
    }
    return *this;
}

HtmlText& HtmlText::Add(const HtmlText& other)
{
    m_text += other.m_text;
    return *this;
}

} // namespace tamesh
