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
/// It is the graph's, which keeps it from search to search and knows when it no longer holds.
class TaGraphRows
{
public:
    struct SConnection
    {
        std::uint32_t target;
        float weight;
    };

    using ShallStop = std::function<bool(double fraction)>;

    /// Pictures the graph, whose indices are valid, unless it is as it was when that was last done.
    /// Tells `shallStop` every few thousand steps which fraction is done; null where that answers
    /// true. What is returned holds until the graph changes.
    static const TaGraphRows* Update(TaGraph& graph, const ShallStop& shallStop);

    std::span<TaGraphNode* const> GetNodes() const { return m_nodes; }
    std::span<const SConnection> GetRow(std::uint32_t node) const
    {
        return { m_connections.data() + m_begins[node], m_connections.data() + m_begins[node + 1] };
    }
    /// Whether some weight is less than 0.
    bool HasNegativeWeights() const { return m_hasNegativeWeights; }

private:
    bool build(TaGraph& graph, const ShallStop& shallStop);
    double getFraction() const;

    std::vector<TaGraphNode*> m_nodes;
    std::vector<std::size_t> m_begins; // of the rows in m_connections, and the end of the last
    std::vector<SConnection> m_connections;
    bool m_hasNegativeWeights = false;
};
