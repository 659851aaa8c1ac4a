#pragma once

#include <bit>
#include <cstddef>
#include <cstring>
#include <type_traits>

/// The stored form of a number: little-endian, floats by their bits. Host and stored form are the
/// same on most processors, where these are plain copies.

template <class T> inline void TuReverseBytes(unsigned char* bytes)
{
    for (std::size_t i = 0; i < sizeof(T) / 2; ++i) {
        const unsigned char low = bytes[i];
        bytes[i] = bytes[sizeof(T) - 1 - i];
        bytes[sizeof(T) - 1 - i] = low;
    }
}

/// Writes sizeof(T) bytes.
template <class T> inline void TuStoreLittleEndian(unsigned char* bytes, T value)
{
    static_assert(std::is_arithmetic_v<T>);
    std::memcpy(bytes, &value, sizeof(T));
    if constexpr (std::endian::native == std::endian::big) {
        TuReverseBytes<T>(bytes);
    }
}

/// Reads sizeof(T) bytes.
template <class T> inline T TuLoadLittleEndian(const unsigned char* bytes)
{
    static_assert(std::is_arithmetic_v<T>);
    T value;
    if constexpr (std::endian::native == std::endian::big) {
        unsigned char reversed[sizeof(T)];
        std::memcpy(reversed, bytes, sizeof(T));
        TuReverseBytes<T>(reversed);
        bytes = reversed;
        std::memcpy(&value, bytes, sizeof(T));
    } else {
        std::memcpy(&value, bytes, sizeof(T));
    }
    return value;
}
