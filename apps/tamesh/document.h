#pragma once

#include "tamesh/tameshrecord.h"

#include <utility>

class TuStreamReadBinary;
class TuStreamWriteBinary;

namespace tamesh {

class Progress;

/// A document: what tamesh keeps of a mesh, in one file. It holds a marker, the format's version,
/// one chunk with the mesh, and a checksum; docs/format.md states it byte by byte.
class Document
{
public:
    Document() = default;
    explicit Document(Mesh mesh)
        : m_record(std::move(mesh))
    {
    }

    const Mesh& GetMesh() const { return m_record.GetMesh(); }

    void Save(TuStreamWriteBinary& stream, Progress* progress = nullptr) const;
    /// How many bytes Save writes.
    std::uint64_t GetSavedSize() const;

    /// Reads to the end of the stream.
    /// Throws TuExceptionWrongFileVersion for what is no document, or one of a later version, and
    /// TuExceptionStream (TuException for a chunk of a class that is unknown) for a damaged one;
    /// the document is then as it was.
    void Load(TuStreamReadBinary& stream, Progress* progress = nullptr);

private:
    TaMeshRecord m_record;
};

} // namespace tamesh
