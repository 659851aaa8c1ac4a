#include "tamesh/checksumstreams.h"

#include "tamesh/progress.h"

#include <zlib.h>

namespace tamesh {

namespace {

    void advance(Progress* progress, std::uint64_t position)
    {
        if (progress != nullptr) {
            progress->Advance(position);
        }
    }

} // namespace

std::uint32_t AddToChecksum(std::uint32_t checksum, const void* data, unsigned long long size)
{
    return static_cast<std::uint32_t>(
        crc32_z(checksum, static_cast<const Bytef*>(data), static_cast<z_size_t>(size)));
}

void ChecksumWriter::write(const void* data, unsigned long long size)
{
    m_target.WriteBuffer(data, size);
    m_checksum = AddToChecksum(m_checksum, data, size);
    advance(m_progress, m_position += size);
}

unsigned long long ChecksumReader::read(void* data, unsigned long long size)
{
    const unsigned long long count = m_source.ReadBuffer(data, size);
    m_checksum = AddToChecksum(m_checksum, data, count);
    advance(m_progress, m_position += count);
    return count;
}

} // namespace tamesh
