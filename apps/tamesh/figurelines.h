#pragma once

#include "groundwork/tustreamwriteasciistring.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string>
#include <string_view>

namespace tamesh {

/// `digits` significant digits, or as many as tell the number from all others where it is 0.
inline CStringA FormatNumber(double value, int digits)
{
    char text[32]; // the longest has 17 digits, a sign, a point and an exponent
    const auto result = digits == 0 ? std::to_chars(std::begin(text), std::end(text), value)
                                    : std::to_chars(std::begin(text), std::end(text), value,
                                        std::chars_format::general, digits);
    return CStringA(text, static_cast<std::size_t>(result.ptr - text));
}

/// Results as a line per figure, in a form that scripts can rely on: two blanks, the name, the
/// values.
class FigureLines
{
public:
    template <class... Values> void Add(std::string_view name, const Values&... values)
    {
        constexpr std::size_t kNameWidth = 22;
        std::string start = "  " + std::string(name);
        start.resize(std::max(kNameWidth, start.size()), ' ');
        m_text << CStringA(start);
        ((m_text << " " << values), ...);
        m_text << "\n";
    }
    std::string GetText() const { return std::string(m_text.GetText().GetView()); }

private:
    TuStreamWriteASCIIStringT<CStringA> m_text;
};

} // namespace tamesh
