#pragma once

#include "groundwork/tucontainer.h"
#include "groundwork/tulistiterator.h"
#include "groundwork/tulistpolicy.h"
#include "groundwork/tuplexmanager.h"
#include "groundwork/tusmartpointer.h"

#include <cstddef>
#include <iterator>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>

/// What all lists share: the nodes, how they are linked, walked and removed. Use TuList or
/// TuListSorted, which document the whole.
template <class T, int Flags, class Size, class Linking, class Closing>
class TuListBase : public TuContainer<T>
{
    static_assert(sizeof(Size) <= sizeof(unsigned int), "a stored count has 32 bits");

public:
    using Node = typename Linking::template Node<T>;
    using PlexManager = TuPlexManager<Node>;
    template <int IteratorFlags> using Iterator = TuListIterator<TuListBase, IteratorFlags>;

    using value_type = T;
    using size_type = Size;
    using difference_type = std::ptrdiff_t;
    using iterator = Iterator<Flags>;
    using const_iterator = Iterator<(Flags & ~eI_Mutable)>;
    using reference = typename iterator::reference;
    using const_reference = const T&;
    using reverse_iterator = std::reverse_iterator<iterator>;
    using const_reverse_iterator = std::reverse_iterator<const_iterator>;

    TuListBase(const TuListBase&) = delete;
    TuListBase& operator=(const TuListBase&) = delete;
    ~TuListBase() override;

    Size GetCount() const { return m_count; }
    bool IsEmpty() const { return m_count == 0; }
    unsigned int GetBlockSize() const { return m_blockSize; }

    // The ends; a list without elements has none: TuExceptionPreconditionViolation.
    T& GetHead() { return checked(m_head)->element; }
    const T& GetHead() const { return checked(m_head)->element; }
    T& GetTail() { return checked(m_tail)->element; }
    const T& GetTail() const { return checked(m_tail)->element; }
    /// Takes the element out of the list.
    T RemoveHead() { return takeOut(checked(m_head)); }
    T RemoveTail() { return takeOut(checked(m_tail)); }

    /// Removes one element; returns the place of the one that followed it.
    ///
    ///     for (auto it = list.begin(); it != list.end();)
    ///         it = IsOld(*it) ? list.Erase(it) : std::next(it);
    iterator Erase(const_iterator position);
    void RemoveAll();

    iterator begin() requires((Flags & eI_Iterable) != 0) { return iterator(m_head, this); }
    iterator end() requires((Flags & eI_Iterable) != 0) { return iterator(nullptr, this); }
    const_iterator begin() const requires((Flags & eI_Iterable) != 0) { return cbegin(); }
    const_iterator end() const requires((Flags & eI_Iterable) != 0) { return cend(); }
    const_iterator cbegin() const requires((Flags & eI_Iterable) != 0)
    {
        return const_iterator(m_head, this);
    }
    const_iterator cend() const requires((Flags & eI_Iterable) != 0)
    {
        return const_iterator(nullptr, this);
    }
    reverse_iterator rbegin() { return reverse_iterator(end()); }
    reverse_iterator rend() { return reverse_iterator(begin()); }
    const_reverse_iterator rbegin() const { return const_reverse_iterator(end()); }
    const_reverse_iterator rend() const { return const_reverse_iterator(begin()); }
    Size size() const { return m_count; }
    bool empty() const { return m_count == 0; }

protected:
    explicit TuListBase(unsigned int blockSize)
        : m_blockSize(blockSize)
    {
    }
    /// Shares the nodes of other containers. A null manager is a block size of 0.
    explicit TuListBase(TuSmartPointer<PlexManager> plexManager)
        : m_blockSize(plexManager.IsNull() ? 0 : plexManager->GetBlockSize())
        , m_plexManager(std::move(plexManager))
    {
    }
    TuListBase(TuListBase&& other) noexcept
        : m_blockSize(other.m_blockSize)
    {
        swapNodes(other);
    }

    /// Makes a node and links it before `next`, null for the end.
    template <class... Args> Node* insertBefore(Node* next, Args&&... args);
    void removeNode(Node* node);
    void swapNodes(TuListBase& other) noexcept;
    /// Links all nodes of `other` behind the tail. Both draw on one plex manager, or this list is
    /// empty and has none yet.
    void takeNodes(TuListBase& other);

    static Node* nodeOf(const_iterator position) { return position.m_node; }
    iterator iteratorTo(Node* node) { return iterator(node, this); }
    const_iterator iteratorTo(Node* node) const { return const_iterator(node, this); }
    Node* getHeadNode() const { return m_head; }
    Node* getTailNode() const { return m_tail; }
    const TuSmartPointer<PlexManager>& getPlexManager() const { return m_plexManager; }
    /// Moves a node to the place before its predecessor.
    void moveForward(Node* node) { moveBefore(node, node->previous); }
    /// Moves a node to the place before another one, null for the end.
    void moveBefore(Node* node, Node* next);
    /// All nodes of the list, chained by `next` in another order, become the list.
    void relink(Node* chain);

private:
    template <class List, int IteratorFlags> friend class TuListIterator;

    static Node* checked(Node* end)
    {
        if (end == nullptr) {
            throw TuExceptionPreconditionViolation(
                TU_HERE_IN("core/groundwork/tulistbase"), u"the list has elements");
        }
        return end;
    }
    T takeOut(Node* node);
    void preparePlexManager();

    Node* m_head = nullptr;
    Node* m_tail = nullptr;
    Size m_count = 0;
    unsigned int m_blockSize;
    TuSmartPointer<PlexManager> m_plexManager; // made at the first insertion
};

template <class T, int F, class S, class L, class C> TuListBase<T, F, S, L, C>::~TuListBase()
{
    C::CheckEnds(m_head, m_tail);
    const bool isShared
        = !m_plexManager.IsNull() && m_plexManager->getReferenceCounter().GetCount() > 1;
    if (isShared) {
        RemoveAll();
    } else if constexpr (!std::is_trivially_destructible_v<Node>) {
        // The room of the nodes goes with the blocks.
        for (Node* node = m_head; node != nullptr;) {
            std::destroy_at(std::exchange(node, node->next));
        }
    }
}

template <class T, int F, class S, class L, class C>
typename TuListBase<T, F, S, L, C>::iterator TuListBase<T, F, S, L, C>::Erase(
    const_iterator position)
{
    Node* const node = position.m_node;
    TU_ASSERT(node != nullptr, "the end of a list cannot be removed");
    Node* const next = node->next;
    removeNode(node);
    return iterator(next, this);
}

template <class T, int F, class S, class L, class C> void TuListBase<T, F, S, L, C>::RemoveAll()
{
    C::CheckEnds(m_head, m_tail);
    Node* node = std::exchange(m_head, nullptr);
    m_tail = nullptr;
    m_count = 0;
    while (node != nullptr) {
        m_plexManager->Destroy(std::exchange(node, node->next));
    }
}

template <class T, int F, class S, class L, class C>
template <class... Args>
inline typename TuListBase<T, F, S, L, C>::Node* TuListBase<T, F, S, L, C>::insertBefore(
    Node* next, Args&&... args)
{
    if (m_plexManager.IsNull() || m_count == std::numeric_limits<S>::max()) {
        preparePlexManager();
    }
    Node* const node = m_plexManager->Make(std::forward<Args>(args)...);
    L::Link(node, next != nullptr ? next->previous : m_tail, next, m_head, m_tail);
    ++m_count;
    return node;
}

template <class T, int F, class S, class L, class C>
void TuListBase<T, F, S, L, C>::preparePlexManager()
{
    if (m_count == std::numeric_limits<S>::max()) {
        throw TuExceptionOutOfMemory(TU_HERE_IN("core/groundwork/tulistbase"));
    }
    m_plexManager = TuMake<PlexManager>(m_blockSize);
}

template <class T, int F, class S, class L, class C>
void TuListBase<T, F, S, L, C>::removeNode(Node* node)
{
    L::Unlink(node, m_head, m_tail);
    --m_count;
    m_plexManager->Destroy(node);
}

template <class T, int F, class S, class L, class C>
T TuListBase<T, F, S, L, C>::takeOut(Node* node)
{
    T element(std::move(node->element));
    removeNode(node);
    return element;
}

template <class T, int F, class S, class L, class C>
void TuListBase<T, F, S, L, C>::moveBefore(Node* node, Node* next)
{
    L::Unlink(node, m_head, m_tail);
    L::Link(node, next != nullptr ? next->previous : m_tail, next, m_head, m_tail);
}

template <class T, int F, class S, class L, class C>
void TuListBase<T, F, S, L, C>::relink(Node* chain)
{
    m_head = nullptr;
    m_tail = nullptr;
    while (chain != nullptr) {
        Node* const node = std::exchange(chain, chain->next);
        L::Link(node, m_tail, static_cast<Node*>(nullptr), m_head, m_tail);
    }
}

template <class T, int F, class S, class L, class C>
void TuListBase<T, F, S, L, C>::takeNodes(TuListBase& other)
{
    if (m_head == nullptr) {
        swapNodes(other);
    } else if (other.m_head != nullptr) {
        if (other.m_count > std::numeric_limits<S>::max() - m_count) {
            throw TuExceptionOutOfMemory(TU_HERE_IN("core/groundwork/tulistbase"));
        }
        L::Join(m_tail, other.m_head);
        m_tail = std::exchange(other.m_tail, nullptr);
        other.m_head = nullptr;
        m_count = static_cast<S>(m_count + std::exchange(other.m_count, S(0)));
    }
}

template <class T, int F, class S, class L, class C>
void TuListBase<T, F, S, L, C>::swapNodes(TuListBase& other) noexcept
{
    std::swap(m_head, other.m_head);
    std::swap(m_tail, other.m_tail);
    std::swap(m_count, other.m_count);
    m_plexManager.Swap(other.m_plexManager);
    std::swap(m_blockSize, other.m_blockSize);
}
