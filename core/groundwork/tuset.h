#pragma once

#include "groundwork/tuhashtable.h"
#include "groundwork/tusetpolicy.h"

#include <initializer_list>

/// The node of a set's chains: a key without a value.
template <class K> class TuSetAssociation
{
public:
    template <class KeyArgument>
    TuSetAssociation(unsigned int bucket, const KeyArgument& key)
        : m_key(static_cast<K>(key))
        , m_bucket(bucket)
    {
    }
    TuSetAssociation(unsigned int bucket, const TuSetAssociation& other)
        : TuSetAssociation(bucket, other.m_key)
    {
    }
    TuSetAssociation(const TuSetAssociation&) = delete;
    TuSetAssociation& operator=(const TuSetAssociation&) = delete;

    const K& GetKey() const { return m_key; }

private:
    template <class, class, class, int, class, class> friend class TuHashTable;
    template <class, class, class, int> friend class TuHashIterator;

    const K& getElement() const { return m_key; }

    K m_key;
    TuSetAssociation* m_next = nullptr; // in the chain of the bucket
    unsigned int m_bucket;
};

/// A hash set: a TuMap without values, in everything else like one. Keys are constant in it,
/// whatever the flags.
///
///     TuSet<CString> seen;
///     if (seen.Add(name))
///         Visit(name);
template <class K, int Flags = eI_Iterable + eI_Mutable, class Size = unsigned int,
    class Hash = TuHashKey<K>, class Serializing = TuSetPolicySerializable>
class TuSet : public TuHashTable<K, const K, TuSetAssociation<K>, Flags, Size, Hash>
{
    using Base = TuHashTable<K, const K, TuSetAssociation<K>, Flags, Size, Hash>;

public:
    using SAssociation = TuSetAssociation<K>;
    using key_type = K;
    using typename Base::KeyArgument;
    using typename Base::PlexManager;

    TuSet()
        : TuSet(PlexManager::kDefaultBlockSize)
    {
    }
    explicit TuSet(unsigned int blockSize, unsigned int bucketCount = Base::kDefaultBucketCount)
        : Base(blockSize, bucketCount)
    {
    }
    explicit TuSet(TuSmartPointer<PlexManager> plexManager,
        unsigned int bucketCount = Base::kDefaultBucketCount)
        : Base(std::move(plexManager), bucketCount)
    {
    }
    TuSet(std::initializer_list<K> keys);
    TuSet(const TuSet& other)
        : TuSet(other.GetBlockSize(), other.GetBucketCount())
    {
        Base::copyFrom(other);
    }
    TuSet(TuSet&& other) noexcept = default;
    /// Keeps its own buckets and plex manager.
    TuSet& operator=(const TuSet& other);
    /// Takes over those of `other`.
    TuSet& operator=(TuSet&& other) noexcept;
    ~TuSet() override = default;

    /// Returns whether the key is new.
    bool Add(KeyArgument key) { return Base::findOrInsert(key).second; }
    /// As std::inserter calls it; the place does not matter.
    typename Base::iterator insert(typename Base::const_iterator, KeyArgument key)
    {
        Add(key);
        return Base::Find(key);
    }

    /// As a TuMap, without values.
    void Serialize(TuStreamWriteBinary& stream) const;
    void Serialize(TuStreamReadBinary& stream);

    /// Buckets and plex managers change hands, too.
    void Swap(TuSet& other) noexcept { Base::swapTables(other); }
    friend void swap(TuSet& a, TuSet& b) noexcept { a.Swap(b); }
    /// The same keys, in whatever order.
    friend bool operator==(const TuSet& a, const TuSet& b)
    {
        return a.GetCount() == b.GetCount() && a.isPartOf(b);
    }

private:
    TuSet makeSibling() const
    {
        return Base::getPlexManager().IsNull()
            ? TuSet(Base::GetBlockSize(), Base::GetBucketCount())
            : TuSet(Base::getPlexManager(), Base::GetBucketCount());
    }
    bool isPartOf(const TuSet& other) const;
};

template <class K, int F, class S, class H, class Z>
TuSet<K, F, S, H, Z>::TuSet(std::initializer_list<K> keys)
    : TuSet()
{
    for (const K& key : keys) {
        Add(key);
    }
}

template <class K, int F, class S, class H, class Z>
TuSet<K, F, S, H, Z>& TuSet<K, F, S, H, Z>::operator=(const TuSet& other)
{
    TuSet copy = makeSibling();
    copy.copyFrom(other);
    Swap(copy);
    return *this;
}

template <class K, int F, class S, class H, class Z>
TuSet<K, F, S, H, Z>& TuSet<K, F, S, H, Z>::operator=(TuSet&& other) noexcept
{
    TuSet(std::move(other)).Swap(*this);
    return *this;
}

template <class K, int F, class S, class H, class Z>
bool TuSet<K, F, S, H, Z>::isPartOf(const TuSet& other) const
{
    const SAssociation* node = Base::firstNode();
    while (node != nullptr && other.Contains(node->GetKey())) {
        node = Base::nextNode(node);
    }
    return node == nullptr;
}

template <class K, int F, class S, class H, class Z>
void TuSet<K, F, S, H, Z>::Serialize(TuStreamWriteBinary& stream) const
{
    stream.WriteVersion(Z::kVersion);
    stream << static_cast<unsigned int>(Base::GetCount());
    for (const SAssociation* node = Base::firstNode(); node; node = Base::nextNode(node)) {
        Z::Write(stream, node->GetKey());
    }
}

template <class K, int F, class S, class H, class Z>
void TuSet<K, F, S, H, Z>::Serialize(TuStreamReadBinary& stream)
{
    stream.ReadAndCompareVersion(Z::kVersion);
    unsigned int count = 0;
    stream >> count;
    TuSet read = makeSibling();
    for (; count != 0; --count) {
        K key{};
        Z::Read(stream, key);
        if (read.append(key) == nullptr) {
            throw TuExceptionStream(
                TU_HERE_IN("core/groundwork/tuset"), u"a stored set holds a key twice");
        }
    }
    Swap(read);
}
