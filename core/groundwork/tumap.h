#pragma once

#include "groundwork/tuhashtable.h"
#include "groundwork/tumapassociation.h"

#include <initializer_list>

/// A hash map whose number of buckets is fixed, but for moves and Swap, which exchange it: chains
/// grow, entries never move. Choose about as many buckets as there will be entries; 17 serve up to
/// a hundred.
///
/// Iteration goes through the buckets in order, and in each from the entry inserted last to the
/// first. A value replaced keeps its place; removed and inserted again, it comes first. Keys hash
/// by TuHashKey. Flags add up: 1, the map can be walked; 16, values may be changed through
/// iterators. Nodes come in blocks from a TuPlexManager, made at the first insertion unless the
/// map is given one to share. References stay valid until their entry is removed; iterators, too,
/// unless the map is swapped or moved. A class may hold a map of its own kind: V need not be
/// complete where the map is declared.
///
///     TuMap<CString, int> counts;
///     ++counts[u"lines"];
///     if (const int* lines = counts.Lookup(u"lines"))
///         Print(*lines);
///
/// Ownership: of keys and values; of the plex manager together with those that share it.
/// Threads:   many readers, or one writer. Maps that share a plex manager count as one.
/// Failure:   TuExceptionPreconditionViolation for a bucket count of 0, at the first insertion for
///            a block size of 0 (which is also when the memory for the buckets is taken), and from
///            GetAt for a key that is not there. TuExceptionOutOfMemory (see TuPlexManager), also
///            when Size cannot count one more entry. TuExceptionStream for a record that holds a
///            key twice. The map is then as it was.
template <class K, class V, int Flags = eI_Iterable + eI_Mutable, class Size = unsigned int,
    class Hash = TuHashKey<K>>
class TuMap
    : public TuHashTable<K, TuMapAssociation<K, V>, TuMapAssociation<K, V>, Flags, Size, Hash>
{
    using Base = TuHashTable<K, TuMapAssociation<K, V>, TuMapAssociation<K, V>, Flags, Size, Hash>;

public:
    using SAssociation = TuMapAssociation<K, V>;
    using key_type = K;
    using mapped_type = V;
    using typename Base::KeyArgument;
    using typename Base::PlexManager;

    TuMap()
        : TuMap(PlexManager::kDefaultBlockSize)
    {
    }
    explicit TuMap(unsigned int blockSize, unsigned int bucketCount = Base::kDefaultBucketCount)
        : Base(blockSize, bucketCount)
    {
    }
    explicit TuMap(TuSmartPointer<PlexManager> plexManager,
        unsigned int bucketCount = Base::kDefaultBucketCount)
        : Base(std::move(plexManager), bucketCount)
    {
    }
    /// Of two entries with one key the later counts.
    TuMap(std::initializer_list<std::pair<K, V>> entries);
    TuMap(const TuMap& other)
        : TuMap(other.GetBlockSize(), other.GetBucketCount())
    {
        Base::copyFrom(other);
    }
    TuMap(TuMap&& other) noexcept = default;
    /// Keeps its own buckets and plex manager.
    TuMap& operator=(const TuMap& other);
    /// Takes over those of `other`.
    TuMap& operator=(TuMap&& other) noexcept;
    ~TuMap() override = default;

    /// Inserts a value-initialised value when the key is not there: to ask, use Lookup.
    V& operator[](KeyArgument key) { return Base::findOrInsert(key).first->GetValue(); }
    /// Inserts the value or replaces the one that is there; returns whether the key is new.
    bool SetAt(KeyArgument key, const V& value) { return setValue(key, value); }
    bool SetAt(KeyArgument key, V&& value) { return setValue(key, std::move(value)); }
    /// Inserts the value unless the key is there; returns whether it did.
    bool Insert(KeyArgument key, const V& value) { return Base::findOrInsert(key, value).second; }
    bool Insert(KeyArgument key, V&& value)
    {
        return Base::findOrInsert(key, std::move(value)).second;
    }
    /// As SetAt, but an entry that is there already comes first in its bucket afterwards, as if it
    /// had been removed and inserted again. A failure changes nothing.
    bool SetFirst(KeyArgument key, const V& value)
    {
        return Base::replaceOrInsertFirst(
            key, [&value](SAssociation& entry) { entry.GetValue() = value; }, value);
    }
    /// Inserts a value under a key that is known to be new: it is looked for in debug builds only.
    void InsertNew(KeyArgument key, const V& value) { Base::insertNew(key, value); }
    void InsertNew(KeyArgument key, V&& value) { Base::insertNew(key, std::move(value)); }

    /// The value of the key, or null.
    V* Lookup(KeyArgument key);
    const V* Lookup(KeyArgument key) const { return const_cast<TuMap*>(this)->Lookup(key); }
    /// Copies the value out; false when the key is not there, `value` is then unchanged.
    bool Lookup(KeyArgument key, V& value) const;
    V& GetAt(KeyArgument key);
    const V& GetAt(KeyArgument key) const { return const_cast<TuMap*>(this)->GetAt(key); }

    /// Version 0, the number of entries in 32 bits, key and value of each in the order of
    /// iteration. A map with the same number of buckets reads them back into the same order. The
    /// time of reading grows with the square of the entries in a bucket: choose the bucket count
    /// first.
    void Serialize(TuStreamWriteBinary& stream) const;
    void Serialize(TuStreamReadBinary& stream);

    /// Buckets and plex managers change hands, too.
    void Swap(TuMap& other) noexcept { Base::swapTables(other); }
    friend void swap(TuMap& a, TuMap& b) noexcept { a.Swap(b); }
    /// The same keys with equal values, in whatever order.
    friend bool operator==(const TuMap& a, const TuMap& b)
    {
        return a.GetCount() == b.GetCount() && a.isPartOf(b);
    }

private:
    static constexpr unsigned int kVersion = 0;

    TuMap makeSibling() const
    {
        return Base::getPlexManager().IsNull()
            ? TuMap(Base::GetBlockSize(), Base::GetBucketCount())
            : TuMap(Base::getPlexManager(), Base::GetBucketCount());
    }
    template <class Value> bool setValue(KeyArgument key, Value&& value);
    bool isPartOf(const TuMap& other) const;
};

template <class K, class V, int F, class S, class H>
TuMap<K, V, F, S, H>::TuMap(std::initializer_list<std::pair<K, V>> entries)
    : TuMap()
{
    for (const std::pair<K, V>& entry : entries) {
        SetAt(entry.first, entry.second);
    }
}

template <class K, class V, int F, class S, class H>
TuMap<K, V, F, S, H>& TuMap<K, V, F, S, H>::operator=(const TuMap& other)
{
    TuMap copy = makeSibling();
    copy.copyFrom(other);
    Swap(copy);
    return *this;
}

template <class K, class V, int F, class S, class H>
TuMap<K, V, F, S, H>& TuMap<K, V, F, S, H>::operator=(TuMap&& other) noexcept
{
    TuMap(std::move(other)).Swap(*this);
    return *this;
}

template <class K, class V, int F, class S, class H>
template <class Value>
bool TuMap<K, V, F, S, H>::setValue(KeyArgument key, Value&& value)
{
    // An association that is there already has not taken the value.
    const auto [node, isNew] = Base::findOrInsert(key, std::forward<Value>(value));
    if (!isNew) {
        node->GetValue() = std::forward<Value>(value);
    }
    return isNew;
}

template <class K, class V, int F, class S, class H>
inline V* TuMap<K, V, F, S, H>::Lookup(KeyArgument key)
{
    SAssociation* const node = Base::findNode(key);
    return node != nullptr ? &node->GetValue() : nullptr;
}

template <class K, class V, int F, class S, class H>
bool TuMap<K, V, F, S, H>::Lookup(KeyArgument key, V& value) const
{
    const V* const present = Lookup(key);
    if (present != nullptr) {
        value = *present;
    }
    return present != nullptr;
}

template <class K, class V, int F, class S, class H> V& TuMap<K, V, F, S, H>::GetAt(KeyArgument key)
{
    V* const present = Lookup(key);
    if (present == nullptr) {
        throw TuExceptionPreconditionViolation(
            TU_HERE_IN("core/groundwork/tumap"), u"the key is in the map");
    }
    return *present;
}

template <class K, class V, int F, class S, class H>
bool TuMap<K, V, F, S, H>::isPartOf(const TuMap& other) const
{
    for (const SAssociation* node = Base::firstNode(); node; node = Base::nextNode(node)) {
        const V* const value = other.Lookup(node->GetKey());
        if (value == nullptr || !(*value == node->GetValue())) {
            return false;
        }
    }
    return true;
}

template <class K, class V, int F, class S, class H>
void TuMap<K, V, F, S, H>::Serialize(TuStreamWriteBinary& stream) const
{
    stream.WriteVersion(kVersion);
    stream << static_cast<unsigned int>(Base::GetCount());
    for (const SAssociation* node = Base::firstNode(); node; node = Base::nextNode(node)) {
        TuWriteElement(stream, node->GetKey());
        TuWriteElement(stream, node->GetValue());
    }
}

template <class K, class V, int F, class S, class H>
void TuMap<K, V, F, S, H>::Serialize(TuStreamReadBinary& stream)
{
    stream.ReadAndCompareVersion(kVersion);
    unsigned int count = 0;
    stream >> count;
    TuMap read = makeSibling();
    for (; count != 0; --count) {
        K key{};
        V value{};
        TuReadElement(stream, key);
        TuReadElement(stream, value);
        if (read.append(key, std::move(value)) == nullptr) {
            throw TuExceptionStream(
                TU_HERE_IN("core/groundwork/tumap"), u"a stored map holds a key twice");
        }
    }
    Swap(read);
}
