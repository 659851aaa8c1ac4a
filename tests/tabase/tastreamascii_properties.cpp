#include "groundwork/tustreamwriteasciistring.h"
#include "tabase/tastreamreadasciistring.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <cmath>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

namespace {

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

template <class T> bool isSame(const T& a, const T& b)
{
    if constexpr (std::is_floating_point_v<T>) {
        return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
    } else {
        return a == b;
    }
}

using Writer = TuStreamWriteASCIIStringT<CStringA>;
using Check = std::function<void(TuStreamRead&)>;

/// Writes a value and returns how to read it back.
template <class T> Check writeAny(Writer& writer)
{
    const T value = anyBits<T>();
    writer << value;
    return [value](TuStreamRead& reader) {
        T read{};
        reader >> read;
        RC_ASSERT(isSame(read, value));
    };
}

RC_GTEST_PROP(TaStreamASCIIProperties, WhatASeparatedStreamWritesIsReadBack, ())
{
    using WriteAny = Check (*)(Writer&);
    const auto kinds = *rc::gen::container<std::vector<WriteAny>>(
        rc::gen::element<WriteAny>(writeAny<bool>, writeAny<signed char>, writeAny<unsigned char>,
            writeAny<short>, writeAny<unsigned short>, writeAny<int>, writeAny<unsigned int>,
            writeAny<long long>, writeAny<unsigned long long>, writeAny<float>, writeAny<double>,
            writeAny<CStringA>, writeAny<CString>));
    std::vector<Check> checks;
    Writer writer(true);
    for (const WriteAny kind : kinds) {
        checks.push_back(kind(writer));
    }
    TaStreamReadASCIIString reader(writer.GetText());
    for (const Check& check : checks) {
        check(reader);
    }
}

} // namespace
