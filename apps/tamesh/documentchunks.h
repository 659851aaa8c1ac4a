#pragma once

#include "groundwork/cstring.h"
#include "groundwork/tusmartpointer.h"
#include "tabase/tanode.h"
#include "tamesh/documentframes.h"

#include <cstdint>
#include <span>
#include <vector>

class TaStreamReadBinaryBuffer;
class TuException;
class TuStreamWriteBinary;

namespace tamesh {

class Progress;

// What the chunks of a document hold: a head, then a part each, then the end. docs/format.md states
// them byte by byte.
//
// Failure: reading throws TuExceptionStream for what is malformed, and TuExceptionWrongFileVersion
//          for what is of a later version.

/// The first chunk: who has written the document, and which parts follow.
struct SDocumentHead
{
    CString program = u"tamesh";
    CString version = u"" TAMESH_VERSION;
    std::vector<CString> parts; // their names

    void Write(TuStreamWriteBinary& stream) const;
    static SDocumentHead Read(std::span<const unsigned char> payload);
};

/// What the directory calls the head.
constexpr const char16_t* kHeadName = u"head";

/// What the directory tells of a chunk.
struct SChunkEntry
{
    SFrame frame;
    CString name;

    bool operator==(const SChunkEntry&) const = default;
};

/// The last chunk: the directory of all others.
void WriteDirectory(TuStreamWriteBinary& stream, const std::vector<SChunkEntry>& entries);
std::vector<SChunkEntry> ReadDirectory(std::span<const unsigned char> payload);

/// The name with which the payload of a part begins.
CString ReadPartName(TaStreamReadBinaryBuffer& payload);
/// A part, in no tree. What the values in it throw passes on, and TuException for a class that is
/// unknown. `progress` is only asked whether the user wants the program to stop.
TuSmartPointer<TaNode> ReadPart(std::span<const unsigned char> payload, const Progress* progress);

/// Why reading a chunk has failed, without the place in the source.
CString ReasonOf(const TuException& failure);

/// Checks that the chunks of a document follow each other as they should, and that the directory
/// tells the same of them.
class ChunkBook
{
public:
    /// Throws TuExceptionStream for a chunk that cannot come next. Of a part only the name is
    /// looked at.
    void Add(const SFrame& frame, std::span<const unsigned char> payload);
    /// Whether the end has come.
    bool IsComplete() const { return m_isComplete; }
    const SDocumentHead& GetHead() const { return m_head; }
    /// How a failure names the chunk that comes next.
    CString DescribeNext() const;

private:
    SDocumentHead m_head;
    std::vector<SChunkEntry> m_entries; // of those that have come
    bool m_isComplete = false;
};

} // namespace tamesh
