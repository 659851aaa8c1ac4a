#include "groundwork/tustreamwriteasciistring.h"
#include "tabase/tastreamreadasciistring.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <cmath>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

namespace {

using Value = std::variant<bool, signed char, unsigned char, short, unsigned short, int,
    unsigned int, long long, unsigned long long, float, double, CStringA, CString>;

template <class T> T anyBits()
{
    if constexpr (std::is_same_v<T, float>) {
        return std::bit_cast<float>(*rc::gen::arbitrary<std::uint32_t>());
    } else if constexpr (std::is_same_v<T, double>) {
        return std::bit_cast<double>(*rc::gen::arbitrary<std::uint64_t>());
    } else if constexpr (std::is_same_v<T, CStringA>) {
        auto text = *rc::gen::string<std::string>();
        std::erase_if(text, [](char c) { return c == '\0' || c == '\r' || c == '\n'; });
        return CStringA(text);
    } else if constexpr (std::is_same_v<T, CString>) {
        // Characters of all lengths in the code page, none of them half a surrogate pair.
        const auto units = *rc::gen::container<std::u16string>(
            rc::gen::oneOf(rc::gen::inRange(u' ', u'\x7F'), rc::gen::inRange(u'\x80', u'\xD800')));
        return CString(units) + u"\U0001F600";
    } else if constexpr (std::is_same_v<T, bool>) {
        return *rc::gen::arbitrary<bool>();
    } else {
        return static_cast<T>(*rc::gen::arbitrary<long long>());
    }
}

template <std::size_t Index = 0> Value anyValueOf(std::size_t index)
{
    if constexpr (Index + 1 < std::variant_size_v<Value>) {
        if (index != Index) {
            return anyValueOf<Index + 1>(index);
        }
    }
    return Value(std::in_place_index<Index>, anyBits<std::variant_alternative_t<Index, Value>>());
}

template <class T> bool isSame(const T& a, const T& b)
{
    if constexpr (std::is_floating_point_v<T>) {
        return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
    } else {
        return a == b;
    }
}

RC_GTEST_PROP(TaStreamASCIIProperties, WhatASeparatedStreamWritesIsReadBack, ())
{
    const auto kinds = *rc::gen::container<std::vector<std::size_t>>(
        rc::gen::inRange<std::size_t>(0, std::variant_size_v<Value>));
    std::vector<Value> values;
    TuStreamWriteASCIIStringT<CStringA> writer(true);
    for (const std::size_t kind : kinds) {
        values.push_back(anyValueOf(kind));
        std::visit([&](const auto& value) { writer << value; }, values.back());
    }
    TaStreamReadASCIIString reader(writer.GetText());
    for (const Value& expected : values) {
        std::visit(
            [&]<class T>(const T& value) {
                T read{};
                reader >> read;
                RC_ASSERT(isSame(read, value));
            },
            expected);
    }
}

} // namespace
