#pragma once

#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

/// A key of a map with its value, as iterators give it; the node of the map's chains.
///
///     for (auto& [key, value] : map)
///         value += Weight(key);
template <class K, class V> class TuMapAssociation
{
public:
    template <class KeyArgument, class... Args>
    TuMapAssociation(unsigned int bucket, const KeyArgument& key, Args&&... args)
        : m_key(static_cast<K>(key))
        , m_value(std::forward<Args>(args)...)
        , m_bucket(bucket)
    {
    }
    TuMapAssociation(unsigned int bucket, const TuMapAssociation& other)
        : m_key(other.m_key)
        , m_value(other.m_value)
        , m_bucket(bucket)
    {
    }
    TuMapAssociation(const TuMapAssociation&) = delete;
    TuMapAssociation& operator=(const TuMapAssociation&) = delete;

    const K& GetKey() const { return m_key; }
    V& GetValue() { return m_value; }
    const V& GetValue() const { return m_value; }

    // For structured bindings.
    template <std::size_t Index> auto& get()
    {
        if constexpr (Index == 0) {
            return std::as_const(m_key);
        } else {
            return m_value;
        }
    }
    template <std::size_t Index> const auto& get() const
    {
        if constexpr (Index == 0) {
            return m_key;
        } else {
            return m_value;
        }
    }

private:
    template <class, class, class, int, class, class> friend class TuHashTable;
    template <class, class, class, int> friend class TuHashIterator;

    TuMapAssociation& getElement() { return *this; }

    K m_key;
    V m_value;
    TuMapAssociation* m_next = nullptr; // in the chain of the bucket
    unsigned int m_bucket;
};

template <class K, class V>
struct std::tuple_size<TuMapAssociation<K, V>> : std::integral_constant<std::size_t, 2>
{
};
template <class K, class V> struct std::tuple_element<0, TuMapAssociation<K, V>>
{
    using type = const K;
};
template <class K, class V> struct std::tuple_element<1, TuMapAssociation<K, V>>
{
    using type = V;
};
