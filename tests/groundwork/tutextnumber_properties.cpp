#include "groundwork/tutextnumber.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <numeric>
#include <string>
#include <vector>

namespace {

// The tests run in the C locale, where strtod is the model.
void expectAsStrtod(const std::string& word)
{
    char* end = nullptr;
    const double expected = std::strtod(word.c_str(), &end);
    double value = 42.0;
    ASSERT_EQ(TuParseDouble(word, value), static_cast<std::size_t>(end - word.c_str())) << word;
    const double wanted = end != word.c_str() ? expected : 42.0;
    EXPECT_EQ(std::signbit(value), std::signbit(wanted)) << word;
    EXPECT_TRUE(value == wanted || (std::isnan(value) && std::isnan(wanted)))
        << word << ": " << value << " instead of " << wanted;
}

/// Words that look like numbers: pieces of their syntax in any order, mostly a sensible one.
rc::Gen<std::string> numberLike()
{
    const auto digits = [](const char* alphabet) {
        return rc::gen::container<std::string>(rc::gen::elementOf(std::string(alphabet)));
    };
    const auto piece
        = rc::gen::oneOf(digits("0123456789"), digits("0"), digits("0123456789abcdefABCDEF"),
            rc::gen::element<std::string>(".", "e", "E", "p", "P", "-", "+", "e-", "e+3", "p-10",
                "0x", "0X", "inf", "InFinity", "nan", "NAN(", "a_1)", " ", "\v", "\t\n", "e308",
                "e-308", "e-324", "p1023", "p-1074", "p-1075", "e99999999999999999999", ","));
    return rc::gen::map(rc::gen::container<std::vector<std::string>>(piece),
        [](const std::vector<std::string>& pieces) {
            return std::accumulate(pieces.begin(), pieces.end(), std::string());
        });
}

RC_GTEST_PROP(TuTextNumberProperties, WordsParseAsInStrtod, ())
{
    for (int i = 0; i < 20; ++i) {
        expectAsStrtod(*numberLike());
    }
    RC_ASSERT(!testing::Test::HasFailure());
}

TEST(TuTextNumberProperties, HardDoublesParseAsInStrtod)
{
    for (const char* word : { "4.9e-324", "2.4703282292062327e-324", "2.4703282292062328e-324",
             "2.2250738585072011e-308", "2.2250738585072012e-308", "1.7976931348623158e308",
             "1.7976931348623159e308", "179769313486231580793e289", "1e309", "-1e400", "1e-400",
             "0e999999", "-0", "0x0p99999", "0x1p1024", "0x1.fffffffffffff7p1023",
             "0x1.fffffffffffff8p1023", "0x1p-1074", "0x1p-1075", "0x1.000001p-1075", "0x.8p-1073",
             "0x0.00000000000001p-1020", "0x1.00000000000008p0", "0x1.000000000000080000000001p0",
             "0x1.00000000000018p0", "0x123456789abcdef123456789p-200", "9007199254740993",
             "9007199254740992.99999999999999999999999999999999", "1.", ".5", ".e1", "0x.p1",
             "0x1p", "0x1p+", "0x1.8e5", "1e+", "1e5e5", "nan()", "-nan", "+inf", "infinit",
             "nan(a b)", "0x-1", "0x+1", "0xnan", "1_000", "\f\r-1", "- 1", "" }) {
        expectAsStrtod(word);
    }
    // Half-way cases with hundreds of digits, where a wrong last digit shows a rounding fault.
    const std::string half = "1.00000000000000011102230246251565404236316680908203125";
    expectAsStrtod(half);
    expectAsStrtod(half + std::string(800, '0') + "1");
    expectAsStrtod("0." + std::string(400, '0') + "1e401");
    expectAsStrtod("0x1" + std::string(400, '0') + "p-500"); // too large, for all its exponent
    expectAsStrtod("1" + std::string(400, '0') + "e-400");
    expectAsStrtod("0x1" + std::string(300, '0') + "p-1200");
    expectAsStrtod("0x0." + std::string(300, '0') + "1p1200");
}

/// The C library's functions of 64 bits are the model, narrowed to the limits of 32 bits.
template <class Signed, class Unsigned>
void expectSaturated(const std::string& digits, bool negative,
    std::size_t (*parseSigned)(std::string_view, Signed&),
    std::size_t (*parseUnsigned)(std::string_view, Unsigned&))
{
    const std::string word = (negative ? "-" : "") + digits;
    Signed isSigned = 0;
    Unsigned isUnsigned = 0;
    RC_ASSERT(parseSigned(word, isSigned) == word.size());
    RC_ASSERT(parseUnsigned(word, isUnsigned) == word.size());

    using Limits = std::numeric_limits<Signed>;
    const long long value = std::strtoll(word.c_str(), nullptr, 10);
    RC_ASSERT(isSigned == std::clamp<long long>(value, Limits::min(), Limits::max()));
    constexpr Unsigned kMost = std::numeric_limits<Unsigned>::max();
    const bool isTooLarge = std::strtoull(digits.c_str(), nullptr, 10) > kMost;
    const unsigned long long wrapped = std::strtoull(word.c_str(), nullptr, 10);
    RC_ASSERT(isUnsigned == (isTooLarge ? kMost : static_cast<Unsigned>(wrapped)));
}

RC_GTEST_PROP(TuTextNumberProperties, IntegersSaturateByMagnitude, (bool negative))
{
    const auto digits
        = *rc::gen::resize(25, rc::gen::container<std::string>(rc::gen::inRange('0', ':')));
    const std::string word = '1' + digits;
    expectSaturated<std::int32_t, std::uint32_t>(word, negative, TuParseLong, TuParseUnsignedLong);
    expectSaturated<std::int64_t, std::uint64_t>(
        word, negative, TuParseInteger64, TuParseUnsigned64);
}

} // namespace
