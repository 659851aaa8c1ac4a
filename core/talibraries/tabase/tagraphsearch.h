#pragma once

#include "tabase/tagraphrows.h"
#include "tabase/taheap.h"

/// What a graph keeps for searches: the rows of its connections, and the arrays of the search for
/// shortest paths, by the numbers of the nodes. TaMpGraphToShortestPath says what is searched for.
class TaGraphSearch
{
public:
    using ShallStop = TaGraphRows::ShallStop;

    explicit TaGraphSearch(TaGraph& graph)
        : m_graph(graph)
        , m_rows(graph)
    {
    }

    void OnNodesChanged() noexcept { m_rows.OnNodesChanged(); }
    void OnConnectionsChanged(TaGraphNode& source) noexcept { m_rows.OnConnectionsChanged(source); }

    /// Begins a search in a graph whose nodes have valid numbers. Returns the weights, one for each
    /// node, where they will stay until the next search: 0 for the start, else the initial one.
    /// Where it throws, those of the last search are as they were.
    float* Prepare(std::uint32_t start, std::uint32_t end);
    /// Where it is stopped, or throws, the weights are those that it has come to.
    void Run(const ShallStop& shallStop);

    bool IsReached(std::uint32_t node) const;
    /// From the end to the start, of an end that was reached.
    std::vector<TaGraphNode*> GetPath() const;

private:
    using Heap = TaHeap<TaHeapElementSimple<std::uint32_t, float>, TaHeapPolicyPrecedenceMin,
        TaHeapPolicyOperatorUpdatable>;

    void relaxRow(std::uint32_t node, const ShallStop& shallStop);
    void relax(
        std::uint32_t node, const TaGraphRows::SConnection& connection, const ShallStop& shallStop);
    void checkForCycle(const ShallStop& shallStop);
    bool isStopped(std::size_t steps, const ShallStop& shallStop);

    TaGraph& m_graph;
    TaGraphRows m_rows;
    std::uint32_t m_start = 0;
    std::uint32_t m_end = 0;
    std::vector<float> m_weights;
    std::vector<std::uint32_t> m_predecessors; // those of nodes that were reached
    Heap m_heap;

    std::size_t m_taken = 0; // nodes
    std::size_t m_relaxations = 0; // since the last look for a cycle
    std::size_t m_steps = 0; // since the last poll
    bool m_isStopped = false;
};
