#include "tabase/tampgraphtoshortestpath.h"

#include "groundwork/tucheckedcast.h"
#include "groundwork/tucondition.h"
#include "tabase/tagraph.h"
#include "tabase/tagraphsearch.h"

#include <vector>

namespace {

/// Bit 0 of the attributes of a node is the mark of one in the heap of a search. The search itself
/// knows that by numbers: the bit stays clear.
constexpr std::uint32_t kMarkInHeap = 1;

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

void TaMpGraphToShortestPath::compute()
{
    TuPreCondition<2>(u"start and end belong to the graph", TU_HERE,
        [this] { return m_start->GetGraph() == m_graph && m_end->GetGraph() == m_graph; });
    m_graph->CreateIndices();
    TaGraphSearch& search = m_graph->getSearch();
    m_graph->m_searchWeights = search.Prepare(m_start->GetIndex(), m_end->GetIndex());
    m_graph->RemoveAttributes(kMarkInHeap);
    for (TaGraphNode* node : { m_start, m_end }) {
        TaGraphNode::setLink(node->m_next, nullptr);
        TaGraphNode::setLink(node->m_previous, nullptr);
    }
    search.Run([this](double fraction) {
        setProgress(fraction);
        return isBreak();
    });
    if (wasBroken()) {
        return;
    }
    if (!search.IsReached(m_end->GetIndex())) {
        throw TuException(kSource, kLineNoPath);
    }
    linkPath(search.GetPath());
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
