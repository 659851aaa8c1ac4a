#include "tamesh/meshwords.h"

#include "tabase/tastreamreadasciistring.h"
#include "tamesh/meshfailure.h"

#include <charconv>
#include <cmath>
#include <string>
#include <system_error>

namespace tamesh {

namespace {

    constexpr std::string_view kBlanks = " \t\f\v\r";

    /// The parser of the standard library takes no plus sign.
    std::string_view withoutPlus(std::string_view word)
    {
        const bool plus = word.size() > 1 && word[0] == '+' && word[1] != '-';
        return word.substr(plus ? 1 : 0);
    }

    enum EParsed
    {
        eP_Number,
        eP_OutOfRange,
        eP_NoNumber,
    };

    template <class Number> EParsed parse(std::string_view word, Number& value)
    {
        const std::string_view digits = withoutPlus(word);
        const char* end = digits.data() + digits.size();
        const std::from_chars_result result = std::from_chars(digits.data(), end, value);
        if (result.ptr != end || result.ec == std::errc::invalid_argument) {
            return eP_NoNumber;
        }
        return result.ec == std::errc() ? eP_Number : eP_OutOfRange;
    }

    std::string notANumber(std::string_view what, std::string_view word)
    {
        return std::string(what) + " was expected, but " + Quote(word) + " is no number";
    }

    std::string notAnInteger(std::string_view what, std::string_view word)
    {
        double value = 0.0;
        return parse(word, value) == eP_NoNumber
            ? notANumber(what, word)
            : std::string(what) + " was expected, but " + Quote(word) + " is no whole number";
    }

} // namespace

std::string_view MeshWords::TakeWord()
{
    const std::string_view word = m_rest.substr(0, m_rest.find_first_of(kBlanks));
    m_rest.remove_prefix(word.size());
    skipBlanks();
    return word;
}

double MeshWords::TakeFinite(std::string_view what)
{
    const std::string_view word = TakeWord();
    if (word.empty()) {
        m_lines->Fail(std::string(what) + " is missing");
    }
    double value = 0.0;
    const EParsed parsed = parse(word, value);
    if (parsed == eP_NoNumber) {
        m_lines->Fail(notANumber(what, word));
    }
    if (parsed == eP_OutOfRange) {
        // Too large, or so small that it is zero: the library's reader knows which.
        const CStringA text(word);
        TaStreamReadASCIIString(text) >> value;
    }
    if (!std::isfinite(value)) {
        m_lines->Fail(std::string(what) + " is " + Quote(word) + ", which is not a finite number");
    }
    return value;
}

std::uint64_t MeshWords::TakeCount(std::string_view what)
{
    const std::string_view word = TakeWord();
    if (word.empty()) {
        m_lines->Fail(std::string(what) + " is missing");
    }
    std::uint64_t value = 0;
    switch (parse(word, value)) {
    case eP_Number:
        return value;
    case eP_OutOfRange:
        m_lines->Fail(std::string(what) + " is " + Quote(word) + ", which is too large");
    case eP_NoNumber:
        break;
    }
    std::int64_t negative = 0;
    if (parse(word, negative) == eP_Number) {
        m_lines->Fail(std::string(what) + " is " + Quote(word) + ", which is negative");
    }
    m_lines->Fail(notAnInteger(what, word));
}

SPoint MeshWords::TakePoint()
{
    SPoint point;
    point.x = TakeFinite("the x coordinate");
    point.y = TakeFinite("the y coordinate");
    point.z = TakeFinite("the z coordinate");
    return point;
}

void MeshWords::SkipNumbers()
{
    while (!IsAtEnd()) {
        const std::string_view word = TakeWord();
        double value = 0.0;
        if (parse(word, value) == eP_NoNumber) {
            m_lines->Fail(notANumber("a number", word));
        }
    }
}

std::int64_t MeshWords::ParseInteger(std::string_view word, std::string_view what) const
{
    std::int64_t value = 0;
    switch (parse(word, value)) {
    case eP_Number:
        return value;
    case eP_OutOfRange:
        m_lines->Fail(std::string(what) + " is " + Quote(word) + ", which is out of range");
    case eP_NoNumber:
        break;
    }
    m_lines->Fail(notAnInteger(what, word));
}

void MeshWords::skipBlanks()
{
    const std::size_t begin = m_rest.find_first_not_of(kBlanks);
    m_rest.remove_prefix(begin == m_rest.npos ? m_rest.size() : begin);
}

} // namespace tamesh
