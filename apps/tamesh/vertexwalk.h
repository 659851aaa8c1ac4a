#pragma once

#include "tamesh/mesh.h"

#include <array>
#include <cstdint>

namespace tamesh {

/// The order in which a packed mesh has its vertices: as the faces name them for the first time,
/// then those of no face. Each comes with up to three earlier ones that tell where it may lie: at
/// a + b - c.
///
/// Where the vertex completes a triangle, a and b are its other corners, and c the one that faces
/// them in a triangle that came before: the parallelogram. Where it is the fourth or a later corner
/// of its face, it is that of the three corners before it. Else all three are the corner before it,
/// or behind it, or the vertex before it in this order. Edges are remembered in a table of fixed
/// size, in which a new one may take an old one's place; documents depend on which.
class VertexWalk
{
public:
    struct SStop
    {
        std::uint32_t vertex;
        std::uint32_t a; // kNone for the first vertex of all
        std::uint32_t b;
        std::uint32_t c;
    };

    static constexpr std::uint32_t kNone = 0xFFFFFFFFu;

    /// Looks at the faces only. `vertexCount` is greater than all their corners.
    VertexWalk(const Mesh& faces, std::uint32_t vertexCount);

    /// To be called once for each vertex.
    SStop Next();

private:
    struct SEdge
    {
        std::uint32_t lower = kNone; // the lesser of its vertices
        std::uint32_t upper = kNone;
        std::uint32_t opposite = kNone; // the corner that follows them in their face
    };

    SStop visit(std::uint32_t vertex, std::uint32_t a, std::uint32_t b, std::uint32_t c);
    SStop visitCorner(std::span<const std::uint32_t> face, std::size_t corner);
    SEdge& slotOf(std::uint32_t lower, std::uint32_t upper);
    std::uint32_t findOpposite(std::uint32_t from, std::uint32_t to);
    void rememberEdges(std::span<const std::uint32_t> face);

    const Mesh& m_faces;
    TuArray<bool> m_isVisited;
    TuArray<SEdge> m_edges;
    std::uint32_t m_face = 0;
    std::size_t m_corner = 0; // of that face
    std::uint32_t m_isolated = 0; // vertices before it have been visited, once all faces have
    std::uint32_t m_last = kNone;
};

} // namespace tamesh
