#pragma once

#include "tabase/tagraph.h"
#include "tamesh/mesh.h"

#include <cstdint>
#include <vector>

namespace tamesh {

class Progress;

/// The edges of a mesh as a graph: a node for each vertex, by its number, and for each edge a
/// connection either way that weighs as much as the edge is long.
///
/// Weights are floats, which coordinates need not fit: they count in units of half the longest side
/// of the mesh's box.
///
/// Failure: Interrupted, where there is a progress; TuExceptionOutOfMemory, std::bad_alloc.
class MeshGraph
{
public:
    /// `mesh` has a vertex. Progress comes to CountSteps(mesh).
    MeshGraph(const Mesh& mesh, Progress* progress);
    static std::uint64_t CountSteps(const Mesh& mesh);

    TaGraph& GetGraph() { return m_graph; }
    TaGraphNode& GetNode(std::uint32_t vertex) { return *m_nodes[vertex]; }
    /// One more node, which no connection leads to: the end of a search that is to reach all
    /// others.
    TaGraphNode& GetNowhere() { return *m_nowhere; }
    std::uint32_t GetVertexCount() const { return static_cast<std::uint32_t>(m_nodes.size()); }
    static std::uint32_t GetVertex(const TaGraphNode& node) { return node.GetIndex(); }
    /// The length in the mesh of what weighs 1.
    double GetUnit() const { return m_unit; }

private:
    TaGraph m_graph;
    std::vector<TaGraphNode*> m_nodes;
    TaGraphNode* m_nowhere;
    double m_unit;
};

} // namespace tamesh
