#include "tabase/tampgraphtoshortestpath.h"

#include "groundwork/tucheckedcast.h"
#include "groundwork/tucondition.h"
#include "tabase/tagraph.h"
#include "tabase/tagraphrows.h"
#include "tabase/taheap.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <stdexcept>
#include <vector>

namespace {

constexpr std::uint32_t kNoNode = std::numeric_limits<std::uint32_t>::max();
constexpr std::size_t kStepsPerPoll = 4096;

/// The mark of a node in the heap, bit 0 of its attributes.
constexpr std::uint32_t kMarkInHeap = 1;

/// Which part of the whole is done when the rows are there, and when the search has ended.
constexpr double kRowsDone = 0.4;
constexpr double kSearchDone = 0.9;

[[noreturn]] void throwCycle()
{
    throw TuException(TU_HERE,
        std::runtime_error("the weights along a cycle of the graph add up to less than 0, so that"
                           " there is no shortest path"));
}

} // namespace

TU_DEFINE_RTTI(TaMpGraphToShortestPath, TaMpAlgorithm, &TaMpGraphToShortestPath::CreateByFactory,
    &TaMpGraphToShortestPath::CloneByFactory);

const char16_t* const TaMpGraphToShortestPath::kSource
    = u"core/talibraries/tabase/tampgraphtoshortestpath";
const unsigned int TaMpGraphToShortestPath::kLineNoPath; // NOLINT: for a library that exports it

/// What one search knows of the nodes, by their numbers.
class TaMpGraphToShortestPath::Search
{
public:
    explicit Search(TaMpGraphToShortestPath& algorithm)
        : m_algorithm(algorithm)
        , m_start(algorithm.m_start->GetIndex())
        , m_end(algorithm.m_end->GetIndex())
        , m_weights(algorithm.m_graph->GetCount(), TaGraphNode::GetInitialWeight())
        , m_predecessors(algorithm.m_graph->GetCount(), kNoNode)
    {
        m_heap.SetNodeCount(m_weights.size());
        m_weights[m_start] = 0.0F;
    }

    void Run();

    float GetWeight(std::uint32_t node) const { return m_weights[node]; }
    bool IsEndReached() const { return m_weights[m_end] != TaGraphNode::GetInitialWeight(); }
    /// The nodes from the end to the start.
    std::vector<std::uint32_t> GetPath() const;

private:
    using Heap = TaHeap<TaHeapElementSimple<std::uint32_t, float>, TaHeapPolicyPrecedenceMin,
        TaHeapPolicyOperatorUpdatable>;

    void relaxRow(std::uint32_t node, std::span<const TaGraphRows::SConnection> row);
    void relax(std::uint32_t node, const TaGraphRows::SConnection& connection);
    void checkForCycle();
    bool isStopped(std::size_t steps);

    TaMpGraphToShortestPath& m_algorithm;
    const std::uint32_t m_start;
    const std::uint32_t m_end;
    std::vector<float> m_weights;
    std::vector<std::uint32_t> m_predecessors;
    Heap m_heap;
    bool m_canHaveCycle = false;
    std::size_t m_relaxations = 0; // since the last check for a cycle
    std::size_t m_taken = 0; // nodes
    std::size_t m_steps = 0; // since the last poll
};

void TaMpGraphToShortestPath::Search::Run()
{
    const TaGraphRows* const rows
        = TaGraphRows::Update(*m_algorithm.m_graph, [this](double fraction) {
              m_algorithm.setProgress(kRowsDone * fraction);
              return m_algorithm.isBreak();
          });
    if (rows == nullptr) {
        return;
    }
    m_canHaveCycle = rows->HasNegativeWeights();
    m_heap.Push({ m_start, 0.0F });
    while (!m_heap.IsEmpty()) {
        const std::uint32_t node = m_heap.Pop().node;
        if (node == m_end || isStopped(1)) {
            return;
        }
        ++m_taken;
        relaxRow(node, rows->GetRow(node));
    }
}

void TaMpGraphToShortestPath::Search::relaxRow(
    std::uint32_t node, std::span<const TaGraphRows::SConnection> row)
{
    while (!row.empty()) {
        const auto part = row.first(std::min(row.size(), kStepsPerPoll));
        for (const TaGraphRows::SConnection& connection : part) {
            relax(node, connection);
        }
        row = row.subspan(part.size());
        if (isStopped(part.size())) {
            return;
        }
    }
}

inline void TaMpGraphToShortestPath::Search::relax(
    std::uint32_t node, const TaGraphRows::SConnection& connection)
{
    // The node's own weight may have been lowered, by a connection to itself.
    const float candidate = m_weights[node] + connection.weight;
    if (!(m_weights[connection.target] > candidate)) {
        return;
    }
    m_weights[connection.target] = candidate;
    m_predecessors[connection.target] = node;
    m_heap.PushOrUpdate(connection.target, candidate);
    if (m_canHaveCycle && ++m_relaxations == m_weights.size()) {
        m_relaxations = 0;
        checkForCycle();
    }
}

/// Without a cycle of negative weight the predecessors lead from each node to the start, which has
/// none. Looking at them once per as many relaxations as there are nodes costs little, and a search
/// that would not end is found soon; the number of relaxations itself proves nothing, for weights
/// below 0 can lawfully need very many.
void TaMpGraphToShortestPath::Search::checkForCycle()
{
    std::vector<std::uint32_t> walks(m_weights.size(), kNoNode); // which walk came by
    for (std::uint32_t first = 0; first != walks.size(); ++first) {
        std::uint32_t node = first;
        while (node != kNoNode && walks[node] == kNoNode) {
            walks[node] = first;
            node = m_predecessors[node];
        }
        if (m_predecessors[m_start] != kNoNode || (node != kNoNode && walks[node] == first)) {
            throwCycle();
        }
        if (isStopped(1)) {
            return;
        }
    }
}

std::vector<std::uint32_t> TaMpGraphToShortestPath::Search::GetPath() const
{
    std::vector<std::uint32_t> path(1, m_end);
    while (path.back() != m_start) {
        if (path.size() == m_weights.size()) {
            throwCycle();
        }
        path.push_back(m_predecessors[path.back()]);
    }
    return path;
}

/// A poll, now and then.
inline bool TaMpGraphToShortestPath::Search::isStopped(std::size_t steps)
{
    m_steps += steps;
    if (m_steps >= kStepsPerPoll) {
        m_steps = 0;
        const double taken = static_cast<double>(m_taken) / static_cast<double>(m_weights.size());
        m_algorithm.setProgress(kRowsDone + (kSearchDone - kRowsDone) * std::min(taken, 1.0));
        m_algorithm.isBreak();
    }
    return m_algorithm.wasBroken();
}

IObject* TaMpGraphToShortestPath::CreateByFactory() { return new TaMpGraphToShortestPath; }

IObject* TaMpGraphToShortestPath::CloneByFactory(const IObject& object)
{
    return new TaMpGraphToShortestPath(TuCheckedCast<TaMpGraphToShortestPath>(object));
}

void TaMpGraphToShortestPath::SetInput(TaGraph* graph, TaGraphNode* start, TaGraphNode* end)
{
    m_graph = graph;
    m_start = start;
    m_end = end;
    setInputChanged();
}

TaGraphPathIterator TaMpGraphToShortestPath::GetOutput() const
{
    checkOutputData();
    return { *m_start, *m_end, TaGraphPathIterator::eD_Forward };
}

bool TaMpGraphToShortestPath::checkPreConditions() const
{
    return m_graph != nullptr && m_start != nullptr && m_end != nullptr;
}

/// The search works on numbers and arrays, and brings what it has found into the nodes at its end,
/// whatever that is: they are then as if it had worked on them.
void TaMpGraphToShortestPath::compute()
{
    TuPreCondition<2>(u"start and end belong to the graph", TU_HERE,
        [this] { return m_start->GetGraph() == m_graph && m_end->GetGraph() == m_graph; });
    m_graph->CreateIndices();
    Search search(*this);
    for (TaGraphNode* node : { m_start, m_end }) {
        TaGraphNode::setLink(node->m_next, nullptr);
        TaGraphNode::setLink(node->m_previous, nullptr);
    }
    try {
        search.Run();
    } catch (...) {
        publishWeights(search, false);
        throw;
    }
    publishWeights(search, true);
    if (wasBroken()) {
        return;
    }
    if (!search.IsEndReached()) {
        throw TuException(kSource, kLineNoPath);
    }
    linkPath(search);
}

/// Weights, and the mark of nodes in the heap, which none has any more. It goes on to the last node
/// also where a poll fails.
void TaMpGraphToShortestPath::publishWeights(const Search& search, bool isPolling)
{
    std::exception_ptr failure;
    std::size_t steps = 0;
    for (TaGraphNode* node : m_graph->m_nodes) {
        node->m_weight = search.GetWeight(node->m_index);
        node->RemoveAttributes(kMarkInHeap);
        if (++steps % kStepsPerPoll == 0 && isPolling && failure == nullptr) {
            try {
                setProgress(kSearchDone
                    + (1.0 - kSearchDone) * static_cast<double>(steps)
                        / static_cast<double>(m_graph->GetCount()));
                isBreak();
            } catch (...) {
                failure = std::current_exception();
            }
        }
    }
    if (failure != nullptr) {
        std::rethrow_exception(failure);
    }
}

/// From the end to the start.
void TaMpGraphToShortestPath::linkPath(const Search& search)
{
    const std::span<TaGraphNode* const> nodes = m_graph->m_rows->GetNodes();
    const std::vector<std::uint32_t> path = search.GetPath();
    for (std::size_t i = 1; i < path.size(); ++i) {
        nodes[path[i]]->SetNextNodeOnPath(nodes[path[i - 1]]);
    }
    // What came next on an earlier path, and has been cut off from there, may lie on this path.
    for (std::size_t i = 1; i < path.size(); ++i) {
        nodes[path[i - 1]]->SetPreviousNodeOnPath(nodes[path[i]]);
    }
}
