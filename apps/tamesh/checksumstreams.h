#pragma once

#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"

#include <cstdint>

namespace tamesh {

class Progress;

/// Passes bytes on to another stream, keeps their CRC-32 (the one of ZIP and PNG), and tells how
/// many there were.
class ChecksumWriter final : public TuStreamWriteBinary
{
public:
    /// `target`, and `progress` where there is one, outlive the writer.
    explicit ChecksumWriter(TuStreamWriteBinary& target, Progress* progress = nullptr)
        : m_target(target)
        , m_progress(progress)
    {
    }

    std::uint32_t GetChecksum() const { return m_checksum; }

private:
    void write(const void* data, unsigned long long size) override;

    TuStreamWriteBinary& m_target;
    Progress* m_progress;
    std::uint64_t m_position = 0; // bytes so far
    std::uint32_t m_checksum = 0;
};

/// The same for reading.
class ChecksumReader final : public TuStreamReadBinary
{
public:
    explicit ChecksumReader(TuStreamReadBinary& source, Progress* progress = nullptr)
        : m_source(source)
        , m_progress(progress)
    {
    }

    std::uint32_t GetChecksum() const { return m_checksum; }

private:
    unsigned long long read(void* data, unsigned long long size) override;

    TuStreamReadBinary& m_source;
    Progress* m_progress;
    std::uint64_t m_position = 0;
    std::uint32_t m_checksum = 0;
};

} // namespace tamesh
