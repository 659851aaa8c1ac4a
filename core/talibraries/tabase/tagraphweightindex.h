#pragma once

#include "tabase/tagraphconnectionlist.h"

#include <map>

/// The weights of a long list of connections that is in order, each with the last node that has it:
/// tells in log n steps where a weight belongs. It knows no NaN.
class TaGraphWeightIndex
{
public:
    using Node = TaGraphConnectionList::Node;

    /// Of all nodes but one. Takes linear time.
    TaGraphWeightIndex(Node* head, const Node* exception);

    /// The last node that is not heavier; null where all are.
    Node* FindLastNotGreater(float weight) const;
    /// The last node that is lighter; null where none is.
    Node* FindLastSmaller(float weight) const;
    /// Takes up a node that has been linked in its place.
    void Add(Node* node);
    /// Forgets a node that is still linked.
    void Remove(const Node* node);

private:
    std::map<float, Node*> m_lasts;
};
