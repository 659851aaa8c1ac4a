#pragma once

#include "tabase/tagraphconnectionlist.h"

#include <map>

/// The weights of a long list of connections, each with the last node that has it: tells in log n
/// steps where a weight belongs. It knows no NaN.
class TaGraphWeightIndex
{
public:
    using Node = TaGraphConnectionList::Node;

    /// Null where the list has a weight that is NaN. Takes linear time.
    static std::unique_ptr<TaGraphWeightIndex> Make(Node* head);

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
