#pragma once

#include "tabase/tanode.h"
#include "tamesh/meshgraph.h"

#include <memory>
#include <utility>

namespace tamesh {

/// A node below a mesh that holds the graph of its edges. Searches write into the graph, so who
/// searches holds a write lock on this node. It is not stored: it can be made again.
class TaMeshGraphNode final : public TaNode
{
    TU_DECLARE_RTTI

public:
    static constexpr const char16_t* kName = u"Graph";

    explicit TaMeshGraphNode(std::unique_ptr<MeshGraph> graph)
        : TaNode(kName, true, false)
        , m_graph(std::move(graph))
    {
    }

    MeshGraph& GetGraph() { return *m_graph; }

private:
    std::unique_ptr<MeshGraph> m_graph;
};

} // namespace tamesh
