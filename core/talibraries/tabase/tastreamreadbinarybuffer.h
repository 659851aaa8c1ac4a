#pragma once

#include "groundwork/tustreamreadbinary.h"
#include "tabase/tabaseapi.h"

#include <cstddef>

class TaStreamWriteBinaryBuffer;

/// A binary reader from memory.
///
/// Ownership: refers to the caller's bytes, which must outlive it and stay where they are.
/// Threads:   one thread at a time; several readers may share the bytes.
class TABASE_API TaStreamReadBinaryBuffer final : public TuStreamReadBinary
{
    TU_DECLARE_RTTI

public:
    TaStreamReadBinaryBuffer(const void* data, std::size_t size);
    /// Reads what has been written so far; the next write may move the bytes.
    explicit TaStreamReadBinaryBuffer(const TaStreamWriteBinaryBuffer& written);
    explicit TaStreamReadBinaryBuffer(TaStreamWriteBinaryBuffer&&) = delete;
    TaStreamReadBinaryBuffer(const TaStreamReadBinaryBuffer&) = delete;
    TaStreamReadBinaryBuffer& operator=(const TaStreamReadBinaryBuffer&) = delete;

    /// Bytes taken so far, and bytes left.
    std::size_t GetPosition() const { return static_cast<std::size_t>(getWindow() - m_begin); }
    std::size_t GetRemaining() const
    {
        return static_cast<std::size_t>(getWindowEnd() - getWindow());
    }

private:
    unsigned long long read(void* data, unsigned long long size) override;

    const unsigned char* m_begin;
};
