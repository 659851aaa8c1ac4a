#pragma once

#include "tamesh/mesh.h"

#include <cstdint>

namespace tamesh {

/// Gives equal positions the same vertex: for formats whose triangles repeat their corners.
///
/// Positions are equal when their bits are, except that -0 equals 0. Vertices are numbered in the
/// order in which their positions first come.
class VertexMerger
{
public:
    /// `mesh` outlives the merger, which alone adds vertices to it.
    explicit VertexMerger(Mesh& mesh)
        : m_mesh(mesh)
    {
    }

    /// The index of the vertex at `point`, which is added where there is none.
    std::uint32_t GetVertex(SPoint point);

private:
    std::uint32_t& findSlot(const SPoint& point);
    void grow();

    static constexpr std::uint32_t kEmpty = 0xFFFFFFFFu;

    Mesh& m_mesh;
    TuArray<std::uint32_t> m_slots; // a hash table of vertex indices, open addressing
};

} // namespace tamesh
