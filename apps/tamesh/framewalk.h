#pragma once

#include "tamesh/documentframes.h"
#include "tamesh/rangechecksums.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tamesh {

/// Goes over bytes from frame to frame, and searches for the next one where one does not lead to
/// it. The time is linear in the bytes, whoever has made them.
///
/// Ownership: refers to the bytes, which outlive it.
class FrameWalk
{
public:
    struct SPlace
    {
        enum EState
        {
            eS_Frame, // all checksums are right
            eS_Broken, // only that of the header is
            eS_Gap, // no header is here
        };
        EState state;
        std::uint64_t offset;
        std::uint64_t size;
        SFrame frame;
    };

    FrameWalk(std::span<const unsigned char> bytes, std::uint64_t begin);

    /// All bytes from the begin on, in their order.
    const std::vector<SPlace>& GetPlaces() const { return m_places; }
    /// Of a frame of which all checksums are right.
    std::span<const unsigned char> GetPayload(const SFrame& frame) const;

private:
    std::optional<SFrame> headerAt(std::uint64_t place) const;
    /// From `place` on; the end of all where there is none.
    std::uint64_t findHeader(std::uint64_t place) const;
    /// Returns where to go on.
    std::uint64_t addFrame(SFrame frame);
    /// Whether the payload has its checksum, which takes the place of the header's.
    bool isSound(SFrame& frame) const;

    std::span<const unsigned char> m_bytes;
    RangeChecksums m_checksums;
    std::vector<SPlace> m_places;
};

} // namespace tamesh
