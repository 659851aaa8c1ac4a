#pragma once

#include "groundwork/cstring.h"
#include "groundwork/tusmartpointer.h"
#include "tabase/tadatamanager.h"
#include "tabase/tanode.h"
#include "tamesh/tameshdata.h"

#include <memory>
#include <vector>

class TuStreamReadBinary;
class TuStreamWriteBinary;

namespace tamesh {

class ChecksumReader;
class Progress;

/// A document: a mesh and all that is known of it, in one file.
///
/// It consists of parts, which are the children of the root of a data tree: "Mesh", which describes
/// the mesh, "Geometry", with the mesh itself as the value "Data", and whatever else belongs to it.
/// In the file, each part is a chunk with a checksum of its own; docs/format.md states it byte by
/// byte.
///
/// Ownership: moved, never copied.
/// Threads:   as the tree; Save asks for no lock.
class Document
{
public:
    /// Without parts.
    Document();
    /// With the description that DescribeMesh makes.
    explicit Document(Mesh mesh);

    bool HasMesh() const { return !GetMeshData().IsNull(); }
    /// An empty one where there is none.
    const Mesh& GetMesh() const;
    /// Null where there is none.
    TuSmartPointer<TaMeshData> GetMeshData() const;

    /// From now on, the mesh is saved in this packed form, which may move its vertices: the
    /// document itself keeps them. `progress` comes to the count of vertices and faces. Throws
    /// TuException where there is no mesh.
    void Pack(const CoordinateForm& form, Progress* progress = nullptr);
    /// Null where there is no mesh, or it is saved plainly.
    const TaPackedMeshRecord* GetPacked() const;

    TaDataManager& GetTree() { return *m_tree; }
    const TaDataManager& GetTree() const { return *m_tree; }
    /// The parts, for another tree. None is left.
    std::vector<TuSmartPointer<TaNode>> TakeParts();
    /// What has written the file that was loaded: "tamesh 0.1.0". Empty for a document that comes
    /// from no file, or one of version 0 or 1.
    const CString& GetProgram() const { return m_program; }

    void Save(TuStreamWriteBinary& stream, Progress* progress = nullptr) const;
    /// Reads to the end of the stream. What was saved in packed form is so again. A document of
    /// version 0 has no description: it gets that of a new one. Throws TuExceptionWrongFileVersion
    /// for what is no document, or holds something of a later version, TuExceptionStream, which
    /// names the chunk, for a damaged one, and TuException for a class that is unknown; the
    /// document is then as it was.
    void Load(TuStreamReadBinary& stream, Progress* progress = nullptr);

private:
    /// Behind the start of the file.
    void load(ChecksumReader& stream, const Progress* progress);
    void loadOld(ChecksumReader& stream, unsigned int version, const Progress* progress);
    void add(const TuSmartPointer<TaNode>& node, const TuSmartPointer<TaNode>& parent);
    void addMesh(TuSmartPointer<TaMeshData> data);

    std::unique_ptr<TaDataManager> m_tree; // never null, unless moved from
    CString m_program;
};

/// Writes what hangs below `top`, any node, as a document with its children as the parts. The
/// caller has a granted handle on it, or nobody writes. Parts without anything to be stored are
/// left out. Throws TuException for a child that has a value itself, and for values that cannot be
/// stored.
void WriteDocument(TuStreamWriteBinary& stream, const TaNode& top, Progress* progress = nullptr);

} // namespace tamesh
