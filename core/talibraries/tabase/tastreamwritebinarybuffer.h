#pragma once

#include "groundwork/tustreamwritebinary.h"
#include "tabase/tabaseapi.h"

#include <cstddef>

/// A binary writer into memory that grows as it is written.
///
/// Ownership: owns its bytes; GetData() is valid until the next write.
/// Threads:   one thread at a time.
/// Failure:   TuExceptionOutOfMemory when the memory cannot grow; what was written stays.
class TABASE_API TaStreamWriteBinaryBuffer final : public TuStreamWriteBinary
{
    TU_DECLARE_RTTI

public:
    TaStreamWriteBinaryBuffer() = default;
    explicit TaStreamWriteBinaryBuffer(std::size_t expectedSize);
    ~TaStreamWriteBinaryBuffer() override;
    TaStreamWriteBinaryBuffer(const TaStreamWriteBinaryBuffer&) = delete;
    TaStreamWriteBinaryBuffer& operator=(const TaStreamWriteBinaryBuffer&) = delete;

    const unsigned char* GetData() const { return m_bytes; }
    /// In bytes.
    std::size_t GetSize() const { return static_cast<std::size_t>(getWindow() - m_bytes); }
    /// Forgets what was written and keeps the memory.
    void Clear();

private:
    void write(const void* data, unsigned long long size) override;
    void reserve(std::size_t capacity);
    bool tryReserve(std::size_t capacity) noexcept;

    unsigned char* m_bytes = nullptr;
};
