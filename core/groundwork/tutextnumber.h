#pragma once

#include "groundwork/groundworkapi.h"

#include <cstdint>
#include <string_view>

/// The C library's number parsers as the text reader needs them: the same on every system and in
/// every locale. `long` has 32 bits here.
///
/// Each takes the longest number at the front of `word` and returns how many characters it is long,
/// white space and sign included; 0, and `value` unchanged, where there is none. As in C, white
/// space before the number is skipped, which within a word can be a vertical tab or a form feed.

/// strtol in base 10: what is too large becomes the largest, or smallest, value.
GROUNDWORK_API std::size_t TuParseLong(std::string_view word, std::int32_t& value);
/// strtoul in base 10: what is too large becomes the largest value, whatever its sign; a minus in
/// front of anything else wraps.
GROUNDWORK_API std::size_t TuParseUnsignedLong(std::string_view word, std::uint32_t& value);

/// As strtol in 64 bits, where `0x` makes the number hexadecimal and a leading 0 octal; `0x`
/// without a digit is 0.
GROUNDWORK_API std::size_t TuParseInteger64(std::string_view word, std::int64_t& value);
/// As strtoul in 64 bits, base 10.
GROUNDWORK_API std::size_t TuParseUnsigned64(std::string_view word, std::uint64_t& value);

/// strtod in the C locale: decimal and hexadecimal numbers, infinity, not-a-number. Too large is an
/// infinity, too small a denormal number or zero.
GROUNDWORK_API std::size_t TuParseDouble(std::string_view word, double& value);
