#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace tamesh {

/// Tells the checksum of any range of some bytes in a time that does not depend on its length, so
/// that bytes which claim many large chunks take no more time than others.
///
/// Ownership: refers to the bytes, which outlive it.
class RangeChecksums
{
public:
    /// Looks at all bytes once.
    explicit RangeChecksums(std::span<const unsigned char> bytes);

    /// Of `size` bytes from `begin`, behind what has the checksum `before`: see AddToChecksum.
    std::uint32_t Get(std::uint32_t before, std::uint64_t begin, std::uint64_t size) const;

private:
    std::uint32_t getUpTo(std::uint64_t end) const;

    std::span<const unsigned char> m_bytes;
    std::vector<std::uint32_t> m_starts; // the checksum of all before each block
};

} // namespace tamesh
