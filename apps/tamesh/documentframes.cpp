#include "tamesh/documentframes.h"

#include "groundwork/tuexceptions.h"
#include "groundwork/tulittleendian.h"

#include <algorithm>

namespace tamesh {

namespace {

    // Where the fields of a header lie.
    constexpr std::size_t kKind = 8;
    constexpr std::size_t kNumber = 12;
    constexpr std::size_t kLength = 16;
    constexpr std::size_t kChecksum = 24;

} // namespace

std::optional<SFrame> ParseFrameHeader(
    std::span<const unsigned char, kFrameHeaderSize> bytes, std::uint64_t offset)
{
    const auto kind = TuLoadLittleEndian<std::uint32_t>(bytes.data() + kKind);
    const auto checksum = TuLoadLittleEndian<std::uint32_t>(bytes.data() + kChecksum);
    if (!std::equal(kFrameMarker.begin(), kFrameMarker.end(), bytes.begin()) || kind > eCK_End
        || checksum != AddToChecksum(0, bytes.data(), kChecksum)) {
        return std::nullopt;
    }
    return SFrame{ static_cast<EChunkKind>(kind),
        TuLoadLittleEndian<std::uint32_t>(bytes.data() + kNumber),
        TuLoadLittleEndian<std::uint64_t>(bytes.data() + kLength), offset, checksum };
}

FrameWriter::FrameWriter(TuStreamWriteBinary& stream, Progress* progress)
    : m_stream(stream, progress)
{
    m_stream.WriteBuffer(kDocumentMarker.data(), kDocumentMarker.size());
    m_stream.WriteVersion(kDocumentVersion);
}

SFrame FrameWriter::Write(
    EChunkKind kind, std::uint64_t length, const std::function<void(TuStreamWriteBinary&)>& write)
{
    SFrame frame{ kind, m_number++, length, m_stream.GetPosition(), 0 };
    m_stream.SetChecksum(0);
    m_stream.WriteBuffer(kFrameMarker.data(), kFrameMarker.size());
    m_stream << static_cast<std::uint32_t>(kind) << frame.number
             << static_cast<unsigned long long>(length);
    const std::uint32_t headerChecksum = m_stream.GetChecksum();
    m_stream << headerChecksum;
    // The payload's goes on from the header's, so that a payload is sound behind its own header
    // only. (Behind the header with its checksum it would be the same behind every header.)
    m_stream.SetChecksum(headerChecksum);
    const std::uint64_t begin = m_stream.GetPosition();
    write(m_stream);
    if (m_stream.GetPosition() - begin != length) {
        throw TuException(TU_HERE,
            TuExceptionStream(TU_HERE, u"what is to be stored has changed while it was written"));
    }
    frame.checksum = m_stream.GetChecksum();
    m_stream << frame.checksum;
    return frame;
}

SFrame FrameReader::Read()
{
    std::array<unsigned char, kFrameHeaderSize> header{};
    const std::uint64_t offset = m_stream.GetPosition();
    m_stream.ReadExactly(header.data(), header.size());
    std::optional<SFrame> frame = ParseFrameHeader(header, offset);
    if (!frame) {
        throw TuExceptionStream(TU_HERE, u"no chunk begins where one should");
    }
    m_stream.SetChecksum(frame->checksum);
    m_payload.Clear();
    std::array<unsigned char, 65536> bytes;
    for (std::uint64_t left = frame->length; left != 0;) {
        const auto step = std::min<std::uint64_t>(left, bytes.size());
        m_stream.ReadExactly(bytes.data(), step);
        m_payload.WriteBuffer(bytes.data(), step);
        left -= step;
    }
    frame->checksum = m_stream.GetChecksum();
    std::uint32_t stored = 0;
    m_stream >> stored;
    if (stored != frame->checksum) {
        throw TuExceptionStream(TU_HERE, u"its checksum is wrong, so bytes have changed");
    }
    return *frame;
}

} // namespace tamesh
