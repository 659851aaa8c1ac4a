#pragma once

#include "tabase/tastreamwritebinarybuffer.h"
#include "tamesh/checksumstreams.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace tamesh {

class Progress;

// A document begins with a marker and the version of its format; all that follows stands in frames.
// A frame holds one chunk, and shows by itself where it begins, what it is, and whether any of its
// bits has changed. docs/format.md states it byte by byte.

// As in other formats, the line ends show whether the file went through a program that takes it for
// text, and the control character ends it for one that prints it.
constexpr std::array<char, 8> kDocumentMarker{ 'T', 'A', 'D', 'O', 'C', '\r', '\n', '\x1A' };
constexpr unsigned int kDocumentVersion = 2; // 0 had no tree, 1 no frames
constexpr std::size_t kDocumentStartSize = kDocumentMarker.size() + sizeof kDocumentVersion;

constexpr std::array<unsigned char, 8> kFrameMarker{ 0x8A, 'T', 'A', 'F', 'R', 'A', 'M', 'E' };
constexpr std::size_t kFrameHeaderSize = 28;
/// All of a frame but its payload.
constexpr std::size_t kFrameOverhead = kFrameHeaderSize + sizeof(std::uint32_t);

enum EChunkKind : std::uint32_t
{
    eCK_Head = 0,
    eCK_Part = 1,
    eCK_End = 2,
};

struct SFrame
{
    EChunkKind kind = eCK_Head;
    std::uint32_t number = 0; // in the order of the document, from 0
    std::uint64_t length = 0; // of the payload
    std::uint64_t offset = 0; // of the frame, from the begin of the document
    std::uint32_t checksum = 0; // of the header (without its own checksum) and the payload

    bool operator==(const SFrame&) const = default;
};

/// What a header says; nothing for bytes that are none. `checksum` is that of the header alone. The
/// length is only a claim.
std::optional<SFrame> ParseFrameHeader(
    std::span<const unsigned char, kFrameHeaderSize> bytes, std::uint64_t offset);

/// Writes a document frame by frame.
class FrameWriter
{
public:
    /// Writes what comes before the first frame. `stream`, and `progress` where there is one,
    /// outlive the writer.
    explicit FrameWriter(TuStreamWriteBinary& stream, Progress* progress = nullptr);

    /// The next frame. Throws TuException where `write` does not hand over `length` bytes.
    SFrame Write(EChunkKind kind, std::uint64_t length,
        const std::function<void(TuStreamWriteBinary&)>& write);

private:
    ChecksumWriter m_stream;
    std::uint32_t m_number = 0;
};

/// Reads a document frame by frame.
class FrameReader
{
public:
    /// `stream` has come behind what comes before the first frame, and outlives the reader.
    explicit FrameReader(ChecksumReader& stream)
        : m_stream(stream)
    {
    }

    /// The next frame. Throws TuExceptionStream where the next bytes are none with right checksums.
    /// Takes no more memory than a small multiple of the bytes that arrive.
    SFrame Read();
    /// That of the frame read last; valid until the next is read.
    std::span<const unsigned char> GetPayload() const
    {
        return { m_payload.GetData(), m_payload.GetSize() };
    }

private:
    ChecksumReader& m_stream;
    TaStreamWriteBinaryBuffer m_payload;
};

} // namespace tamesh
