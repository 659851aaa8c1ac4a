#pragma once

#include <concepts>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace tamesh {

/// A piece of an HTML page as it grows. Markup comes from the sources of this program alone; all
/// else, which may be anybody's, goes through Text, which is the one place that escapes.
///
///     html.Mark("<td title=\"").Text(name).Mark("\">").Number(count).Mark("</td>");
///
/// Attributes stand in quotation marks.
class HtmlText
{
public:
    /// A literal, as it is.
    template <std::size_t kSize> HtmlText& Mark(const char (&markup)[kSize])
    {
        m_text.append(markup, kSize - 1);
        return *this;
    }
    /// For people to read, between tags or in an attribute: without control characters, cut where
    /// it is long. What is no UTF-8 becomes U+FFFD.
    HtmlText& Text(std::string_view text);
    template <std::integral T> HtmlText& Number(T number)
    {
        m_text += std::to_string(number);
        return *this;
    }
    /// With three decimals: for places in drawings.
    HtmlText& Place(double number);
    /// In the alphabet of RFC 4648, padded.
    HtmlText& Base64(std::span<const unsigned char> bytes);
    HtmlText& Add(const HtmlText& other);

    const std::string& Get() const { return m_text; }
    bool IsEmpty() const { return m_text.empty(); }

private:
    std::string m_text;
};

} // namespace tamesh
