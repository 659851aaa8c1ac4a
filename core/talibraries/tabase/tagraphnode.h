#pragma once

#include "groundwork/tuiclassname.h"
#include "groundwork/tulist.h"
#include "tabase/tagraphconnection.h"

#include <cstdint>

class TaGraph;

/// A node of a graph: a name, a weight, attributes, its connections in the order of their weights,
/// and its neighbours on a path that an algorithm has found.
///
///     auto* const node = new TaGraphNode(u"A");
///     graph.InsertNode(node); // from now on the graph's
///     node->AddConnection(other, 2.5F);
///
/// Ownership: inserted into a graph, it belongs to that. It owns its outgoing connections together
///            with the lists of their targets. When it is destroyed, its connections leave the
///            lists at their other ends, and no path leads to it any more.
/// Threads:   as the graph.
/// Failure:   TuExceptionOutOfMemory, also as std::bad_alloc, from AddConnection; nothing has
///            changed then.
class TABASE_API TaGraphNode : public TuIClassName<0>
{
public:
    explicit TaGraphNode(const CString& name = CString());
    TaGraphNode(const TaGraphNode&) = delete;
    TaGraphNode& operator=(const TaGraphNode&) = delete;
    virtual ~TaGraphNode();

    /// A connection from here to `target`, which may be this node. It is entered in the lists of
    /// both. It may lead into another graph; a search does not follow it there.
    TaGraphConnection& AddConnection(TaGraphNode& target, float weight);
    /// The first outgoing one that leads to `target`, if any.
    void RemoveConnection(const TaGraphNode& target);
    /// All outgoing ones.
    void RemoveAllConnections();
    const TaGraphConnectionList& GetOutgoingConnections() const { return m_outgoing; }
    const TaGraphConnectionList& GetIncomingConnections() const { return m_incoming; }

    /// The largest finite float: that of a node which no search has reached.
    static float GetInitialWeight();
    float GetWeight() const;
    void SetWeight(float weight);

    /// The place in the graph's list of nodes, from 0, while the graph's indices are valid.
    std::uint32_t GetIndex() const { return m_index; }
    /// Null before the node is inserted.
    TaGraph* GetGraph() const { return m_graph; }

    // 32 marks of which callers dispose; bit 0 belongs to searches.
    void AddAttributes(std::uint32_t mask);
    void RemoveAttributes(std::uint32_t mask) { m_attributes &= ~mask; }
    bool HasAttributes(std::uint32_t mask) const { return (m_attributes & mask) == mask; }

    // A path stays within one graph: links from another one would outlive the node.
    TaGraphNode* GetNextNodeOnPath() const { return m_next; }
    TaGraphNode* GetPreviousNodeOnPath() const { return m_previous; }
    /// Links both ways: this node becomes the previous one of `node`, and what came next before has
    /// no previous one any more, whichever that was. Null for the end of a path.
    void SetNextNodeOnPath(TaGraphNode* node);
    /// Links this way only.
    void SetPreviousNodeOnPath(TaGraphNode* node) { setLink(m_previous, node); }

    /// Whether it is the same node.
    bool operator==(const TaGraphNode& other) const { return this == &other; }

private:
    friend class TaGraph;
    friend class TaGraphConnection;
    friend class TaGraphRows;
    friend class TaMpGraphToShortestPath;

    static void setLink(TaGraphNode*& link, TaGraphNode* node);
    void leavePaths();
    void removeIncomingConnections();
    void onConnectionsChanged();

    std::uint32_t m_attributes = 0;
    std::uint32_t m_index = 0;
    TuList<TaGraphNode*>::iterator m_position;
    TaGraphNode* m_next = nullptr;
    TaGraphNode* m_previous = nullptr;
    TaGraphConnectionList m_outgoing;
    TaGraphConnectionList m_incoming;
    float m_weight; // unless the graph has it, see TaGraph::m_searchWeights
    std::uint32_t m_linkCount = 0; // of nodes whose links on a path lead here
    void* m_element = nullptr; // in the attribute memory of the graph
    TaGraph* m_graph = nullptr;
    bool m_isRowChanged = false; // for TaGraphRows
};
