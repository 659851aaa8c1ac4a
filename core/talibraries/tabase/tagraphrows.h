#pragma once

#include "tabase/tagraphnode.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

class TaGraph;

/// A compact picture of a graph: for each node a row of its outgoing connections, in the order of
/// the list, by the numbers of their targets. A search walks it many times faster than the lists.
/// Connections that lead out of the graph are left out.
///
/// It is told of each change and brought up to date before it is used: rows of nodes whose
/// connections have changed are read again, the others stay. Nodes that come or go change all.
class TaGraphRows
{
public:
    struct SConnection
    {
        std::uint32_t target;
        float weight;
    };
    /// Is told now and then which fraction of the work is done, and answers whether to stop.
    using ShallStop = std::function<bool(double fraction)>;

    explicit TaGraphRows(TaGraph& graph)
        : m_graph(graph)
    {
    }

    void OnNodesChanged() noexcept;
    void OnConnectionsChanged(TaGraphNode& source) noexcept;

    /// The numbers of the nodes are valid. False where it was stopped: there are no rows then.
    bool Update(const ShallStop& shallStop);

    const std::vector<TaGraphNode*>& GetNodes() const { return m_nodes; }
    std::span<const SConnection> GetRow(std::uint32_t node) const
    {
        return { m_connections.data() + m_begins[node], m_connections.data() + m_begins[node + 1] };
    }
    /// Whether some weight is, or was lately, less than 0.
    bool HasNegativeWeights() const { return m_hasNegativeWeights; }

private:
    class Reader;

    bool readAll(const ShallStop& shallStop);
    bool readChanged(const ShallStop& shallStop);
    bool replaceRows(const TaGraphRows& rows, const ShallStop& shallStop);
    bool mergeRows(const TaGraphRows& rows, const ShallStop& shallStop);

    TaGraph& m_graph;
    bool m_areValid = false; // but for the rows of these:
    std::vector<TaGraphNode*> m_changed;
    std::vector<TaGraphNode*> m_nodes;
    std::vector<std::size_t> m_begins; // of the rows in m_connections, and the end of the last
    std::vector<SConnection> m_connections;
    bool m_hasNegativeWeights = false;
};
