#include "tabase/tagraphsearch.h"

#include "tabase/tagraph.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace {

constexpr std::uint32_t kNoNode = std::numeric_limits<std::uint32_t>::max();
constexpr std::size_t kStepsPerPoll = 4096;
/// Which part of the whole is done when the rows are there.
constexpr double kRowsDone = 0.4;

[[noreturn]] void throwCycle()
{
    throw TuException(TU_HERE,
        std::runtime_error("the weights along a cycle of the graph add up to less than 0, so that"
                           " there is no shortest path"));
}

} // namespace

float* TaGraphSearch::Prepare(std::uint32_t start, std::uint32_t end)
{
    const std::uint32_t count = m_graph.GetCount();
    m_weights.reserve(count); // where this moves them, nodes have come, and taken theirs before
    if (m_predecessors.size() == count) {
        m_heap.RemoveAll(); // what an earlier search has left
    } else {
        m_predecessors.clear(); // so that a failure is not taken for the size
        m_heap.SetNodeCount(count);
        m_predecessors.resize(count);
    }
    m_weights.assign(count, TaGraphNode::GetInitialWeight());
    m_weights[start] = 0.0F;
    m_start = start;
    m_end = end;
    m_taken = 0;
    m_relaxations = 0;
    m_steps = 0;
    return m_weights.data();
}

void TaGraphSearch::Run(const ShallStop& shallStop)
{
    // Asked once in any case: a small graph is done before the next poll.
    m_isStopped = shallStop(0.0) || !m_rows.Update([&shallStop](double fraction) {
        return shallStop(kRowsDone * fraction);
    });
    if (m_isStopped) {
        return;
    }
    if (m_rows.HasNegativeWeights()) {
        std::fill(m_predecessors.begin(), m_predecessors.end(), kNoNode);
    }
    m_heap.Push({ m_start, 0.0F });
    while (!m_heap.IsEmpty()) {
        const std::uint32_t node = m_heap.Pop().node;
        if (node == m_end || isStopped(1, shallStop)) {
            return;
        }
        ++m_taken;
        relaxRow(node, shallStop);
    }
}

void TaGraphSearch::relaxRow(std::uint32_t node, const ShallStop& shallStop)
{
    std::span<const TaGraphRows::SConnection> row = m_rows.GetRow(node);
    while (!row.empty()) {
        const auto part = row.first(std::min(row.size(), kStepsPerPoll));
        for (const TaGraphRows::SConnection& connection : part) {
            relax(node, connection, shallStop);
        }
        row = row.subspan(part.size());
        if (isStopped(part.size(), shallStop)) {
            return;
        }
    }
}

inline void TaGraphSearch::relax(
    std::uint32_t node, const TaGraphRows::SConnection& connection, const ShallStop& shallStop)
{
    // The node's own weight may have been lowered, by a connection to itself.
    const float candidate = m_weights[node] + connection.weight;
    if (!(m_weights[connection.target] > candidate)) {
        return;
    }
    m_weights[connection.target] = candidate;
    m_predecessors[connection.target] = node;
    m_heap.PushOrUpdate(connection.target, candidate);
    if (++m_relaxations == m_weights.size()) {
        m_relaxations = 0;
        if (m_rows.HasNegativeWeights()) {
            checkForCycle(shallStop);
        }
    }
}

/// Without a cycle of negative weight the predecessors lead from each node to the start, which has
/// none. Looking at them once per as many relaxations as there are nodes costs little, and finds a
/// search that would not end; how many relaxations there were proves nothing, for weights below 0
/// can lawfully need very many.
void TaGraphSearch::checkForCycle(const ShallStop& shallStop)
{
    if (m_predecessors[m_start] != kNoNode) {
        throwCycle();
    }
    std::vector<std::uint32_t> walks(m_weights.size(), kNoNode); // which walk came by
    for (std::uint32_t first = 0; first != walks.size(); ++first) {
        std::uint32_t node = first;
        while (node != kNoNode && walks[node] == kNoNode) {
            walks[node] = first;
            node = m_predecessors[node];
        }
        if (node != kNoNode && walks[node] == first) {
            throwCycle();
        }
        if (isStopped(1, shallStop)) {
            return;
        }
    }
}

bool TaGraphSearch::IsReached(std::uint32_t node) const
{
    return m_weights[node] != TaGraphNode::GetInitialWeight();
}

std::vector<TaGraphNode*> TaGraphSearch::GetPath() const
{
    const std::vector<TaGraphNode*>& nodes = m_rows.GetNodes();
    std::vector<TaGraphNode*> path(1, nodes[m_end]);
    for (std::uint32_t node = m_end; node != m_start;) {
        if (path.size() == nodes.size()) {
            throwCycle();
        }
        node = m_predecessors[node];
        path.push_back(nodes[node]);
    }
    return path;
}

/// A poll, now and then.
inline bool TaGraphSearch::isStopped(std::size_t steps, const ShallStop& shallStop)
{
    m_steps += steps;
    if (m_steps >= kStepsPerPoll) {
        m_steps = 0;
        const double taken = static_cast<double>(m_taken) / static_cast<double>(m_weights.size());
        m_isStopped = shallStop(kRowsDone + (1.0 - kRowsDone) * std::min(taken, 1.0));
    }
    return m_isStopped;
}
