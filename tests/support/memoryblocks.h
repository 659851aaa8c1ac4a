#pragma once

#include "support/testrandom.h"

#include <cstddef>
#include <string>

/// What tests of codecs of memory blocks share: a text stands for the bytes of a block.

inline const unsigned char* DataOf(const std::string& block)
{
    return reinterpret_cast<const unsigned char*>(block.data());
}

inline unsigned long LengthOf(const std::string& block)
{
    return static_cast<unsigned long>(block.size());
}

template <class Coder> std::string OutputOf(const Coder& coder)
{
    return { reinterpret_cast<const char*>(coder.GetOutputBuffer()), coder.GetOutputSize() };
}

/// Bytes that no coder makes fewer.
inline std::string MakeNoise(std::size_t size)
{
    auto random = MakeTestRandom();
    std::string noise(size, '\0');
    for (char& byte : noise) {
        byte = static_cast<char>(random());
    }
    return noise;
}
