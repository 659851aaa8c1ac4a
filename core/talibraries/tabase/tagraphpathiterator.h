#pragma once

#include "groundwork/tuiteratorold.h"
#include "tabase/tabaseapi.h"

class TaGraphNode;

/// Walks a path that an algorithm has threaded through the nodes of a graph: from the start along
/// the next nodes, or from the end along the previous ones, until a node has none.
///
///     for (TaGraphNode& node : search.GetOutput())
///         Show(node.GetName());
///
/// Ownership: refers to the nodes. The path is in the nodes: the next search changes it.
/// Threads:   as the graph.
class TABASE_API TaGraphPathIterator : public TuIteratorOld<TaGraphNode&, TaGraphPathIterator>
{
public:
    enum EDirection
    {
        eD_Forward = 0,
        eD_Backward = 1,
    };

    TaGraphPathIterator(TaGraphNode& start, TaGraphNode& end, EDirection direction = eD_Forward);

    /// Back to where the walk begins.
    void Restart();
    /// Restarts in this direction.
    void SetDirection(EDirection direction);
    EDirection GetDirection() const { return m_direction; }

    // For the base.
    bool hasElement() const { return m_current != nullptr; }
    TaGraphNode& getElement() const { return *m_current; }
    void step();

private:
    TaGraphNode* m_start;
    TaGraphNode* m_end;
    EDirection m_direction;
    TaGraphNode* m_current;
};
