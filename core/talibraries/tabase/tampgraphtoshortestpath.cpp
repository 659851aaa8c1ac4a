#include "tabase/tampgraphtoshortestpath.h"

#include "groundwork/tucheckedcast.h"
#include "groundwork/tucondition.h"
#include "tabase/tagraph.h"
#include "tabase/tagraphsearch.h"

#include <exception>
#include <vector>

namespace {

/// The mark of a node in the heap, bit 0 of its attributes.
constexpr std::uint32_t kMarkInHeap = 1;
constexpr std::uint32_t kNodesPerPoll = 4096;
/// Which part of the whole is done when the search has ended.
constexpr double kSearchDone = 0.9;

} // namespace

TU_DEFINE_RTTI(TaMpGraphToShortestPath, TaMpAlgorithm, &TaMpGraphToShortestPath::CreateByFactory,
    &TaMpGraphToShortestPath::CloneByFactory);

const char16_t* const TaMpGraphToShortestPath::kSource
    = u"core/talibraries/tabase/tampgraphtoshortestpath";
const unsigned int TaMpGraphToShortestPath::kLineNoPath; // NOLINT: for a library that exports it

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

/// The search works on arrays, and brings what it has found into the nodes at its end, whatever
/// that is: they are then as if it had worked on them.
void TaMpGraphToShortestPath::compute()
{
    TuPreCondition<2>(u"start and end belong to the graph", TU_HERE,
        [this] { return m_start->GetGraph() == m_graph && m_end->GetGraph() == m_graph; });
    m_graph->CreateIndices();
    TaGraphSearch& search = m_graph->getSearch();
    search.Prepare(m_start->GetIndex(), m_end->GetIndex());
    for (TaGraphNode* node : { m_start, m_end }) {
        TaGraphNode::setLink(node->m_next, nullptr);
        TaGraphNode::setLink(node->m_previous, nullptr);
    }
    try {
        search.Run([this](double fraction) {
            setProgress(kSearchDone * fraction);
            return isBreak();
        });
    } catch (...) {
        publishWeights(false);
        throw;
    }
    publishWeights(true);
    if (wasBroken()) {
        return;
    }
    if (!search.IsReached(m_end->GetIndex())) {
        throw TuException(kSource, kLineNoPath);
    }
    linkPath(search.GetPath());
}

/// The weights, and the mark of nodes in the heap, where none is any more. Goes on to the last node
/// also where a poll fails.
void TaMpGraphToShortestPath::publishWeights(bool isPolling)
{
    const TaGraphSearch& search = m_graph->getSearch();
    std::exception_ptr failure;
    std::uint32_t done = 0;
    for (TaGraphNode* node : m_graph->m_nodes) {
        node->m_weight = search.GetWeight(done);
        node->RemoveAttributes(kMarkInHeap);
        if (++done % kNodesPerPoll == 0 && isPolling && failure == nullptr) {
            try {
                setProgress(kSearchDone + (1.0 - kSearchDone) * done / m_graph->GetCount());
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

/// `path` goes from the end to the start.
void TaMpGraphToShortestPath::linkPath(const std::vector<TaGraphNode*>& path)
{
    for (std::size_t i = 1; i < path.size(); ++i) {
        path[i]->SetNextNodeOnPath(path[i - 1]);
    }
    // What came next on an earlier path, and has been cut off from there, may lie on this one.
    for (std::size_t i = 1; i < path.size(); ++i) {
        path[i - 1]->SetPreviousNodeOnPath(path[i]);
    }
}
