#include "tabase/tagraphweightindex.h"

#include "tabase/tagraphconnection.h"

#include <iterator>

TaGraphWeightIndex::TaGraphWeightIndex(Node* head, const Node* exception)
{
    for (Node* node = head; node != nullptr; node = node->next) {
        if (node != exception) {
            m_lasts.insert_or_assign(m_lasts.end(), node->element->GetWeight(), node);
        }
    }
}

TaGraphWeightIndex::Node* TaGraphWeightIndex::FindLastNotGreater(float weight) const
{
    const auto above = m_lasts.upper_bound(weight);
    return above != m_lasts.begin() ? std::prev(above)->second : nullptr;
}

TaGraphWeightIndex::Node* TaGraphWeightIndex::FindLastSmaller(float weight) const
{
    const auto above = m_lasts.lower_bound(weight);
    return above != m_lasts.begin() ? std::prev(above)->second : nullptr;
}

void TaGraphWeightIndex::Add(Node* node)
{
    const float weight = node->element->GetWeight();
    const bool isLast = node->next == nullptr || node->next->element->GetWeight() != weight;
    if (isLast) {
        m_lasts[weight] = node;
    }
}

void TaGraphWeightIndex::Remove(const Node* node)
{
    const float weight = node->element->GetWeight();
    const auto last = m_lasts.find(weight);
    if (last->second != node) {
        return;
    }
    if (node->previous != nullptr && node->previous->element->GetWeight() == weight) {
        last->second = node->previous;
    } else {
        m_lasts.erase(last);
    }
}
