#pragma once

#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"

#include <cstdint>

namespace tamesh {

class Progress;

/// The CRC-32 of ZIP and PNG of the bytes behind those whose checksum is given.
std::uint32_t AddToChecksum(std::uint32_t checksum, const void* data, unsigned long long size);

/// Passes bytes on to another stream, keeps their checksum, and tells how many there were.
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
    /// Of what comes from now on, behind what has this checksum.
    void SetChecksum(std::uint32_t checksum) { m_checksum = checksum; }
    /// How many bytes there were.
    std::uint64_t GetPosition() const { return m_position; }

private:
    void write(const void* data, unsigned long long size) override;

    TuStreamWriteBinary& m_target;
    Progress* m_progress;
    std::uint64_t m_position = 0;
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
    /// Of what comes from now on, behind what has this checksum.
    void SetChecksum(std::uint32_t checksum) { m_checksum = checksum; }
    /// How many bytes there were.
    std::uint64_t GetPosition() const { return m_position; }

private:
    unsigned long long read(void* data, unsigned long long size) override;

    TuStreamReadBinary& m_source;
    Progress* m_progress;
    std::uint64_t m_position = 0;
    std::uint32_t m_checksum = 0;
};

} // namespace tamesh
