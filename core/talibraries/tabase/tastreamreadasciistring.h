#pragma once

#include "tabase/tastreamreadascii.h"

#include <cstddef>

/// The text reader of a text in memory.
///
/// Ownership: refers to the caller's text, which must outlive the reader.
class TABASE_API TaStreamReadASCIIString : public TaStreamReadASCII
{
    TU_DECLARE_RTTI

public:
    explicit TaStreamReadASCIIString(const CStringA& text);
    explicit TaStreamReadASCIIString(CStringA&&) = delete; // it would be gone before the first read
    explicit TaStreamReadASCIIString(const CStringA&&) = delete;

protected:
    bool read(char& c) override;

private:
    const CStringA& m_text;
    std::size_t m_position = 0;
};
