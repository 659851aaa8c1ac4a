#pragma once

// Our graph and its peers with one face: built from connections, asked for the length of the
// shortest path. All of them find the path, too, and keep what they can from query to query.

#include "graphinputs.h"
#if defined(TA_PEER_LEMON)
#include "lemongraphs.h"
#endif

#include "tabase/tagraph.h"
#include "tabase/tampgraphtoshortestpath.h"

#if defined(TA_PEER_BOOST)
#include <boost/graph/adjacency_list.hpp>
#include <boost/graph/compressed_sparse_row_graph.hpp>
#include <boost/graph/dijkstra_shortest_paths.hpp>
#endif
#if defined(TA_PEER_IGRAPH)
#include <igraph/igraph.h>
#endif

#include <algorithm>

class TaBaseGraph
{
public:
    explicit TaBaseGraph(const SGraphInput& input)
    {
        m_nodes.reserve(input.nodeCount);
        for (std::uint32_t i = 0; i != input.nodeCount; ++i) {
            m_nodes.push_back(new TaGraphNode);
            m_graph.InsertNode(m_nodes.back());
        }
        for (const SGraphInput::SConnection& connection : input.connections) {
            m_nodes[connection.from]->AddConnection(*m_nodes[connection.to], connection.weight);
        }
    }
    float Query(std::uint32_t from, std::uint32_t to)
    {
        m_search.SetInput(&m_graph, m_nodes[from], m_nodes[to]);
        m_search.Compute(TaAlgorithm::eCF_Throw);
        return m_nodes[to]->GetWeight();
    }
    /// A weight, and back.
    void Change()
    {
        TaGraphConnection& connection = *m_nodes.front()->GetOutgoingConnections().GetHead();
        const float weight = connection.GetWeight();
        connection.SetWeight(weight + 1);
        connection.SetWeight(weight);
    }

private:
    TaGraph m_graph;
    std::vector<TaGraphNode*> m_nodes;
    TaMpGraphToShortestPath m_search;
};

#if defined(TA_PEER_BOOST)
struct SBoostWeight
{
    float weight;
};

/// Stops a search at its end, in the way of that library.
class BoostStop : public boost::default_dijkstra_visitor
{
public:
    struct SReached
    {
    };

    explicit BoostStop(std::size_t end)
        : m_end(end)
    {
    }
    template <class Vertex, class Graph> void examine_vertex(Vertex vertex, const Graph&) const
    {
        if (vertex == m_end) {
            throw SReached();
        }
    }

private:
    std::size_t m_end;
};

template <class Graph> class BoostGraph
{
public:
    using Vertex = typename boost::graph_traits<Graph>::vertex_descriptor;

    explicit BoostGraph(const SGraphInput& input);
    float Query(std::uint32_t from, std::uint32_t to)
    {
        m_distances.resize(num_vertices(m_graph));
        m_predecessors.resize(num_vertices(m_graph));
        const auto index = get(boost::vertex_index, m_graph);
        try {
            boost::dijkstra_shortest_paths(m_graph, Vertex(from),
                boost::weight_map(get(&SBoostWeight::weight, m_graph))
                    .distance_map(boost::make_iterator_property_map(m_distances.begin(), index))
                    .predecessor_map(
                        boost::make_iterator_property_map(m_predecessors.begin(), index))
                    .visitor(BoostStop(to)));
        } catch (const BoostStop::SReached&) { // NOLINT(bugprone-empty-catch)
        }
        return m_distances[to];
    }

private:
    Graph m_graph;
    std::vector<float> m_distances;
    std::vector<Vertex> m_predecessors;
};

using BoostLists = BoostGraph<boost::adjacency_list<boost::listS, boost::vecS,
    boost::bidirectionalS, boost::no_property, SBoostWeight>>;
using BoostRows = BoostGraph<boost::compressed_sparse_row_graph<boost::directedS,
    boost::no_property, SBoostWeight, boost::no_property, std::uint32_t, std::uint32_t>>;

template <>
inline BoostLists::BoostGraph(const SGraphInput& input)
    : m_graph(input.nodeCount)
{
    for (const SGraphInput::SConnection& connection : input.connections) {
        add_edge(connection.from, connection.to, SBoostWeight{ connection.weight }, m_graph);
    }
}

template <> inline BoostRows::BoostGraph(const SGraphInput& input)
{
    std::vector<std::pair<std::uint32_t, std::uint32_t>> ends;
    std::vector<SBoostWeight> weights;
    for (const SGraphInput::SConnection& connection : input.connections) {
        ends.emplace_back(connection.from, connection.to);
        weights.push_back({ connection.weight });
    }
    m_graph = { boost::edges_are_unsorted_multi_pass, ends.begin(), ends.end(), weights.begin(),
        input.nodeCount };
}
#endif

#if defined(TA_PEER_IGRAPH)
class IGraph
{
public:
    explicit IGraph(const SGraphInput& input)
    {
        igraph_vector_int_t ends;
        igraph_vector_int_init(&ends, static_cast<igraph_integer_t>(2 * input.connections.size()));
        igraph_vector_init(&m_weights, static_cast<igraph_integer_t>(input.connections.size()));
        for (std::size_t i = 0; i != input.connections.size(); ++i) {
            VECTOR(ends)[2 * i] = input.connections[i].from;
            VECTOR(ends)[2 * i + 1] = input.connections[i].to;
            VECTOR(m_weights)[i] = static_cast<double>(input.connections[i].weight);
        }
        igraph_create(&m_graph, &ends, input.nodeCount, IGRAPH_DIRECTED);
        igraph_vector_int_destroy(&ends);
        igraph_vector_int_init(&m_path, 0);
    }
    IGraph(const IGraph&) = delete;
    IGraph& operator=(const IGraph&) = delete;
    ~IGraph()
    {
        igraph_vector_int_destroy(&m_path);
        igraph_destroy(&m_graph);
        igraph_vector_destroy(&m_weights);
    }
    float Query(std::uint32_t from, std::uint32_t to)
    {
        igraph_get_shortest_path_dijkstra(
            &m_graph, nullptr, &m_path, from, to, &m_weights, IGRAPH_OUT);
        double length = 0;
        for (igraph_integer_t i = 0; i != igraph_vector_int_size(&m_path); ++i) {
            length += VECTOR(m_weights)[VECTOR(m_path)[i]];
        }
        return static_cast<float>(length);
    }

private:
    igraph_t m_graph;
    igraph_vector_t m_weights;
    igraph_vector_int_t m_path;
};
#endif
