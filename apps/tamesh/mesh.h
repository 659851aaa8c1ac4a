#pragma once

#include "groundwork/tuarray.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <utility>

namespace tamesh {

struct SPoint
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    friend bool operator==(const SPoint&, const SPoint&) = default;
};

/// A polygon mesh: vertices, and faces that name at least three of them each by index.
///
/// The corners of all faces lie in one array, one face behind the other, so that a mesh of millions
/// of triangles is a handful of blocks. Whoever adds a face has checked its indices.
///
/// Failure: TuExceptionOutOfMemory; the mesh is then of no use.
class Mesh
{
public:
    /// Of vertices, of faces, and of all corners together.
    static constexpr std::uint32_t kMaximumCount = 0xFFFFFFFEu;

    Mesh() = default;
    /// `faceEnds` holds, for each face, the position in `corners` behind its last corner.
    Mesh(TuArray<SPoint> vertices, TuArray<std::uint32_t> faceEnds, TuArray<std::uint32_t> corners);

    void AddVertex(const SPoint& point) { m_vertices.Add(point); }
    void AddFace(std::span<const std::uint32_t> corners);
    void AddFace(std::initializer_list<std::uint32_t> corners)
    {
        AddFace(std::span(corners.begin(), corners.size()));
    }

    void SetVertices(TuArray<SPoint> vertices) { m_vertices = std::move(vertices); }

    std::uint32_t GetVertexCount() const { return m_vertices.GetSize(); }
    std::uint32_t GetFaceCount() const { return m_faceEnds.GetSize(); }
    /// Of all faces together.
    std::uint32_t GetCornerCount() const { return m_corners.GetSize(); }

    const SPoint& GetVertex(std::uint32_t index) const { return m_vertices[index]; }
    std::span<const std::uint32_t> GetFace(std::uint32_t index) const
    {
        const std::uint32_t begin = index == 0 ? 0 : m_faceEnds[index - 1];
        return { m_corners.GetData() + begin, m_faceEnds[index] - begin };
    }
    std::span<const std::uint32_t> GetCorners() const
    {
        return { m_corners.GetData(), m_corners.GetSize() };
    }

private:
    TuArray<SPoint> m_vertices;
    TuArray<std::uint32_t> m_faceEnds;
    TuArray<std::uint32_t> m_corners;
};

/// Calls take(a, b, c) for the triangles of a face, fanned out from its first corner.
template <class Take> void ForEachTriangle(std::span<const std::uint32_t> face, Take&& take)
{
    for (std::size_t i = 2; i < face.size(); ++i) {
        take(face[0], face[i - 1], face[i]);
    }
}

/// A box along the axes.
struct SBounds
{
    SPoint lower;
    SPoint upper;
};

/// Makes the box, where need be, large enough to hold the point.
void ExtendBounds(SBounds& bounds, const SPoint& point);

/// The smallest box around all vertices, of which there is at least one.
SBounds FindBounds(const Mesh& mesh);

} // namespace tamesh
