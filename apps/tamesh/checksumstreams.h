#pragma once

#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"

#include <cstdint>

namespace tamesh {

/// Passes bytes on to another stream and keeps their CRC-32 (the one of ZIP and PNG).
class ChecksumWriter final : public TuStreamWriteBinary
{
public:
    /// `target` outlives the writer.
    explicit ChecksumWriter(TuStreamWriteBinary& target)
        : m_target(target)
    {
    }

    std::uint32_t GetChecksum() const { return m_checksum; }

private:
    void write(const void* data, unsigned long long size) override;

    TuStreamWriteBinary& m_target;
    std::uint32_t m_checksum = 0;
};

/// The same for reading.
class ChecksumReader final : public TuStreamReadBinary
{
public:
    /// `source` outlives the reader.
    explicit ChecksumReader(TuStreamReadBinary& source)
        : m_source(source)
    {
    }

    std::uint32_t GetChecksum() const { return m_checksum; }

private:
    unsigned long long read(void* data, unsigned long long size) override;

    TuStreamReadBinary& m_source;
    std::uint32_t m_checksum = 0;
};

} // namespace tamesh
