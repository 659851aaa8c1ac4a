#include "tamesh/vertexwalk.h"

#include <algorithm>

namespace tamesh {

namespace {

    constexpr unsigned int kEdgeBits = 15;
    constexpr std::size_t kTriangle = 3;

} // namespace

VertexWalk::VertexWalk(const Mesh& faces, std::uint32_t vertexCount)
    : m_faces(faces)
{
    m_isVisited.SetSize(vertexCount);
    m_edges.SetSize(1U << kEdgeBits);
}

VertexWalk::SStop VertexWalk::Next()
{
    for (; m_face < m_faces.GetFaceCount(); ++m_face, m_corner = 0) {
        const std::span<const std::uint32_t> face = m_faces.GetFace(m_face);
        while (m_corner < face.size()) {
            const std::size_t corner = m_corner++;
            if (!m_isVisited[face[corner]]) {
                return visitCorner(face, corner);
            }
        }
        rememberEdges(face);
    }
    while (m_isVisited[m_isolated]) {
        ++m_isolated;
    }
    return visit(m_isolated, m_last, m_last, m_last);
}

VertexWalk::SStop VertexWalk::visit(
    std::uint32_t vertex, std::uint32_t a, std::uint32_t b, std::uint32_t c)
{
    m_isVisited[vertex] = true;
    m_last = vertex;
    return { vertex, a, b, c };
}

VertexWalk::SStop VertexWalk::visitCorner(std::span<const std::uint32_t> face, std::size_t corner)
{
    const std::uint32_t vertex = face[corner];
    if (corner >= kTriangle) {
        return visit(vertex, face[corner - 1], face[corner - 3], face[corner - 2]);
    }
    const std::uint32_t before = face[(corner + face.size() - 1) % face.size()];
    const std::uint32_t behind = face[(corner + 1) % face.size()];
    const bool isBeforeKnown = m_isVisited[before];
    const bool isBehindKnown = m_isVisited[behind];
    if (face.size() == kTriangle && isBeforeKnown && isBehindKnown) {
        const std::uint32_t opposite = findOpposite(before, behind);
        if (opposite != kNone) {
            return visit(vertex, before, behind, opposite);
        }
    }
    const std::uint32_t neighbour = isBeforeKnown ? before : isBehindKnown ? behind : m_last;
    return visit(vertex, neighbour, neighbour, neighbour);
}

VertexWalk::SEdge& VertexWalk::slotOf(std::uint32_t lower, std::uint32_t upper)
{
    // Multiplicative hashing; the factors are odd numbers without a pattern in their bits.
    const std::uint32_t hash = lower * 0x9E3779B1u ^ upper * 0x85EBCA6Bu;
    return m_edges[hash >> (32 - kEdgeBits)];
}

std::uint32_t VertexWalk::findOpposite(std::uint32_t from, std::uint32_t to)
{
    const auto [lower, upper] = std::minmax(from, to);
    const SEdge& edge = slotOf(lower, upper);
    return edge.lower == lower && edge.upper == upper ? edge.opposite : kNone;
}

void VertexWalk::rememberEdges(std::span<const std::uint32_t> face)
{
    for (std::size_t i = 0; i < face.size(); ++i) {
        const auto [lower, upper] = std::minmax(face[i], face[(i + 1) % face.size()]);
        slotOf(lower, upper) = { lower, upper, face[(i + 2) % face.size()] };
    }
}

} // namespace tamesh
