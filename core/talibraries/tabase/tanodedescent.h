#pragma once

#include "groundwork/tuassert.h"
#include "tabase/tanode.h"

#include <cstdint>
#include <iterator>

/// A walk through a subtree, parents first, that holds one lock of each node on the way from the
/// top down to where it is: always from parent to child, so that two walks cannot block each other.
///
/// It needs no memory and no stack for the depth of the tree: the way on leads over the place that
/// a node has in its parent's list, and the way up over the links to the parents.
///
/// Threads: the lists are kept still by the locks that it holds, where these are the children's, or
///          else by the manager's lock.
class TaNode::Descent
{
public:
    using Lock = TuCriticalSection TaNode::*;

    Descent(const TaNode& top, Lock lock)
        : m_top(const_cast<TaNode*>(&top))
        , m_lock(lock)
    {
        enter(m_top);
    }
    ~Descent()
    {
        while (m_node != nullptr) {
            leave();
        }
    }
    Descent(const Descent&) = delete;
    Descent& operator=(const Descent&) = delete;

    /// Null behind the last node.
    TaNode* Get() const { return m_node; }
    std::uint32_t GetDepth() const { return m_depth; }
    /// True for the top, too.
    bool IsLastChild() const { return m_node == m_top || getSibling() == nullptr; }

    /// To the next node; past what is below the current one, unless `descend` is true.
    void Next(bool descend)
    {
        if (descend && !m_node->m_children.IsEmpty()) {
            ++m_depth;
            enter(m_node->m_children.GetHead().node.Get());
            return;
        }
        TaNode* sibling = nullptr;
        do {
            sibling = m_node != m_top ? getSibling() : nullptr;
            leave();
        } while (m_node != nullptr && sibling == nullptr);
        if (sibling != nullptr) {
            ++m_depth;
            enter(sibling);
        }
    }

private:
    using Place = TuList<SChildData>::iterator;
    static constexpr unsigned int kAhead = 2;

    TaNode* getSibling() const
    {
        const auto next = std::next(m_node->m_place);
        return next != m_node->getParentNode()->m_children.end() ? next->node.Get() : nullptr;
    }
    void enter(TaNode* node) TU_NO_THREAD_SAFETY_ANALYSIS
    {
        TU_ASSERT(m_node == nullptr || node->getParentNode() == m_node,
            "a walk takes the locks of nodes from parent to child, or two could block each other");
        (node->*m_lock).EnterInAnyOrder();
        m_node = node;
        fetchAhead();
    }
    /// In a large tree nearly all of the time goes by waiting for nodes to come from memory, so the
    /// one that comes after the next is asked for now.
    void fetchAhead() const
    {
        if (m_node == m_top) {
            return; // what lies beside it is not part of the walk
        }
        auto place = m_node->m_place;
        for (unsigned int i = 0; i < kAhead && place != Place(); ++i) {
            ++place;
        }
        if (place != Place()) {
            const TaNode* const node = place->node.Get();
            __builtin_prefetch(&node->m_children);
            __builtin_prefetch(&node->m_countLock);
        }
    }
    /// Up to the parent, or to null from the top.
    void leave() TU_NO_THREAD_SAFETY_ANALYSIS
    {
        TaNode* const node = m_node;
        if (node == m_top) {
            m_node = nullptr;
        } else {
            m_node = node->getParentNode();
            --m_depth;
        }
        (node->*m_lock).Leave();
    }

    TaNode* const m_top;
    const Lock m_lock;
    TaNode* m_node = nullptr;
    std::uint32_t m_depth = 0;
};
