#include "tabase/tagraph.h"

#include "groundwork/tucondition.h"
#include "groundwork/tustreamwriteascii.h"
#include "groundwork/tustreamwriteasciitrace.h"
#include "tabase/tagraphsearch.h"

#include <limits>

const unsigned int TaGraph::kNodeBlockSize; // NOLINT: for a library that exports it
const unsigned int TaGraph::kElementBlockSize; // NOLINT: see above
const unsigned int TaGraph::kConnectionBlockSize; // NOLINT: see above

TaGraph::TaGraph()
    : TaAttributeContainer(kElementBlockSize)
    , m_nodes(kNodeBlockSize)
    , m_branch(
          TuMake<TaAttributeDefinition>(u"eNA_Branch", sizeof(std::uint32_t), m_attributePolicy))
    , m_connectionNodes(TuMake<TaGraphConnectionList::PlexManager>(kConnectionBlockSize))
{
    AddAttribute(m_branch);
}

TaGraph::~TaGraph() { RemoveAllNodes(); }

void TaGraph::InsertNode(TaGraphNode* node)
{
    TuPreCondition<2>(u"the node is not null and has no graph yet", TU_HERE,
        [node] { return node != nullptr && node->m_graph == nullptr; });
    takeWeights();
    const std::uint32_t oldIndex = node->m_index;
    node->m_position = m_nodes.AddTail(node);
    node->m_index = GetCount() - 1;
    try {
        node->m_element = createElement();
    } catch (...) {
        m_nodes.Erase(node->m_position);
        node->m_index = oldIndex;
        node->m_element = nullptr;
        throw;
    }
    node->m_graph = this;
    m_attributesInUse |= node->m_attributes;
    node->m_outgoing.useNodes(m_connectionNodes);
    node->m_incoming.useNodes(m_connectionNodes);
    onNodesChanged();
}

void TaGraph::RemoveNode(TaGraphNode& node)
{
    TuPreCondition<2>(
        u"the node belongs to this graph", TU_HERE, [&] { return node.m_graph == this; });
    takeWeights();
    m_areIndicesValid = m_areIndicesValid && m_nodes.GetTail() == &node;
    m_nodes.Erase(node.m_position);
    if (node.m_element != nullptr) {
        releaseElement(node.m_element);
        node.m_element = nullptr;
    }
    onNodesChanged();
    deleteNode(&node);
}

void TaGraph::RemoveAllNodes()
{
    for (TaGraphNode* node : m_nodes) {
        TaGraphNode::setLink(node->m_next, nullptr);
        TaGraphNode::setLink(node->m_previous, nullptr);
    }
    takeWeights();
    onNodesChanged();
    while (!m_nodes.IsEmpty()) {
        deleteNode(m_nodes.RemoveHead()); // NOLINT: an override calls this before it is gone
    }
    releaseAllElements();
    m_areIndicesValid = true;
}

void TaGraph::deleteNode(TaGraphNode* node) { delete node; }

void TaGraph::onNodesChanged() noexcept
{
    if (m_search != nullptr) {
        m_search->OnNodesChanged();
    }
}

void TaGraph::onConnectionsChanged(TaGraphNode& source) noexcept
{
    if (m_search != nullptr) {
        m_search->OnConnectionsChanged(source);
    }
}

void TaGraph::takeWeights()
{
    if (m_searchWeights != nullptr) {
        for (TaGraphNode* node : m_nodes) {
            node->m_weight = m_searchWeights[node->m_index];
        }
        m_searchWeights = nullptr;
    }
}

TaGraphSearch& TaGraph::getSearch()
{
    if (m_search == nullptr) {
        m_search = std::make_unique<TaGraphSearch>(*this);
    }
    return *m_search;
}

std::uint32_t TaGraph::CreateIndices()
{
    if (!m_areIndicesValid) {
        std::uint32_t index = 0;
        for (TaGraphNode* node : m_nodes) {
            node->m_index = index++;
        }
        m_areIndicesValid = true;
    }
    return GetCount();
}

TaGraphNode* TaGraph::FindNode(std::uint32_t index) const
{
    for (TaGraphNode* node : m_nodes) {
        if (node->m_index == index) {
            return node;
        }
    }
    return nullptr;
}

void TaGraph::ResetWeights()
{
    m_searchWeights = nullptr;
    for (TaGraphNode* node : m_nodes) {
        node->m_weight = TaGraphNode::GetInitialWeight();
    }
}

void TaGraph::RemoveAttributes(std::uint32_t mask)
{
    if ((m_attributesInUse & mask) != 0) {
        for (TaGraphNode* node : m_nodes) {
            node->RemoveAttributes(mask);
        }
        m_attributesInUse &= ~mask;
    }
}

/// Links that lead to `node` one way only.
void TaGraph::clearLinksTo(const TaGraphNode& node)
{
    for (TaGraphNode* other : m_nodes) {
        if (other->m_next == &node) {
            TaGraphNode::setLink(other->m_next, nullptr);
        }
        if (other->m_previous == &node) {
            TaGraphNode::setLink(other->m_previous, nullptr);
        }
    }
}

const TaGraph::Definition& TaGraph::getDefinition(ENodeAttribute attribute) const
{
    TuPreCondition<2>(
        u"there is such an attribute", TU_HERE, [attribute] { return attribute == eNA_Branch; });
    return m_branch;
}

std::uint32_t* TaGraph::branchOf(const TaGraphNode& node) const
{
    TuPreCondition<2>(
        u"the node belongs to this graph", TU_HERE, [&] { return node.m_graph == this; });
    return static_cast<std::uint32_t*>(getValue(node.m_element, *m_branch));
}

void TaGraph::onInitContainer(void* block, std::size_t stride)
{
    std::byte* element = static_cast<std::byte*>(block);
    for (TaGraphNode* node : m_nodes) {
        node->m_element = element;
        element += stride;
    }
}

void TaGraph::onCopyContainer(
    const void* oldBlock, std::size_t oldStride, void* newBlock, std::size_t newStride)
{
    for (TaGraphNode* node : m_nodes) {
        if (node->m_element != nullptr) {
            const std::int64_t offset = static_cast<const std::byte*>(node->m_element)
                - static_cast<const std::byte*>(oldBlock);
            const std::int64_t slot = offset / static_cast<std::int64_t>(oldStride);
            node->m_element
                = static_cast<std::byte*>(newBlock) + slot * static_cast<std::int64_t>(newStride);
        }
    }
}

void TaGraph::onDeleteContainer()
{
    for (TaGraphNode* node : m_nodes) {
        node->m_element = nullptr;
    }
}

void TaGraph::Dump(TuStreamWriteASCII& stream)
{
    CreateIndices();
    const TuStreamWriteASCII::Passage passage(stream);
    stream << u"\nDer Graph enthält " << GetCount() << u" Knoten\n\n";
    for (const TaGraphNode* node : m_nodes) {
        stream << u"Knoten " << node->m_index << u":\n";
        for (const TuSmartPointer<TaGraphConnection>& connection : node->m_outgoing) {
            stream << u"\tVerbindung zu Knoten " << connection->m_target->m_index
                   << u" mit Gewicht " << connection->m_weight << u"\n";
        }
    }
    stream << u"\n";
}

void TaGraph::Dump()
{
    TuStreamWriteASCIITrace trace;
    Dump(trace);
}

void TaGraph::DumpDot(TuStreamWriteASCII& stream, bool directed)
{
    const TuStreamWriteASCII::Passage passage(stream);
    stream << (directed ? u"digraph G {\r\n" : u"graph G {\r\n");
    for (const TaGraphNode* node : m_nodes) {
        for (const TuSmartPointer<TaGraphConnection>& connection : node->m_outgoing) {
            const TaGraphNode& target = *connection->m_target;
            if (directed || target.m_index >= node->m_index) {
                stream << node->GetName() << (directed ? u" -> " : u" -- ") << target.GetName()
                       << u" [label = \"" << connection->m_weight << u"\"];\r\n";
            }
        }
    }
    stream << u"}\r\n";
}
