#pragma once

#include "groundwork/iserializable.h"
#include "tamesh/mesh.h"

#include <utility>

namespace tamesh {

/// The stored form of a mesh: the object in the chunk of a document. docs/format.md states it byte
/// by byte.
///
/// Failure: reading throws TuExceptionStream for a record that is cut off or holds no sound mesh,
///          and TuExceptionWrongFileVersion for one of a later version; the record is then as it
///          was.
class TaMeshRecord final : public ISerializable
{
    TU_DECLARE_RTTI

public:
    TaMeshRecord() = default;
    explicit TaMeshRecord(Mesh mesh)
        : m_mesh(std::move(mesh))
    {
    }

    TU_DECLARE_EXTENSIONS;
    void Serialize(TuStreamWriteBinary& stream) const override;
    void Serialize(TuStreamReadBinary& stream) override;

    /// What Serialize writes, for a mesh that lies elsewhere.
    static void Write(TuStreamWriteBinary& stream, const Mesh& mesh);

    /// What Write writes, in bytes.
    static std::uint64_t GetStoredSize(const Mesh& mesh);

    const Mesh& GetMesh() const { return m_mesh; }
    void SetMesh(Mesh mesh) { m_mesh = std::move(mesh); }
    /// Leaves the record empty.
    Mesh TakeMesh() { return std::exchange(m_mesh, Mesh()); }

private:
    static IObject* CreateByFactory();

    Mesh m_mesh;
};

} // namespace tamesh
