#pragma once

#include "tamesh/mesh.h"

#include <cstdint>
#include <string>

namespace tamesh {

/// The figures of a mesh.
struct SMeshFigures
{
    std::uint64_t vertices = 0;
    std::uint64_t faces = 0;
    /// Pairs of different vertices that follow one another around a face; each pair counts once.
    std::uint64_t edges = 0;
    std::uint64_t boundaryEdges = 0; // one side of a face only
    std::uint64_t nonManifoldEdges = 0; // more than two sides; a degenerate face may have it twice
    std::uint64_t degenerateFaces = 0; // that name a vertex twice
    /// Sets of vertices that faces join. A vertex of no face is a component of its own.
    std::uint64_t components = 0;
    std::uint64_t isolatedVertices = 0; // of no face
    std::int64_t eulerCharacteristic = 0; // vertices - edges + faces
    // The corners of the smallest box around all vertices; meaningless without vertices.
    SPoint lowerBound;
    SPoint upperBound;

    friend bool operator==(const SMeshFigures&, const SMeshFigures&) = default;
};

/// Calls visit(figure) for each number, in the order of the record; `Figures` may be const.
template <class Figures, class Visit> void ForEachFigure(Figures& figures, Visit&& visit)
{
    visit(figures.vertices);
    visit(figures.faces);
    visit(figures.edges);
    visit(figures.boundaryEdges);
    visit(figures.nonManifoldEdges);
    visit(figures.degenerateFaces);
    visit(figures.components);
    visit(figures.isolatedVertices);
    visit(figures.eulerCharacteristic);
    for (auto* bound : { &figures.lowerBound, &figures.upperBound }) {
        visit(bound->x);
        visit(bound->y);
        visit(bound->z);
    }
}

/// What TaMeshStatistics computes, for callers that need neither progress nor a break.
SMeshFigures AnalyseMesh(const Mesh& mesh);

/// A line per figure, in a form that scripts can rely on: two blanks, the name, the value.
/// Coordinates have `digits` significant digits, 0 for as many as tell them from all others.
std::string FormatFigures(const SMeshFigures& figures, int digits = 0);

} // namespace tamesh
