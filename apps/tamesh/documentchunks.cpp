#include "tamesh/documentchunks.h"

#include "groundwork/tuexceptions.h"
#include "tabase/tanodetreereader.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tamesh/interruptiblereader.h"

#include <string>
#include <utility>

namespace tamesh {

namespace {

    void checkAtEnd(const TaStreamReadBinaryBuffer& stream)
    {
        if (stream.GetRemaining() != 0) {
            throw TuExceptionStream(TU_HERE, u"more bytes follow what it holds");
        }
    }

    TuStreamReadBinary& asBase(TaStreamReadBinaryBuffer& stream) { return stream; }

} // namespace

void SDocumentHead::Write(TuStreamWriteBinary& stream) const
{
    stream.WriteVersion(kDocumentVersion);
    stream << program << version << static_cast<std::uint32_t>(parts.size());
    for (const CString& name : parts) {
        stream << name;
    }
}

SDocumentHead SDocumentHead::Read(std::span<const unsigned char> payload)
{
    TaStreamReadBinaryBuffer stream(payload.data(), payload.size());
    if (stream.ReadAndCompareVersion(kDocumentVersion) != kDocumentVersion) {
        throw TuExceptionStream(TU_HERE, u"it is of a version that has no chunks");
    }
    SDocumentHead head;
    std::uint32_t count = 0;
    asBase(stream) >> head.program >> head.version >> count;
    for (; count != 0; --count) {
        head.parts.emplace_back();
        asBase(stream) >> head.parts.back();
    }
    checkAtEnd(stream);
    return head;
}

void WriteDirectory(TuStreamWriteBinary& stream, const std::vector<SChunkEntry>& entries)
{
    stream << static_cast<std::uint32_t>(entries.size());
    for (const auto& [frame, name] : entries) {
        stream << static_cast<std::uint32_t>(frame.kind) << name
               << static_cast<unsigned long long>(frame.offset)
               << static_cast<unsigned long long>(frame.length) << frame.checksum;
    }
}

std::vector<SChunkEntry> ReadDirectory(std::span<const unsigned char> payload)
{
    TaStreamReadBinaryBuffer stream(payload.data(), payload.size());
    std::uint32_t count = 0;
    asBase(stream) >> count;
    std::vector<SChunkEntry> entries;
    for (std::uint32_t number = 0; number < count; ++number) {
        SChunkEntry entry;
        std::uint32_t kind = 0;
        unsigned long long offset = 0;
        unsigned long long length = 0;
        asBase(stream) >> kind >> entry.name >> offset >> length >> entry.frame.checksum;
        if (kind > eCK_End) {
            throw TuExceptionStream(TU_HERE, u"it tells of chunks of an unknown kind");
        }
        entry.frame.kind = static_cast<EChunkKind>(kind);
        entry.frame.number = number;
        entry.frame.offset = offset;
        entry.frame.length = length;
        entries.push_back(std::move(entry));
    }
    checkAtEnd(stream);
    return entries;
}

CString ReadPartName(TaStreamReadBinaryBuffer& payload)
{
    CString name;
    asBase(payload) >> name;
    return name;
}

TuSmartPointer<TaNode> ReadPart(std::span<const unsigned char> payload, const Progress* progress)
{
    TaStreamReadBinaryBuffer stream(payload.data(), payload.size());
    auto part = TuMake<TaNode>(ReadPartName(stream), true, true);
    InterruptibleReader interruptible(stream, progress);
    TaNodeTreeReader(interruptible).Read(part);
    checkAtEnd(stream);
    return part;
}

CString ReasonOf(const TuException& failure)
{
    const TuException* cause = &failure;
    while (cause->GetCause() != nullptr) {
        cause = cause->GetCause();
    }
    return cause->GetCauseText().IsEmpty() ? CString::FromUtf8(cause->what())
                                           : cause->GetCauseText();
}

void ChunkBook::Add(const SFrame& frame, std::span<const unsigned char> payload)
{
    const std::size_t number = m_entries.size();
    const std::size_t end = m_head.parts.size() + 1;
    const EChunkKind kind = number == 0 ? eCK_Head : number == end ? eCK_End : eCK_Part;
    if (m_isComplete || frame.number != number || frame.kind != kind) {
        throw TuExceptionStream(TU_HERE, u"another chunk stands in its place");
    }
    CString name;
    if (kind == eCK_Head) {
        m_head = SDocumentHead::Read(payload);
        name = kHeadName;
    } else if (kind == eCK_Part) {
        TaStreamReadBinaryBuffer stream(payload.data(), payload.size());
        name = ReadPartName(stream);
        if (name != m_head.parts[number - 1]) {
            throw TuExceptionStream(TU_HERE, u"the head of the document has another name for it");
        }
    } else {
        if (ReadDirectory(payload) != m_entries) {
            throw TuExceptionStream(TU_HERE, u"the directory tells something else of the chunks");
        }
        m_isComplete = true;
        return;
    }
    m_entries.push_back({ frame, std::move(name) });
}

CString ChunkBook::DescribeNext() const
{
    const std::size_t number = m_entries.size();
    if (number == 0 || number > m_head.parts.size()) {
        return number == 0 ? u"the head" : u"the end";
    }
    return u"chunk " + CString::FromUtf8(std::to_string(number)) + u" (" + m_head.parts[number - 1]
        + u")";
}

} // namespace tamesh
