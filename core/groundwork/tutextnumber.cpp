#include "groundwork/tutextnumber.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace {

bool startsWith(std::string_view text, std::string_view lowerCase)
{
    const auto toLower = [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    };
    return text.size() >= lowerCase.size()
        && std::equal(lowerCase.begin(), lowerCase.end(), text.begin(),
            [&](char wanted, char letter) { return wanted == toLower(letter); });
}

/// A word without the white space and the sign in front of its digits.
struct SUnsigned
{
    std::string_view text;
    bool negative = false;

    explicit SUnsigned(std::string_view word)
        : text(word)
    {
        while (!text.empty() && (text[0] == ' ' || (text[0] >= '\t' && text[0] <= '\r'))) {
            text.remove_prefix(1);
        }
        if (!text.empty() && (text[0] == '-' || text[0] == '+')) {
            negative = text[0] == '-';
            text.remove_prefix(1);
        }
    }
};

template <class Magnitude> struct SDigits
{
    std::size_t length; // 0 where there is no digit
    bool fits;
    Magnitude magnitude = 0;

    SDigits(std::string_view text, int base)
    {
        const char* begin = text.data();
        const auto [end, failure] = std::from_chars(begin, begin + text.size(), magnitude, base);
        length = static_cast<std::size_t>(end - begin);
        fits = failure != std::errc::result_out_of_range;
    }
};

template <class Signed, class Magnitude>
Signed toSigned(const SDigits<Magnitude>& digits, bool negative)
{
    constexpr Signed kLargest = std::numeric_limits<Signed>::max();
    const bool fits = digits.fits && digits.magnitude <= static_cast<Magnitude>(kLargest);
    if (!negative) {
        return fits ? static_cast<Signed>(digits.magnitude) : kLargest;
    }
    return fits ? static_cast<Signed>(-static_cast<Signed>(digits.magnitude))
                : std::numeric_limits<Signed>::min();
}

template <class Unsigned> std::size_t parseUnsigned(std::string_view word, Unsigned& value)
{
    const SUnsigned number(word);
    const SDigits<Unsigned> digits(number.text, 10);
    if (digits.length == 0) {
        return 0;
    }
    if (!digits.fits) {
        value = std::numeric_limits<Unsigned>::max();
    } else {
        value = number.negative ? static_cast<Unsigned>(0 - digits.magnitude) : digits.magnitude;
    }
    return word.size() - number.text.size() + digits.length;
}

/// Whether a number that from_chars finds out of range is too large; else it is too small. The
/// place of its first digit that is not 0 tells.
bool isTooLarge(std::string_view number, bool hexadecimal)
{
    const std::string_view digits
        = number.substr(0, number.find_first_of(hexadecimal ? "pP" : "eE"));
    const auto point = static_cast<std::int64_t>(std::min(digits.find('.'), digits.size()));
    const auto first = static_cast<std::int64_t>(digits.find_first_not_of("0."));
    std::int64_t exponent = 0;
    if (digits.size() < number.size()) {
        const SUnsigned written(number.substr(digits.size() + 1));
        // Cut to 32 bits, so that the sum below cannot overflow.
        exponent
            = toSigned<std::int32_t>(SDigits<std::uint32_t>(written.text, 10), written.negative);
    }
    return (point - first) * (hexadecimal ? 4 : 1) + exponent > 0;
}

/// The number without sign and `0x` at the front of `text`, or a length of 0.
std::size_t parseFinite(std::string_view text, bool hexadecimal, double& value)
{
    const char* begin = text.data();
    const auto format = hexadecimal ? std::chars_format::hex : std::chars_format::general;
    const auto [end, failure] = std::from_chars(begin, begin + text.size(), value, format);
    if (failure == std::errc::invalid_argument) {
        return 0;
    }
    const auto length = static_cast<std::size_t>(end - begin);
    if (failure == std::errc::result_out_of_range) {
        value = isTooLarge(text.substr(0, length), hexadecimal)
            ? std::numeric_limits<double>::infinity()
            : 0.0;
    }
    return length;
}

/// `nan`, or `nan(letters, digits and underscores)`.
std::size_t lengthOfNan(std::string_view text)
{
    constexpr std::size_t kWord = 3;
    if (text.size() > kWord && text[kWord] == '(') {
        const std::size_t end = text.find_first_not_of(
            "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz", kWord + 1);
        if (end != text.npos && text[end] == ')') {
            return end + 1;
        }
    }
    return kWord;
}

/// Rules out what from_chars would take and strtod does not: a second sign, or a word.
bool isHexadecimalStart(std::string_view text)
{
    return text.find_first_of("0123456789ABCDEFabcdef.") == 0;
}

/// A number of any kind without its sign.
std::size_t parseMagnitude(std::string_view text, double& value)
{
    if (text.empty()) {
        return 0;
    }
    if ((text[0] >= '0' && text[0] <= '9') || text[0] == '.') {
        if (startsWith(text, "0x") && isHexadecimalStart(text.substr(2))) {
            const std::size_t length = parseFinite(text.substr(2), true, value);
            if (length != 0) {
                return length + 2;
            }
        }
        return parseFinite(text, false, value);
    }
    if (startsWith(text, "inf")) {
        value = std::numeric_limits<double>::infinity();
        constexpr std::string_view kLong = "infinity";
        return startsWith(text, kLong) ? kLong.size() : 3;
    }
    if (startsWith(text, "nan")) {
        value = std::numeric_limits<double>::quiet_NaN();
        return lengthOfNan(text);
    }
    return 0;
}

} // namespace

std::size_t TuParseLong(std::string_view word, std::int32_t& value)
{
    const SUnsigned number(word);
    const SDigits<std::uint32_t> digits(number.text, 10);
    if (digits.length == 0) {
        return 0;
    }
    value = toSigned<std::int32_t>(digits, number.negative);
    return word.size() - number.text.size() + digits.length;
}

std::size_t TuParseUnsignedLong(std::string_view word, std::uint32_t& value)
{
    return parseUnsigned(word, value);
}

std::size_t TuParseInteger64(std::string_view word, std::int64_t& value)
{
    const SUnsigned number(word);
    std::string_view text = number.text;
    int base = 10;
    if (startsWith(text, "0x")) {
        base = 16;
        text.remove_prefix(2);
    } else if (startsWith(text, "0")) {
        base = 8;
    }
    const SDigits<std::uint64_t> digits(text, base);
    if (digits.length == 0 && base == 10) {
        return 0;
    }
    value = toSigned<std::int64_t>(digits, number.negative);
    return word.size() - text.size() + digits.length;
}

std::size_t TuParseUnsigned64(std::string_view word, std::uint64_t& value)
{
    return parseUnsigned(word, value);
}

std::size_t TuParseDouble(std::string_view word, double& value)
{
    const SUnsigned number(word);
    double magnitude = 0.0;
    const std::size_t length = parseMagnitude(number.text, magnitude);
    if (length == 0) {
        return 0;
    }
    value = number.negative ? -magnitude : magnitude;
    return word.size() - number.text.size() + length;
}
