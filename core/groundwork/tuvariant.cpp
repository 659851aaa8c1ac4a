#include "groundwork/tuvariant.h"

#include "groundwork/tuexceptions.h"
#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwriteasciistring.h"
#include "groundwork/tustreamwritebinary.h"
#include "groundwork/tutextnumber.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <system_error>

namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;

/// A number of any kind: integers as such, so that none is rounded.
using Number = std::variant<std::int64_t, double>;

bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// Decimal integers of up to 64 bits, and what the text reader takes as a double.
Number parseNumber(const CString& text)
{
    const std::string word = text.ToUtf8();
    const char* end = word.data() + word.size();
    // The standard parser takes neither blanks nor a plus, which TuParseDouble below does.
    const char* begin = std::find_if_not(word.data(), end, isBlank);
    if (end - begin > 1 && begin[0] == '+' && begin[1] != '-') {
        ++begin;
    }
    std::int64_t integer = 0;
    const auto [behind, failure] = std::from_chars(begin, end, integer);
    if (behind == end && failure == std::errc()) {
        return integer;
    }
    double real = 0;
    if (word.empty() || TuParseDouble(word, real) != word.size()) {
        throw TuException(TU_HERE, TuExceptionStream(TU_HERE, u"\"" + text + u"\" is no number"));
    }
    return real;
}

/// The nearest value of the target that exists.
template <class Integer> Integer clampTo(Number number)
{
    using Limits = std::numeric_limits<Integer>;
    if (const auto* integer = std::get_if<std::int64_t>(&number)) {
        return *integer < Limits::min() ? Limits::min()
            : *integer > Limits::max()  ? Limits::max()
                                        : static_cast<Integer>(*integer);
    }
    const double real = std::get<double>(number);
    if (std::isnan(real)) {
        return 0;
    }
    // The lower limit is a power of two, exact as a double; the upper one may not be.
    constexpr double kLowest = static_cast<double>(Limits::min());
    return real <= kLowest ? Limits::min()
        : real >= -kLowest ? Limits::max()
                           : static_cast<Integer>(real);
}

std::weak_ordering compareDoubles(double a, double b)
{
    if (std::isnan(a) || std::isnan(b)) {
        return std::isnan(a) <=> std::isnan(b);
    }
    return a < b ? std::weak_ordering::less
        : a > b  ? std::weak_ordering::greater
                 : std::weak_ordering::equivalent;
}

std::weak_ordering compareExactly(std::int64_t integer, double real)
{
    if (std::isnan(real) || real >= kTwoTo63) {
        return std::weak_ordering::less;
    }
    if (real < -kTwoTo63) {
        return std::weak_ordering::greater;
    }
    const auto whole = static_cast<std::int64_t>(real);
    if (integer != whole) {
        return integer <=> whole;
    }
    return compareDoubles(0.0, real - static_cast<double>(whole));
}

std::weak_ordering compareNumbers(const Number& a, const Number& b)
{
    const auto* integerA = std::get_if<std::int64_t>(&a);
    const auto* integerB = std::get_if<std::int64_t>(&b);
    if (integerA != nullptr && integerB != nullptr) {
        return *integerA <=> *integerB;
    }
    if (integerA != nullptr) {
        return compareExactly(*integerA, std::get<double>(b));
    }
    if (integerB != nullptr) {
        return 0 <=> compareExactly(*integerB, std::get<double>(a));
    }
    return compareDoubles(std::get<double>(a), std::get<double>(b));
}

} // namespace

TuVariant::TuVariant(CString text)
    : m_value(std::move(text))
{
}

TuVariant::TuVariant(CStringA text)
    : m_value(std::move(text))
{
}

TuVariant::TuVariant(const char16_t* text)
    : m_value(CString(text))
{
}

TuVariant::TuVariant(const wchar_t* text)
    : m_value(CString(text))
{
}

TuVariant::TuVariant(const char* text)
    : m_value(CStringA(text))
{
}

TuVariant TuVariant::FromPath(CString path)
{
    TuVariant variant;
    variant.m_value = SPath{ std::move(path) };
    return variant;
}

bool TuVariant::IsText() const
{
    return GetType() == eVT_NarrowText || GetType() == eVT_PathText || GetType() == eVT_WideText;
}

namespace {

/// The number that a value stands for; texts are not asked.
constexpr auto kToNumber = []<class Held>(const Held& value) -> Number {
    if constexpr (std::is_same_v<Held, double>) {
        return value;
    } else if constexpr (std::is_integral_v<Held>) {
        return std::int64_t{ value };
    } else {
        return std::int64_t{ 0 };
    }
};

} // namespace

bool TuVariant::ToBool() const
{
    if (IsText()) {
        const CString text = ToString();
        if (text == u"true" || text == u"false") {
            return text == u"true";
        }
    }
    const Number number = IsText() ? parseNumber(ToString()) : std::visit(kToNumber, m_value);
    return std::visit([](auto value) { return value != 0; }, number);
}

int TuVariant::ToInt() const
{
    return clampTo<int>(IsText() ? parseNumber(ToString()) : std::visit(kToNumber, m_value));
}

long long TuVariant::ToInt64() const
{
    return clampTo<long long>(IsText() ? parseNumber(ToString()) : std::visit(kToNumber, m_value));
}

double TuVariant::ToDouble() const
{
    const Number number = IsText() ? parseNumber(ToString()) : std::visit(kToNumber, m_value);
    return std::visit([](auto value) { return static_cast<double>(value); }, number);
}

CString TuVariant::ToString() const
{
    return std::visit(
        []<class Held>(const Held& value) -> CString {
            if constexpr (std::is_same_v<Held, std::monostate>) {
                return {};
            } else if constexpr (std::is_same_v<Held, CString>) {
                return value;
            } else if constexpr (std::is_same_v<Held, SPath>) {
                return value.text;
            } else if constexpr (std::is_same_v<Held, CStringA>) {
                return CString::FromCodePage(value.GetView());
            } else {
                TuStreamWriteASCIIStringT<CString> stream;
                stream << value;
                return stream.GetText();
            }
        },
        m_value);
}

std::weak_ordering operator<=>(const TuVariant& a, const TuVariant& b)
{
    // Null, numbers, texts: whole groups come one after the other, or the order would not be one
    // (5 < "a" by kind and "a" < 3.0 by kind would make 5 < 3.0).
    const auto group = [](const TuVariant& value) {
        return value.IsNull() ? 0 : value.IsText() ? 2 : 1;
    };
    if (group(a) != group(b)) {
        return group(a) <=> group(b);
    }
    if (a.IsNull()) {
        return std::weak_ordering::equivalent;
    }
    if (a.IsText()) {
        return a.ToString() <=> b.ToString();
    }
    return compareNumbers(std::visit(kToNumber, a.m_value), std::visit(kToNumber, b.m_value));
}

void TuVariant::Serialize(TuStreamWriteBinary& stream) const
{
    stream.WriteVersion(0);
    stream << static_cast<unsigned char>(GetType());
    std::visit(
        [&stream]<class Held>(const Held& value) {
            if constexpr (std::is_same_v<Held, SPath>) {
                stream << value.text;
            } else if constexpr (!std::is_same_v<Held, std::monostate>) {
                stream << value;
            }
        },
        m_value);
}

void TuVariant::Serialize(TuStreamReadBinary& stream)
{
    const auto read = [&stream]<class Plain>(Plain value) {
        stream >> value;
        return value;
    };
    stream.ReadAndCompareVersion(0);
    switch (read(static_cast<unsigned char>(0))) {
    case eVT_Null:
        SetNull();
        break;
    case eVT_Bool:
        m_value = read(false);
        break;
    case eVT_Int32:
        m_value = read(std::int32_t{ 0 });
        break;
    case eVT_Int64:
        m_value = read(std::int64_t{ 0 });
        break;
    case eVT_UInt32:
        m_value = read(std::uint32_t{ 0 });
        break;
    case eVT_NarrowText:
        m_value = read(CStringA());
        break;
    case eVT_PathText:
        m_value = SPath{ read(CString()) };
        break;
    case eVT_Double:
        m_value = read(0.0);
        break;
    case eVT_WideText:
        m_value = read(CString());
        break;
    default:
        throw TuExceptionWrongFileVersion(TU_HERE, u"a stored variant has an unknown kind");
    }
}

std::int64_t TuVariant::checkedInt64(unsigned long long value)
{
    if (value > static_cast<unsigned long long>(std::numeric_limits<std::int64_t>::max())) {
        throw TuExceptionPreconditionViolation(
            TU_HERE, u"an unsigned number in a variant is below 2^63");
    }
    return static_cast<std::int64_t>(value);
}
