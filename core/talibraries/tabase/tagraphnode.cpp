#include "tabase/tagraphnode.h"

#include "tabase/tagraph.h"

#include <limits>

TaGraphNode::TaGraphNode(const CString& name)
    : TuIClassName(name)
    , m_weight(GetInitialWeight())
{
}

TaGraphNode::~TaGraphNode()
{
    RemoveAllConnections();
    removeIncomingConnections();
    leavePaths();
}

float TaGraphNode::GetInitialWeight() { return std::numeric_limits<float>::max(); }

float TaGraphNode::GetWeight() const
{
    const float* const weights = m_graph != nullptr ? m_graph->m_searchWeights : nullptr;
    return weights != nullptr ? weights[m_index] : m_weight;
}

void TaGraphNode::SetWeight(float weight)
{
    float* const weights = m_graph != nullptr ? m_graph->m_searchWeights : nullptr;
    (weights != nullptr ? weights[m_index] : m_weight) = weight;
}

void TaGraphNode::AddAttributes(std::uint32_t mask)
{
    m_attributes |= mask;
    if (m_graph != nullptr) {
        m_graph->m_attributesInUse |= mask;
    }
}

TaGraphConnection& TaGraphNode::AddConnection(TaGraphNode& target, float weight)
{
    return TaGraphConnection::connect(*this, target, weight);
}

void TaGraphNode::RemoveConnection(const TaGraphNode& target)
{
    for (const TuSmartPointer<TaGraphConnection>& connection : m_outgoing) {
        if (connection->m_target == &target) {
            TaGraphConnection::disconnect(*connection);
            return;
        }
    }
}

void TaGraphNode::RemoveAllConnections()
{
    while (!m_outgoing.IsEmpty()) {
        TaGraphConnection::disconnect(*m_outgoing.getHeadNode()->element);
    }
}

void TaGraphNode::removeIncomingConnections()
{
    while (!m_incoming.IsEmpty()) {
        TaGraphConnection::disconnect(*m_incoming.getHeadNode()->element);
    }
}

void TaGraphNode::SetNextNodeOnPath(TaGraphNode* node)
{
    if (m_next != nullptr) {
        setLink(m_next->m_previous, nullptr);
    }
    setLink(m_next, node);
    if (node != nullptr) {
        node->SetPreviousNodeOnPath(this);
    }
}

void TaGraphNode::setLink(TaGraphNode*& link, TaGraphNode* node)
{
    if (link != nullptr) {
        --link->m_linkCount;
    }
    link = node;
    if (node != nullptr) {
        ++node->m_linkCount;
    }
}

/// So that no link leads to a node that is gone.
void TaGraphNode::leavePaths()
{
    if (m_previous != nullptr && m_previous->m_next == this) {
        setLink(m_previous->m_next, nullptr);
    }
    if (m_next != nullptr && m_next->m_previous == this) {
        setLink(m_next->m_previous, nullptr);
    }
    setLink(m_previous, nullptr);
    setLink(m_next, nullptr);
    // What is left are links of older paths that lead here one way only, which are rare.
    if (m_linkCount != 0 && m_graph != nullptr) {
        m_graph->clearLinksTo(*this);
    }
}

void TaGraphNode::onConnectionsChanged()
{
    if (m_graph != nullptr) {
        m_graph->onConnectionsChanged(*this);
    }
}
