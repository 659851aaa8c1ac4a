#pragma once

#include "groundwork/tulittleendian.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tabase/tastreamwritebinarybuffer.h"
#include "tamesh/documentwriter.h"

#include <algorithm>
#include <cstdint>
#include <vector>

// Checksums stop nearly all inputs that a fuzzer makes. So it is given documents with right ones,
// too.

template <class Write> std::vector<std::uint8_t> WriteToVector(Write&& write)
{
    TaStreamWriteBinaryBuffer stream;
    write(static_cast<TuStreamWriteBinary&>(stream));
    return { stream.GetData(), stream.GetData() + stream.GetSize() };
}

/// Each frame marker gets a header and a payload with right checksums; a length that does not fit
/// becomes that of the bytes up to the next marker.
inline std::vector<std::uint8_t> WithRightChecksums(std::vector<std::uint8_t> bytes)
{
    using namespace tamesh;
    constexpr std::size_t kLength = 16;
    constexpr std::size_t kChecksum = 24;
    const auto find = [&](std::size_t from) {
        return static_cast<std::size_t>(
            std::search(bytes.begin() + static_cast<std::ptrdiff_t>(from), bytes.end(),
                kFrameMarker.begin(), kFrameMarker.end())
            - bytes.begin());
    };
    for (std::size_t place = find(0); bytes.size() - place >= kFrameOverhead;) {
        std::uint8_t* const header = bytes.data() + place;
        const std::size_t left = bytes.size() - place - kFrameOverhead;
        auto length = TuLoadLittleEndian<std::uint64_t>(header + kLength);
        if (length > left) {
            length = std::max(find(place + 1), place + kFrameOverhead) - place - kFrameOverhead;
            TuStoreLittleEndian<std::uint64_t>(header + kLength, length);
        }
        const std::uint32_t checksum = AddToChecksum(0, header, kChecksum);
        TuStoreLittleEndian(header + kChecksum, checksum);
        TuStoreLittleEndian(header + kFrameHeaderSize + length,
            AddToChecksum(checksum, header + kFrameHeaderSize, length));
        place = find(place + kFrameOverhead + static_cast<std::size_t>(length));
    }
    return bytes;
}

/// With one part, which has the payload.
inline std::vector<std::uint8_t> MakeDocument(const std::vector<std::uint8_t>& payload)
{
    return WriteToVector([&](auto& stream) {
        TaStreamReadBinaryBuffer source(payload.data(), payload.size());
        tamesh::DocumentWriter document;
        try {
            document.AddStored(tamesh::ReadPartName(source), payload);
        } catch (const TuException&) {
            document.AddStored(u"", payload);
        }
        document.Write(stream);
    });
}
