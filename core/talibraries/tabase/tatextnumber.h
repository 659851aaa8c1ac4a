#pragma once

#include "tabase/tabaseapi.h"

#include <cstdint>
#include <string_view>

/// The C library's number parsers as the text reader needs them: the same on every system and in
/// every locale. `long` has 32 bits here.
///
/// Each takes the longest number at the front of `word` and returns how many characters it is long,
/// white space and sign included; 0, and `value` unchanged, where there is none. As in C, white
/// space before the number is skipped, which within a word can be a vertical tab or a form feed.

/// strtol in base 10: what is too large becomes the largest, or smallest, value.
TABASE_API std::size_t TaParseLong(std::string_view word, std::int32_t& value);
/// strtoul in base 10: what is too large becomes the largest value, whatever its sign; a minus in
/// front of anything else wraps.
TABASE_API std::size_t TaParseUnsignedLong(std::string_view word, std::uint32_t& value);

/// As strtol in 64 bits, where `0x` makes the number hexadecimal and a leading 0 octal; `0x`
/// without a digit is 0.
TABASE_API std::size_t TaParseInteger64(std::string_view word, std::int64_t& value);
/// As strtoul in 64 bits, base 10.
TABASE_API std::size_t TaParseUnsigned64(std::string_view word, std::uint64_t& value);

/// strtod in the C locale: decimal and hexadecimal numbers, infinity, not-a-number. Too large is an
/// infinity, too small a denormal number or zero.
TABASE_API std::size_t TaParseDouble(std::string_view word, double& value);
