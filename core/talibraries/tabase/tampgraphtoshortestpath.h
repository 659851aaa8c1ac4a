#pragma once

#include "tabase/taalgorithmfamilies.h"
#include "tabase/tagraphpathiterator.h"

#include <vector>

class TaGraph;
class TaGraphNode;

/// Finds the path between two nodes of a graph whose connections have the smallest sum of weights,
/// and threads it through the nodes.
///
///     TaMpGraphToShortestPath search;
///     search.SetInput(&graph, from, to);
///     search.SetBreakEvent(cancel);
///     if (search.Compute(TaAlgorithm::eCF_None))
///         for (const TaGraphNode& node : search.GetOutput())
///             Show(node);
///
/// Each node that was reached has as its weight the sum of the weights on the way to it; the others
/// have the initial weight. The weights of those that the search had not done with when it came to
/// the end are upper bounds.
///
/// The method is that of Dijkstra ("A note on two problems in connexion with graphs", 1959) with
/// two rules of its own. The search ends where it takes the end node, and a node whose weight is
/// lowered later is taken once more. With weights below 0 the path is therefore that of these
/// rules, not always the cheapest one. A sum is rounded to a float at each step and must be
/// smaller than what was there before: of two equal ways the one found first stays, weights of
/// +infinity and NaN are never gone, and an end at exactly the largest float is not reached.
///
/// It asks for a break every few thousand steps. Only a list of very many connections that nobody
/// has looked at is first put in order as a whole, a million in some tenths of a second.
///
/// The first search makes a compact picture of the graph, 8 bytes a connection and 28 a node, which
/// the graph keeps for the next: those read again what has changed.
///
/// Ownership: refers to the graph and to both nodes, which outlive the computation, and its output.
/// Threads:   as TaAlgorithm. It writes into the nodes: one search at a time in a graph.
/// Failure:   of Compute, besides that of TaAlgorithm: TuException at kLineNoPath where no path
///            leads to the end; the weights stay. TuException, too, for weights below 0 along a
///            cycle that is gone round for ever (it is found after as many steps as the graph has
///            nodes, or some more). TuExceptionPreconditionViolation where a node is not in the
///            graph.
class TABASE_API TaMpGraphToShortestPath : public TaMpAlgorithm
{
    TU_DECLARE_RTTI

public:
    static const char16_t* const kSource;
    static constexpr unsigned int kLineNoPath = 162;

    TaMpGraphToShortestPath() = default;
    TaMpGraphToShortestPath(const TaMpGraphToShortestPath&) = default;
    TaMpGraphToShortestPath& operator=(const TaMpGraphToShortestPath&) = default;
    ~TaMpGraphToShortestPath() override = default;

    void SetInput(TaGraph* graph, TaGraphNode* start, TaGraphNode* end);
    /// From start to end, forward. TaExceptionNoOutputData where no path has been computed.
    TaGraphPathIterator GetOutput() const;

protected:
    bool checkPreConditions() const override;
    void compute() override;
    bool checkPostConditions() const override { return !wasBroken(); }

private:
    static void linkPath(const std::vector<TaGraphNode*>& path);

    static IObject* CreateByFactory();
    static IObject* CloneByFactory(const IObject& object);

    TaGraph* m_graph = nullptr;
    TaGraphNode* m_start = nullptr;
    TaGraphNode* m_end = nullptr;
};
