#pragma once

#include "groundwork/tucontainer.h"
#include "groundwork/tuelementstream.h"
#include "groundwork/tuhashiterator.h"
#include "groundwork/tuhashkey.h"
#include "groundwork/tuhashmodulo.h"
#include "groundwork/tuplexmanager.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>

/// What maps and sets share: associations in chains, a chain per bucket. Use TuMap or TuSet, which
/// document the whole. Element is what iterators give: the association, or its key.
template <class K, class Element, class Association, int Flags, class Size, class Hash>
class TuHashTable : public TuContainer<std::remove_const_t<Element>>
{
    static_assert(sizeof(Size) <= sizeof(unsigned int), "a stored count has 32 bits");

public:
    using KeyArgument = typename TuKeyArgument<K, Hash>::Type;
    using PlexManager = TuPlexManager<Association>;

    using value_type = std::remove_const_t<Element>;
    using size_type = Size;
    using difference_type = std::ptrdiff_t;
    using iterator = TuHashIterator<TuHashTable, Element, Association, Flags>;
    using const_iterator = TuHashIterator<TuHashTable, Element, Association, (Flags & ~eI_Mutable)>;
    using reference = typename iterator::reference;
    using const_reference = typename const_iterator::reference;

    static constexpr unsigned int kDefaultBucketCount = 17;

    TuHashTable(const TuHashTable&) = delete;
    TuHashTable& operator=(const TuHashTable&) = delete;
    ~TuHashTable() override;

    Size GetCount() const { return m_count; }
    bool IsEmpty() const { return m_count == 0; }
    unsigned int GetBucketCount() const { return m_bucketCount; }
    unsigned int GetBlockSize() const { return m_blockSize; }

    bool Contains(KeyArgument key) const { return findNode(key) != nullptr; }
    /// The place of the key, or the end.
    iterator Find(KeyArgument key) { return iterator(findNode(key), this); }
    const_iterator Find(KeyArgument key) const { return const_iterator(findNode(key), this); }
    /// False when the key is not there. The key passed may be the one that is removed.
    bool RemoveKey(KeyArgument key);
    /// Removes one entry; returns the place of the one that followed it.
    iterator Erase(const_iterator position);
    void RemoveAll();

    iterator begin() requires((Flags & eI_Iterable) != 0) { return iterator(firstNode(), this); }
    iterator end() requires((Flags & eI_Iterable) != 0) { return iterator(nullptr, this); }
    const_iterator begin() const requires((Flags & eI_Iterable) != 0) { return cbegin(); }
    const_iterator end() const requires((Flags & eI_Iterable) != 0) { return cend(); }
    const_iterator cbegin() const requires((Flags & eI_Iterable) != 0)
    {
        return const_iterator(firstNode(), this);
    }
    const_iterator cend() const requires((Flags & eI_Iterable) != 0)
    {
        return const_iterator(nullptr, this);
    }
    Size size() const { return m_count; }
    bool empty() const { return m_count == 0; }

protected:
    TuHashTable(unsigned int blockSize, unsigned int bucketCount)
        : m_bucketCount(checkedBucketCount(bucketCount))
        , m_blockSize(blockSize)
    {
    }
    /// Shares the nodes of other containers. A null manager is a block size of 0.
    TuHashTable(TuSmartPointer<PlexManager> plexManager, unsigned int bucketCount)
        : m_plexManager(std::move(plexManager))
        , m_bucketCount(checkedBucketCount(bucketCount))
        , m_blockSize(m_plexManager.IsNull() ? 0 : m_plexManager->GetBlockSize())
    {
    }
    TuHashTable(TuHashTable&& other) noexcept
        : m_bucketCount(other.m_bucketCount)
        , m_blockSize(other.m_blockSize)
    {
        swapTables(other);
    }

    /// Null when the key is not there.
    Association* findNode(KeyArgument key) const;
    /// The association of the key and whether it is new. A new one is the head of its chain, and
    /// its value is made from `args`.
    template <class... Args>
    std::pair<Association*, bool> findOrInsert(KeyArgument key, Args&&... args);
    /// The same, but one that is there already becomes the head of its chain, too, after `replace`
    /// has been called for it; what that throws leaves it where it is.
    template <class Replace, class... Args>
    bool replaceOrInsertFirst(KeyArgument key, Replace&& replace, Args&&... args);
    /// Makes an association as findOrInsert does, of a key that is known to be new.
    template <class... Args> Association* insertNew(KeyArgument key, Args&&... args);
    /// Makes an association at the end of its chain; null when the key is there already.
    template <class... Args> Association* append(KeyArgument key, Args&&... args);
    /// Copies all of `other` into this empty table; chains keep their order.
    void copyFrom(const TuHashTable& other);
    void swapTables(TuHashTable& other) noexcept;

    Association* firstNode() const { return m_count != 0 ? firstNodeFrom(0) : nullptr; }
    Association* nextNode(const Association* node) const
    {
        return node->m_next != nullptr ? node->m_next : firstNodeFrom(node->m_bucket + 1);
    }
    const TuSmartPointer<PlexManager>& getPlexManager() const { return m_plexManager; }

private:
    template <class Table, class E, class Node, int IteratorFlags> friend class TuHashIterator;

    /// Lies in front of the chains, and these in front of the filters, in the same block.
    struct SBuckets
    {
        std::uint64_t reciprocal; // of the bucket count

        Association** GetChains() { return reinterpret_cast<Association**>(this + 1); }
    };
    /// Where a key belongs. The filter of a bucket holds the marks of all keys that came into it: a
    /// key whose mark is missing is new, which is known without a look at a node.
    struct SPlace
    {
        unsigned int bucket;
        unsigned char mark; // a bit of the hash; of a bucket that is copied, all of its marks
    };

    static unsigned int checkedBucketCount(unsigned int bucketCount)
    {
        if (bucketCount == 0) {
            throw TuExceptionPreconditionViolation(
                TU_HERE_IN("core/groundwork/tuhashtable"), u"there is at least one bucket");
        }
        return bucketCount;
    }
    static bool areEqual(const Association* node, KeyArgument key);
    Association** chainOf(unsigned int bucket) const { return m_buckets->GetChains() + bucket; }
    unsigned char* filters() const
    {
        return reinterpret_cast<unsigned char*>(m_buckets->GetChains() + m_bucketCount);
    }
    static auto hashOf(KeyArgument key);
    template <class Hashed> unsigned int bucketOf(Hashed hash) const
    {
        return TuHashModulo::Compute(hash, m_bucketCount, m_buckets->reciprocal);
    }
    SPlace placeOf(KeyArgument key) const;
    /// The first bucket from `bucket` on that may have nodes; the bucket count behind the last.
    unsigned int nextUsedBucket(unsigned int bucket) const;
    Association* firstNodeFrom(unsigned int bucket) const;
    template <class... Args> Association* makeNode(SPlace place, Args&&... args);
    template <class... Args> Association* makeFirst(SPlace place, KeyArgument key, Args&&... args);
    void prepareBuckets();
    void preparePlexManager();
    void removeAt(Association** link);

    TuSmartPointer<PlexManager> m_plexManager; // made at the first insertion
    Size m_count = 0;
    unsigned int m_bucketCount;
    SBuckets* m_buckets = nullptr; // made at the first insertion
    unsigned int m_blockSize;
};

template <class K, class E, class A, int F, class S, class H>
TuHashTable<K, E, A, F, S, H>::~TuHashTable()
{
    const bool isShared
        = !m_plexManager.IsNull() && m_plexManager->getReferenceCounter().GetCount() > 1;
    if (isShared) {
        RemoveAll();
    } else if constexpr (!std::is_trivially_destructible_v<A>) {
        // The room of the nodes goes with the blocks.
        for (A* node = firstNode(); node != nullptr;) {
            std::destroy_at(std::exchange(node, nextNode(node)));
        }
    }
    TuFreeBlock(m_buckets);
}

template <class K, class E, class A, int F, class S, class H>
inline auto TuHashTable<K, E, A, F, S, H>::hashOf(KeyArgument key)
{
    using Hash = decltype(H::Compute(key));
    static_assert(std::unsigned_integral<Hash>, "a hash is unsigned");
    using Wide
        = std::conditional_t<sizeof(Hash) <= sizeof(std::uint32_t), std::uint32_t, std::uint64_t>;
    return static_cast<Wide>(H::Compute(key));
}

template <class K, class E, class A, int F, class S, class H>
inline typename TuHashTable<K, E, A, F, S, H>::SPlace TuHashTable<K, E, A, F, S, H>::placeOf(
    KeyArgument key) const
{
    const auto hash = hashOf(key);
    // Multiplied by 2^64 over the golden ratio; the upper bits depend on all others, and so tell
    // keys of one bucket apart.
    const std::uint64_t mixed = hash * 0x9E37'79B9'7F4A'7C15u;
    return { bucketOf(hash), static_cast<unsigned char>(1u << (mixed >> 61)) };
}

template <class K, class E, class A, int F, class S, class H>
inline bool TuHashTable<K, E, A, F, S, H>::areEqual(const A* node, KeyArgument key)
{
    if constexpr (requires { H::AreEqual(node->m_key, key); }) {
        return H::AreEqual(node->m_key, key);
    } else {
        return node->m_key == key;
    }
}

template <class K, class E, class A, int F, class S, class H>
inline A* TuHashTable<K, E, A, F, S, H>::findNode(KeyArgument key) const
{
    if (m_count == 0) {
        return nullptr;
    }
    A* node = *chainOf(bucketOf(hashOf(key)));
    while (node != nullptr && !areEqual(node, key)) {
        node = node->m_next;
    }
    return node;
}

template <class K, class E, class A, int F, class S, class H>
template <class... Args>
inline std::pair<A*, bool> TuHashTable<K, E, A, F, S, H>::findOrInsert(
    KeyArgument key, Args&&... args)
{
    if (m_buckets == nullptr) {
        prepareBuckets();
    }
    const SPlace place = placeOf(key);
    A** const chain = chainOf(place.bucket);
    if ((filters()[place.bucket] & place.mark) != 0) {
        for (A* node = *chain; node != nullptr; node = node->m_next) {
            if (areEqual(node, key)) {
                return { node, false };
            }
        }
    }
    return { makeFirst(place, key, std::forward<Args>(args)...), true };
}

template <class K, class E, class A, int F, class S, class H>
template <class Replace, class... Args>
inline bool TuHashTable<K, E, A, F, S, H>::replaceOrInsertFirst(
    KeyArgument key, Replace&& replace, Args&&... args)
{
    if (m_buckets == nullptr) {
        prepareBuckets();
    }
    const SPlace place = placeOf(key);
    A** const chain = chainOf(place.bucket);
    if ((filters()[place.bucket] & place.mark) != 0) {
        for (A** link = chain; *link != nullptr; link = &(*link)->m_next) {
            if (areEqual(*link, key)) {
                A* const node = *link;
                std::forward<Replace>(replace)(*node);
                *link = node->m_next;
                node->m_next = *chain;
                *chain = node;
                return false;
            }
        }
    }
    makeFirst(place, key, std::forward<Args>(args)...);
    return true;
}

template <class K, class E, class A, int F, class S, class H>
template <class... Args>
inline A* TuHashTable<K, E, A, F, S, H>::insertNew(KeyArgument key, Args&&... args)
{
    TU_ASSERT(!Contains(key), "a key that is in the table already was said to be new");
    if (m_buckets == nullptr) {
        prepareBuckets();
    }
    return makeFirst(placeOf(key), key, std::forward<Args>(args)...);
}

template <class K, class E, class A, int F, class S, class H>
template <class... Args>
A* TuHashTable<K, E, A, F, S, H>::append(KeyArgument key, Args&&... args)
{
    if (m_buckets == nullptr) {
        prepareBuckets();
    }
    const SPlace place = placeOf(key);
    A** link = chainOf(place.bucket);
    for (; *link != nullptr; link = &(*link)->m_next) {
        if (areEqual(*link, key)) {
            return nullptr;
        }
    }
    return *link = makeNode(place, key, std::forward<Args>(args)...);
}

template <class K, class E, class A, int F, class S, class H>
template <class... Args>
inline A* TuHashTable<K, E, A, F, S, H>::makeNode(SPlace place, Args&&... args)
{
    if (m_plexManager.IsNull() || m_count == std::numeric_limits<S>::max()) {
        preparePlexManager();
    }
    A* const node = m_plexManager->Make(place.bucket, std::forward<Args>(args)...);
    filters()[place.bucket] |= place.mark;
    ++m_count;
    return node;
}

template <class K, class E, class A, int F, class S, class H>
template <class... Args>
inline A* TuHashTable<K, E, A, F, S, H>::makeFirst(SPlace place, KeyArgument key, Args&&... args)
{
    A* const node = makeNode(place, key, std::forward<Args>(args)...);
    A** const chain = chainOf(place.bucket);
    node->m_next = *chain;
    return *chain = node;
}

template <class K, class E, class A, int F, class S, class H>
void TuHashTable<K, E, A, F, S, H>::prepareBuckets()
{
    const std::size_t size = sizeof(SBuckets) + std::size_t{ m_bucketCount } * (sizeof(A*) + 1);
    void* const block = TuAllocateBlock(size);
    if (block == nullptr) {
        throw TuExceptionOutOfMemory(TU_HERE_IN("core/groundwork/tuhashtable"));
    }
    m_buckets = ::new (block) SBuckets{ TuHashModulo::GetReciprocal(m_bucketCount) };
    std::uninitialized_fill_n(m_buckets->GetChains(), m_bucketCount, nullptr);
    std::uninitialized_fill_n(filters(), m_bucketCount, static_cast<unsigned char>(0));
}

template <class K, class E, class A, int F, class S, class H>
void TuHashTable<K, E, A, F, S, H>::preparePlexManager()
{
    if (m_count == std::numeric_limits<S>::max()) {
        throw TuExceptionOutOfMemory(TU_HERE_IN("core/groundwork/tuhashtable"));
    }
    m_plexManager = TuMake<PlexManager>(m_blockSize);
}

/// The filters say of eight buckets at once that nothing has come into them.
template <class K, class E, class A, int F, class S, class H>
inline unsigned int TuHashTable<K, E, A, F, S, H>::nextUsedBucket(unsigned int bucket) const
{
    const unsigned char* const marks = filters();
    for (std::uint64_t eight = 0; m_bucketCount - bucket >= sizeof(eight);
         bucket += static_cast<unsigned int>(sizeof(eight))) {
        std::memcpy(&eight, marks + bucket, sizeof(eight));
        if (eight != 0) {
            break;
        }
    }
    while (bucket != m_bucketCount && marks[bucket] == 0) {
        ++bucket;
    }
    return bucket;
}

template <class K, class E, class A, int F, class S, class H>
A* TuHashTable<K, E, A, F, S, H>::firstNodeFrom(unsigned int bucket) const
{
    while ((bucket = nextUsedBucket(bucket)) != m_bucketCount) {
        if (A* const node = *chainOf(bucket); node != nullptr) {
            return node;
        }
        ++bucket; // what came into it is gone
    }
    return nullptr;
}

template <class K, class E, class A, int F, class S, class H>
bool TuHashTable<K, E, A, F, S, H>::RemoveKey(KeyArgument key)
{
    if (m_count == 0) {
        return false;
    }
    A** link = chainOf(bucketOf(hashOf(key)));
    while (*link != nullptr && !areEqual(*link, key)) {
        link = &(*link)->m_next;
    }
    if (*link == nullptr) {
        return false;
    }
    removeAt(link);
    return true;
}

template <class K, class E, class A, int F, class S, class H>
typename TuHashTable<K, E, A, F, S, H>::iterator TuHashTable<K, E, A, F, S, H>::Erase(
    const_iterator position)
{
    A* const node = position.m_node;
    TU_ASSERT(node != nullptr, "the end of a map or set cannot be removed");
    A* const next = nextNode(node);
    A** link = chainOf(node->m_bucket);
    while (*link != node) {
        link = &(*link)->m_next;
    }
    removeAt(link);
    return iterator(next, this);
}

template <class K, class E, class A, int F, class S, class H>
void TuHashTable<K, E, A, F, S, H>::removeAt(A** link)
{
    A* const node = *link;
    *link = node->m_next;
    --m_count;
    m_plexManager->Destroy(node);
}

template <class K, class E, class A, int F, class S, class H>
void TuHashTable<K, E, A, F, S, H>::RemoveAll()
{
    if (m_count == 0) {
        return;
    }
    // A value that goes may look into the table: it finds no node that is gone already.
    for (unsigned int bucket = nextUsedBucket(0); bucket != m_bucketCount;
         bucket = nextUsedBucket(bucket)) {
        while (A* const node = *chainOf(bucket)) {
            *chainOf(bucket) = node->m_next;
            --m_count;
            m_plexManager->Destroy(node);
        }
        filters()[bucket] = 0;
    }
}

template <class K, class E, class A, int F, class S, class H>
void TuHashTable<K, E, A, F, S, H>::copyFrom(const TuHashTable& other)
{
    if (other.m_count == 0) {
        return;
    }
    prepareBuckets();
    const bool hasSameBuckets = m_bucketCount == other.m_bucketCount;
    A** link = chainOf(0);
    for (const A* node = other.firstNode(); node != nullptr; node = other.nextNode(node)) {
        const SPlace place = hasSameBuckets
            ? SPlace{ node->m_bucket, other.filters()[node->m_bucket] }
            : placeOf(KeyArgument(node->m_key));
        if (!hasSameBuckets || *link == nullptr || (*link)->m_bucket != place.bucket) {
            link = chainOf(place.bucket);
        }
        while (*link != nullptr) {
            link = &(*link)->m_next;
        }
        *link = makeNode(place, *node);
    }
}

template <class K, class E, class A, int F, class S, class H>
void TuHashTable<K, E, A, F, S, H>::swapTables(TuHashTable& other) noexcept
{
    m_plexManager.Swap(other.m_plexManager);
    std::swap(m_count, other.m_count);
    std::swap(m_bucketCount, other.m_bucketCount);
    std::swap(m_buckets, other.m_buckets);
    std::swap(m_blockSize, other.m_blockSize);
}
