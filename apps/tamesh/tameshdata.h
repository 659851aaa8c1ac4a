#pragma once

#include "groundwork/iserializable.h"
#include "groundwork/tureferencecounted.h"
#include "tabase/tadatanode.h"
#include "tamesh/coordinateform.h"
#include "tamesh/mesh.h"
#include "tamesh/tapackedmeshrecord.h"

#include <memory>
#include <utility>

namespace tamesh {

class Progress;

/// A mesh as a value of the data tree, and the form in which it is stored. docs/format.md states
/// its record byte by byte.
///
/// Ownership: counted; owns the mesh, which does not change.
/// Failure:   reading throws what the records of a mesh throw; the value is then as it was.
class TaMeshData final : public TuReferenceCounted, public ISerializable
{
    TU_DECLARE_RTTI

public:
    TaMeshData() = default;
    /// `packed`, where there is one, is of the same mesh.
    explicit TaMeshData(Mesh mesh, std::unique_ptr<TaPackedMeshRecord> packed = nullptr)
        : m_mesh(std::move(mesh))
        , m_packed(std::move(packed))
    {
    }
    TaMeshData(const TaMeshData&) = delete;
    TaMeshData& operator=(const TaMeshData&) = delete;

    TU_DECLARE_EXTENSIONS;
    void Serialize(TuStreamWriteBinary& stream) const override;
    void Serialize(TuStreamReadBinary& stream) override;

    const Mesh& GetMesh() const { return m_mesh; }

    /// From now on, the mesh is stored in this packed form, which may move its vertices: the value
    /// itself keeps them. `progress` comes to the count of vertices and faces.
    void Pack(const CoordinateForm& form, Progress* progress = nullptr);
    /// Null where the mesh is stored plainly, as it is at first.
    const TaPackedMeshRecord* GetPacked() const { return m_packed.get(); }

private:
    static IObject* CreateByFactory();

    Mesh m_mesh;
    std::unique_ptr<TaPackedMeshRecord> m_packed; // of the same mesh
};

TA_DECLARE_DATA_NODE(, TaMeshNode, TaMeshData);

} // namespace tamesh
