#pragma once

#include "tacompression/tacompressrangecoder.h"
#include "tacompression/tadecompressrangecoder.h"

#include <gtest/gtest.h>

#include <type_traits>

/// One script for both ends of a block: the items that it writes to the one it expects of the
/// other.
class CodedScript
{
public:
    explicit CodedScript(TaCompressRangeCoder& writer)
        : m_writer(&writer)
    {
    }
    explicit CodedScript(TaDecompressRangeCoder& reader)
        : m_reader(&reader)
    {
    }

    /// By the operator for the type.
    template <class T> CodedScript& operator<<(const T& value)
    {
        if (m_writer != nullptr) {
            *m_writer << value;
        } else {
            using Narrow = std::conditional_t<std::is_convertible_v<T, const char*>, CStringA, T>;
            std::conditional_t<std::is_convertible_v<T, const char16_t*>, CString, Narrow> found{};
            *m_reader >> found;
            EXPECT_TRUE(found == decltype(found)(value));
        }
        return *this;
    }
    CodedScript& Symbol(std::uint32_t symbol, TaProbabilityModelQuasiStatic& model)
    {
        if (m_writer != nullptr) {
            m_writer->WriteSymbol(symbol, model);
        } else {
            EXPECT_EQ(m_reader->ReadSymbol(model), symbol);
        }
        return *this;
    }
    /// The bits beyond the width do not count.
    CodedScript& RawBits(std::uint32_t value, std::uint32_t width)
    {
        if (m_writer != nullptr) {
            m_writer->WriteRawBits(value, width);
        } else {
            EXPECT_EQ(m_reader->ReadRawBits(width), value & ((1ULL << width) - 1));
        }
        return *this;
    }

private:
    TaCompressRangeCoder* m_writer = nullptr;
    TaDecompressRangeCoder* m_reader = nullptr;
};
