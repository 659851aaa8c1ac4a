#pragma once

#include "tabase/tagraphconnectionlist.h"

class TaGraphNode;

/// A directed connection between two nodes of a graph, with a weight.
///
/// TaGraphNode::AddConnection makes it and enters it in both lists at once: in that of its source
/// among the outgoing ones, in that of its target among the incoming ones. It leaves both at once,
/// too: when it is removed, or one of its nodes is. From then on it is in no list and has no nodes.
///
/// Ownership: shared by its two lists and whoever holds a smart pointer to it. It refers to its
///            nodes.
/// Threads:   as the graph.
class TABASE_API TaGraphConnection : public TuReferenceCounted
{
public:
    enum ENodeType
    {
        eNT_Source = 0,
        eNT_Target = 1,
    };

    ~TaGraphConnection() override;
    TaGraphConnection(const TaGraphConnection&) = delete;
    TaGraphConnection& operator=(const TaGraphConnection&) = delete;

    /// TuExceptionPreconditionViolation where the connection has been removed.
    TaGraphNode& GetNode(ENodeType type) const;
    /// Whether it still connects its nodes.
    bool IsConnected() const { return m_source != nullptr; }

    float GetWeight() const { return m_weight; }
    /// Moves the connection to its place in both lists; an equal weight changes nothing, also the
    /// order. A NaN equals none, and stays in its place.
    void SetWeight(float weight);

    // These compare weights, not identities.
    bool operator==(const TuSmartPointer<TaGraphConnection>& other) const
    {
        return m_weight == other->m_weight;
    }
    bool operator<(const TuSmartPointer<TaGraphConnection>& other) const
    {
        return m_weight < other->m_weight;
    }
    bool operator>(const TuSmartPointer<TaGraphConnection>& other) const
    {
        return m_weight > other->m_weight;
    }

private:
    friend class TaGraph;
    friend class TaGraphNode;
    friend class TaGraphRows;

    TaGraphConnection(TaGraphNode& source, TaGraphNode& target, float weight);

    /// Makes one and enters it in both lists, or in none where that fails.
    static TaGraphConnection& connect(TaGraphNode& source, TaGraphNode& target, float weight);
    /// Leaves both lists, which may be the end of it.
    static void disconnect(TaGraphConnection& connection);

    TaGraphConnectionList::Node* m_placeAtSource = nullptr;
    TaGraphConnectionList::Node* m_placeAtTarget = nullptr;
    TaGraphNode* m_source;
    TaGraphNode* m_target;
    float m_weight;
    [[maybe_unused]] unsigned int m_reserved = 0; // a word that nothing uses yet
};
