#include "tamesh/mesh.h"

#include <utility>

namespace tamesh {

Mesh::Mesh(
    TuArray<SPoint> vertices, TuArray<std::uint32_t> faceEnds, TuArray<std::uint32_t> corners)
    : m_vertices(std::move(vertices))
    , m_faceEnds(std::move(faceEnds))
    , m_corners(std::move(corners))
{
}

void Mesh::AddFace(std::span<const std::uint32_t> corners)
{
    for (const std::uint32_t corner : corners) {
        m_corners.Add(corner);
    }
    m_faceEnds.Add(m_corners.GetSize());
}

} // namespace tamesh
