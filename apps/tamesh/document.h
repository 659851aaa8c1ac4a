#pragma once

#include "tabase/tadatamanager.h"
#include "tamesh/tameshrecord.h"
#include "tamesh/tapackedmeshrecord.h"

#include <cstdint>
#include <memory>

class TuStreamReadBinary;
class TuStreamWriteBinary;

namespace tamesh {

class Progress;

/// A document: a mesh and what is known of it, in one file. It holds a marker, the format's
/// version, one chunk with the mesh, the data tree, and a checksum; docs/format.md states it byte
/// by byte.
///
/// Ownership: moved, never copied.
class Document
{
public:
    Document();
    /// With the tree that DescribeMesh makes.
    explicit Document(Mesh mesh);

    /// From now on, the mesh is saved in this packed form, which may move its vertices: the
    /// document itself keeps them. `progress` comes to the count of vertices and faces.
    void Pack(const CoordinateForm& form, Progress* progress = nullptr);

    /// Null where the mesh is saved plainly.
    const TaPackedMeshRecord* GetPacked() const { return m_packed.get(); }

    const Mesh& GetMesh() const { return m_record.GetMesh(); }
    TaDataManager& GetTree() { return *m_tree; }

    void Save(TuStreamWriteBinary& stream, Progress* progress = nullptr) const;
    /// How many bytes Save writes.
    std::uint64_t GetSavedSize() const;

    /// Reads to the end of the stream. What was saved in packed form is so again. A document of
    /// version 0 has no tree: it gets that of a new one. Throws TuExceptionWrongFileVersion for
    /// what is no document, or one of a later version, and TuExceptionStream (TuException for a
    /// chunk of a class that is unknown) for a damaged one; the document is then as it was.
    void Load(TuStreamReadBinary& stream, Progress* progress = nullptr);

private:
    TaMeshRecord m_record;
    std::unique_ptr<TaPackedMeshRecord>
        m_packed; // of the same mesh; null where it is saved plainly
    std::unique_ptr<TaDataManager> m_tree; // never null, unless moved from
};

} // namespace tamesh
