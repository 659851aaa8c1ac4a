#pragma once

#include "groundwork/tulistsorted.h"
#include "tabase/tabaseapi.h"

#include <atomic>
#include <memory>

class TaGraphConnection;
class TaGraphWeightIndex;

/// The order of connections: by ascending weight. A weight that is NaN has no order: it stays where
/// it was put, and what comes later stays behind it. When it is removed, what it kept apart stays
/// as it is until the next change of a weight in the list.
struct TABASE_API TaGraphConnectionLess
{
    bool operator()(const TuSmartPointer<TaGraphConnection>& a,
        const TuSmartPointer<TaGraphConnection>& b) const;
};

/// Connections in the order of their weights; equal weights stay in the order in which they were
/// added.
///
/// The lists of a node, which callers only read, are kept by the connections themselves: a change
/// of weight moves the connection, in log n steps where that is far. What is added to them is put
/// in its place when somebody looks, all at once: lists can be filled in linear time, and in n log
/// n steps in whatever order weights come. A list of one's own does not know of changes: Sort()
/// restores its order.
///
/// Ownership: shares its connections.
/// Threads:   many readers, or one writer; the lists of all nodes of a graph count as one.
/// Failure:   TuExceptionOutOfMemory; the list is then as it was.
class TABASE_API TaGraphConnectionList : private TuListSorted<TuSmartPointer<TaGraphConnection>,
                                             eI_Iterable, unsigned int, TaGraphConnectionLess>
{
    using List = TuListSorted<TuSmartPointer<TaGraphConnection>, eI_Iterable, unsigned int,
        TaGraphConnectionLess>;

public:
    using typename List::const_iterator;
    using typename List::const_reference;
    using typename List::iterator;
    using typename List::size_type;
    using typename List::value_type;

    static constexpr unsigned int kBlockSize = 10;

    explicit TaGraphConnectionList(unsigned int blockSize = kBlockSize);
    TaGraphConnectionList(const TaGraphConnectionList&) = delete;
    TaGraphConnectionList& operator=(const TaGraphConnectionList&) = delete;
    ~TaGraphConnectionList() override;

    /// Behind all whose weight is not greater.
    void AddConnection(const TuSmartPointer<TaGraphConnection>& connection);
    /// This very connection, not one of equal weight; false where it is not in the list.
    bool RemoveConnection(const TuSmartPointer<TaGraphConnection>& connection);
    void RemoveAllConnections();
    /// A bubble sort, stable.
    void Sort();

    using List::GetBlockSize;
    using List::GetCount;
    using List::IsEmpty;
    /// TuExceptionPreconditionViolation where the list is empty.
    const_reference GetHead() const { return settled().GetHead(); }
    const_reference GetTail() const { return settled().GetTail(); }
    const_iterator begin() const { return settled().begin(); }
    const_iterator end() const { return settled().end(); }
    unsigned int size() const { return GetCount(); }
    bool empty() const { return IsEmpty(); }

private:
    friend class TaGraph;
    friend class TaGraphConnection;
    friend class TaGraphNode;
    friend class TaGraphRows;
    friend class TaGraphWeightIndex;

    using typename List::Node;
    using typename List::PlexManager;

    /// From now on draws nodes from `manager`, unless there are some already.
    void useNodes(const TuSmartPointer<PlexManager>& manager);

    // What the connections do, which keep the lists of nodes.
    Node* append(TuSmartPointer<TaGraphConnection> connection);
    void remove(Node* node);
    /// Before the weight of a connection changes, and after.
    void beforeChange(const Node* node);
    void afterChange(Node* node);

    /// Puts in its place what has been added. For writers.
    void settle();
    void settleForReaders();
    /// The list in order. Putting it there is no change that a reader could see.
    const List& settled() const
    {
        if (m_firstUnsettled.load(std::memory_order_acquire) != nullptr) {
            const_cast<TaGraphConnectionList*>(this)->settleForReaders();
        }
        return *this;
    }
    void moveBack(Node* node);
    bool moveWithin(Node* node, unsigned int mostSteps);
    void moveByIndex(Node* node);
    void moveBehind(Node* node, Node* previous);
    static bool isSmaller(const Node* a, const Node* b);

    std::unique_ptr<TaGraphWeightIndex> m_index; // made by a change that moves a connection far
    std::atomic<Node*> m_firstUnsettled{ nullptr }; // from here on in the order of adding
    bool m_hasNaN = false; // there is, or has been, a weight without order: nothing is unsettled
};
