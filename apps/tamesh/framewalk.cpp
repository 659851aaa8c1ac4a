#include "tamesh/framewalk.h"

#include "groundwork/tulittleendian.h"

#include <string_view>

namespace tamesh {

FrameWalk::FrameWalk(std::span<const unsigned char> bytes, std::uint64_t begin)
    : m_bytes(bytes)
    , m_checksums(bytes)
{
    const auto addGap = [this](std::uint64_t from, std::uint64_t to) {
        if (from != to) {
            m_places.push_back({ SPlace::eS_Gap, from, to - from, {} });
        }
    };
    std::uint64_t place = begin;
    for (std::uint64_t next = findHeader(place); next < bytes.size(); next = findHeader(place)) {
        addGap(place, next);
        place = addFrame(*headerAt(next));
    }
    addGap(place, bytes.size());
}

std::span<const unsigned char> FrameWalk::GetPayload(const SFrame& frame) const
{
    return m_bytes.subspan(static_cast<std::size_t>(frame.offset) + kFrameHeaderSize,
        static_cast<std::size_t>(frame.length));
}

std::optional<SFrame> FrameWalk::headerAt(std::uint64_t place) const
{
    if (m_bytes.size() < kFrameHeaderSize || place > m_bytes.size() - kFrameHeaderSize) {
        return std::nullopt;
    }
    return ParseFrameHeader(
        m_bytes.subspan(static_cast<std::size_t>(place)).first<kFrameHeaderSize>(), place);
}

std::uint64_t FrameWalk::findHeader(std::uint64_t place) const
{
    const std::string_view all(reinterpret_cast<const char*>(m_bytes.data()), m_bytes.size());
    const std::string_view marker(
        reinterpret_cast<const char*>(kFrameMarker.data()), kFrameMarker.size());
    auto found = static_cast<std::size_t>(place);
    while ((found = all.find(marker, found)) != all.npos) {
        if (headerAt(found)) {
            return found;
        }
        ++found;
    }
    return m_bytes.size();
}

std::uint64_t FrameWalk::addFrame(SFrame frame)
{
    const std::uint64_t left = m_bytes.size() - frame.offset;
    const bool fits = left >= kFrameOverhead && frame.length <= left - kFrameOverhead;
    const std::uint64_t end = fits ? frame.offset + kFrameOverhead + frame.length : 0;
    if (fits && isSound(frame)) {
        m_places.push_back({ SPlace::eS_Frame, frame.offset, end - frame.offset, frame });
        return end;
    }
    // Where bits have changed, the next frame begins where this one says, whatever looks like one
    // in between; where bytes were lost or added, it begins elsewhere.
    const std::optional<SFrame> successor = fits ? headerAt(end) : std::nullopt;
    const std::uint64_t next = successor && successor->number == frame.number + 1
        ? end
        : findHeader(frame.offset + kFrameHeaderSize);
    m_places.push_back({ SPlace::eS_Broken, frame.offset, next - frame.offset, frame });
    return next;
}

bool FrameWalk::isSound(SFrame& frame) const
{
    const std::uint64_t begin = frame.offset + kFrameHeaderSize;
    const auto stored = TuLoadLittleEndian<std::uint32_t>(
        m_bytes.data() + static_cast<std::size_t>(begin + frame.length));
    frame.checksum = m_checksums.Get(frame.checksum, begin, frame.length);
    return frame.checksum == stored;
}

} // namespace tamesh
