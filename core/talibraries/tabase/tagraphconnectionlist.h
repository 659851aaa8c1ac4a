#pragma once

#include "groundwork/tulistsorted.h"
#include "tabase/tabaseapi.h"

#include <memory>

class TaGraphConnection;
class TaGraphWeightIndex;

/// The order of connections: by ascending weight. A weight that is NaN has no order: it stays where
/// it was put, and what comes later stays behind it.
struct TABASE_API TaGraphConnectionLess
{
    bool operator()(const TuSmartPointer<TaGraphConnection>& a,
        const TuSmartPointer<TaGraphConnection>& b) const;
};

/// Connections in the order of their weights; equal weights stay in the order in which they were
/// added.
///
/// The lists of a node, which callers only read, are kept by the connections themselves: a change
/// of weight moves the connection. Where such a list is long it has an index of its weights, so
/// that this takes log n steps in whatever order weights come; a NaN does away with it. A list of
/// one's own does not know of changes: Sort() restores its order.
///
/// Ownership: shares its connections.
/// Threads: many readers, or one writer; the lists of all nodes of a graph count as one.
/// Failure: TuExceptionOutOfMemory; the list is then as it was.
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
    using List::GetHead;
    using List::GetTail;
    using List::IsEmpty;
    const_iterator begin() const { return List::begin(); }
    const_iterator end() const { return List::end(); }
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
    Node* add(const TuSmartPointer<TaGraphConnection>& connection);
    void remove(Node* node);
    /// Before the weight of a connection changes, and after.
    void beforeChange(Node* node);
    void afterChange(Node* node, float oldWeight);

    Node* behind(const Node* node) const;
    Node* findBehindNotGreater(const Node* last, float weight) const;
    static Node* findNotSmaller(Node* first, float weight);
    void makeIndex() noexcept;
    void addToIndex(Node* node) noexcept;

    std::unique_ptr<TaGraphWeightIndex> m_index; // null while the list is short, or has a NaN
};
