#include "tamesh/rangechecksums.h"

#include "tamesh/checksumstreams.h"

#include <zlib.h>

#include <algorithm>

namespace tamesh {

namespace {

    constexpr std::size_t kBlock = 4096;

    /// What becomes of a difference of checksums behind which `size` equal bytes follow.
    std::uint32_t shift(std::uint32_t checksum, std::uint64_t size)
    {
        constexpr std::uint64_t kMost = std::uint64_t{ 1 } << 30; // what the type takes everywhere
        while (size != 0) {
            const std::uint64_t step = std::min(size, kMost);
            checksum = static_cast<std::uint32_t>(
                crc32_combine(checksum, 0, static_cast<z_off_t>(step)));
            size -= step;
        }
        return checksum;
    }

} // namespace

RangeChecksums::RangeChecksums(std::span<const unsigned char> bytes)
    : m_bytes(bytes)
{
    std::uint32_t checksum = 0;
    m_starts.reserve(bytes.size() / kBlock + 1);
    m_starts.push_back(checksum);
    for (std::size_t begin = 0; bytes.size() - begin >= kBlock; begin += kBlock) {
        checksum = AddToChecksum(checksum, bytes.data() + begin, kBlock);
        m_starts.push_back(checksum);
    }
}

/// With A before the range, B the range, and a shift that is linear: the checksum of A and B is
/// shift(A) xor B, so what differs before the range makes the difference shift(before xor A).
std::uint32_t RangeChecksums::Get(
    std::uint32_t before, std::uint64_t begin, std::uint64_t size) const
{
    return shift(before ^ getUpTo(begin), size) ^ getUpTo(begin + size);
}

std::uint32_t RangeChecksums::getUpTo(std::uint64_t end) const
{
    const auto block = static_cast<std::size_t>(end / kBlock);
    return AddToChecksum(m_starts[block], m_bytes.data() + block * kBlock, end % kBlock);
}

} // namespace tamesh
