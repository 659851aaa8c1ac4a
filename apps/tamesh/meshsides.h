#pragma once

#include "tamesh/mesh.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace tamesh {

/// The sides of all faces of a mesh, by their smaller end; those whose ends are one vertex are left
/// out. An edge is there once for each time that it is a side.
///
/// `forEach(count, body)` calls body(i) for each i below count, and answers false where it was
/// stopped. What it has not come to takes no memory either: none is touched before.
class MeshSides
{
public:
    /// Walks over all faces and over all vertices kWalks times.
    static constexpr std::uint64_t kWalks = 2;

    /// False where it was stopped.
    template <class ForEach> bool Collect(const Mesh& mesh, ForEach&& forEach);

    /// The larger ends of the sides of this vertex, in order.
    std::span<const std::uint32_t> SortLargerEnds(std::uint32_t vertex)
    {
        const std::span<std::uint32_t> ends(
            m_largerEnds.get() + m_begins[vertex], m_largerEnds.get() + m_begins[vertex + 1]);
        std::sort(ends.begin(), ends.end());
        return ends;
    }

private:
    /// Calls take(smaller, larger) for each side of a face.
    template <class Take> static void forEachSide(std::span<const std::uint32_t> face, Take&& take)
    {
        std::uint32_t previous = face.back();
        for (const std::uint32_t corner : face) {
            if (corner != previous) {
                take(std::min(corner, previous), std::max(corner, previous));
            }
            previous = corner;
        }
    }

    std::unique_ptr<std::uint32_t[]>
        m_begins; // by vertex, in m_largerEnds, and the end of the last
    std::unique_ptr<std::uint32_t[]> m_largerEnds;
};

template <class ForEach> bool MeshSides::Collect(const Mesh& mesh, ForEach&& forEach)
{
    const std::uint32_t vertexCount = mesh.GetVertexCount();
    m_begins = std::make_unique_for_overwrite<std::uint32_t[]>(std::size_t{ vertexCount } + 1);
    std::uint32_t* const begins = m_begins.get();
    begins[vertexCount] = 0;
    std::uint32_t sum = 0;
    const auto count = [&](std::uint32_t i) {
        forEachSide(
            mesh.GetFace(i), [&](std::uint32_t smaller, std::uint32_t) { ++begins[smaller]; });
    };
    if (!forEach(vertexCount, [&](std::uint32_t i) { begins[i] = 0; })
        || !forEach(mesh.GetFaceCount(), count)
        || !forEach(vertexCount, [&](std::uint32_t i) { begins[i] = sum += begins[i]; })) {
        return false;
    }
    begins[vertexCount] = sum;
    // Each begin stands at its end now, and moves to its place while the sides are put in.
    m_largerEnds = std::make_unique_for_overwrite<std::uint32_t[]>(std::max(sum, 1u));
    return forEach(mesh.GetFaceCount(), [&](std::uint32_t i) {
        forEachSide(mesh.GetFace(i), [&](std::uint32_t smaller, std::uint32_t larger) {
            m_largerEnds[--begins[smaller]] = larger;
        });
    });
}

} // namespace tamesh
