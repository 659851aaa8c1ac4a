#include "lemongraphs.h"

#include <lemon/dijkstra.h>
#include <lemon/list_graph.h>
#include <lemon/smart_graph.h>
#include <lemon/static_graph.h>

#include <algorithm>
#include <type_traits>

template <ELemonGraph Kind> struct LemonGraph<Kind>::SContents
{
    using Graph = std::conditional_t<Kind == eLG_Lists, lemon::ListDigraph,
        std::conditional_t<Kind == eLG_Smart, lemon::SmartDigraph, lemon::StaticDigraph>>;
    using Weights = typename Graph::template ArcMap<float>;

    Graph graph;
    Weights weights{ graph };
    lemon::Dijkstra<Graph, Weights> search{ graph, weights };
};

template <ELemonGraph Kind>
LemonGraph<Kind>::LemonGraph(const SGraphInput& input)
    : m_contents(std::make_unique<SContents>())
{
    using Graph = typename SContents::Graph;
    Graph& graph = m_contents->graph;
    if constexpr (Kind == eLG_Static) {
        std::vector<SGraphInput::SConnection> sorted(input.connections);
        std::stable_sort(sorted.begin(), sorted.end(),
            [](const auto& a, const auto& b) { return a.from < b.from; });
        std::vector<std::pair<int, int>> ends;
        ends.reserve(sorted.size());
        for (const SGraphInput::SConnection& connection : sorted) {
            ends.emplace_back(connection.from, connection.to);
        }
        graph.build(static_cast<int>(input.nodeCount), ends.begin(), ends.end());
        for (std::size_t i = 0; i != sorted.size(); ++i) {
            m_contents->weights[Graph::arcFromId(static_cast<int>(i))] = sorted[i].weight;
        }
    } else {
        std::vector<typename Graph::Node> nodes;
        for (std::uint32_t i = 0; i != input.nodeCount; ++i) {
            nodes.push_back(graph.addNode());
        }
        for (const SGraphInput::SConnection& connection : input.connections) {
            m_contents->weights[graph.addArc(nodes[connection.from], nodes[connection.to])]
                = connection.weight;
        }
    }
}

template <ELemonGraph Kind> LemonGraph<Kind>::~LemonGraph() = default;

template <ELemonGraph Kind> float LemonGraph<Kind>::Query(std::uint32_t from, std::uint32_t to)
{
    using Graph = typename SContents::Graph;
    const auto end = Graph::nodeFromId(static_cast<int>(to));
    m_contents->search.run(Graph::nodeFromId(static_cast<int>(from)), end);
    return m_contents->search.dist(end);
}

template class LemonGraph<eLG_Lists>;
template class LemonGraph<eLG_Smart>;
template class LemonGraph<eLG_Static>;
