#include "tamesh/mesh.h"

#include <algorithm>
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

void ExtendBounds(SBounds& bounds, const SPoint& point)
{
    SPoint& lower = bounds.lower;
    SPoint& upper = bounds.upper;
    lower = { std::min(lower.x, point.x), std::min(lower.y, point.y), std::min(lower.z, point.z) };
    upper = { std::max(upper.x, point.x), std::max(upper.y, point.y), std::max(upper.z, point.z) };
}

SBounds FindBounds(const Mesh& mesh)
{
    SBounds bounds{ mesh.GetVertex(0), mesh.GetVertex(0) };
    for (std::uint32_t i = 1; i < mesh.GetVertexCount(); ++i) {
        ExtendBounds(bounds, mesh.GetVertex(i));
    }
    return bounds;
}

} // namespace tamesh
