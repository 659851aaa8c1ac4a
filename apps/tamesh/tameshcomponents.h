#pragma once

#include "tabase/taalgorithmfamilies.h"
#include "tamesh/mesh.h"

#include <cstdint>
#include <vector>

namespace tamesh {

/// Finds the components of a mesh, the sets of vertices that faces join, by their sizes.
///
/// Ownership: refers to the mesh, which outlives the computation.
class TaMeshComponents final : public TaMpAlgorithm
{
    TU_DECLARE_RTTI

public:
    TaMeshComponents() = default;
    TaMeshComponents(const TaMeshComponents&) = delete;
    TaMeshComponents& operator=(const TaMeshComponents&) = delete;

    void SetMesh(const Mesh& mesh);
    /// How many vertices each has, the largest first. TaExceptionNoOutputData where they have not
    /// been computed.
    const std::vector<std::uint32_t>& GetSizes() const;

protected:
    bool checkPreConditions() const override { return m_mesh != nullptr; }
    void compute() override;
    bool checkPostConditions() const override { return !wasBroken(); }

private:
    static IObject* CreateByFactory();

    const Mesh* m_mesh = nullptr;
    std::vector<std::uint32_t> m_sizes;
};

} // namespace tamesh
