#include "tabase/tagraphrows.h"

#include "tabase/tagraph.h"

const TaGraphRows* TaGraphRows::Update(TaGraph& graph, const ShallStop& shallStop)
{
    if (!graph.m_areRowsValid) {
        if (graph.m_rows == nullptr) {
            graph.m_rows = std::make_unique<TaGraphRows>();
        }
        graph.m_areRowsValid = graph.m_rows->build(graph, shallStop);
    }
    return graph.m_areRowsValid ? graph.m_rows.get() : nullptr;
}

bool TaGraphRows::build(TaGraph& graph, const ShallStop& shallStop)
{
    constexpr std::size_t kStepsPerPoll = 4096;
    m_nodes.assign(graph.m_nodes.begin(), graph.m_nodes.end());
    m_begins.assign(1, 0);
    m_begins.reserve(m_nodes.size() + 1);
    m_connections.clear();
    m_hasNegativeWeights = false;
    std::size_t steps = 0;
    for (const TaGraphNode* node : m_nodes) {
        for (const TuSmartPointer<TaGraphConnection>& connection : node->m_outgoing) {
            const TaGraphNode& target = *connection->m_target;
            const float weight = connection->m_weight;
            if (target.m_graph == &graph) {
                m_connections.push_back({ target.m_index, weight });
                m_hasNegativeWeights = m_hasNegativeWeights || weight < 0.0F;
            }
            if (++steps % kStepsPerPoll == 0 && shallStop(getFraction())) {
                return false;
            }
        }
        m_begins.push_back(m_connections.size());
        if (++steps % kStepsPerPoll == 0 && shallStop(getFraction())) {
            return false;
        }
    }
    return true;
}

/// How much of the graph is in the rows.
double TaGraphRows::getFraction() const
{
    return static_cast<double>(m_begins.size()) / static_cast<double>(m_nodes.size() + 1);
}
