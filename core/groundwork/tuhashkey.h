#pragma once

#include "groundwork/cstring.h"
#include "groundwork/tukeyargument.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

/// The hash of a key, before it is reduced to a bucket.
///
/// Maps and sets take the hash modulo their bucket count. Integers, enumerators and pointers hash
/// by their unsigned value without the lowest 4 bits: addresses differ only above them. Text
/// hashes by its units. For a key of your own, specialise:
///
///     template <> struct TuHashKey<Point>
///     {
///         static unsigned int Compute(const Point& key) { return key.x * 31u + key.y; }
///     };
///
/// Two members are optional: `AreEqual(key, key)`, where operator== is not what is meant, and the
/// type `Argument`, where look-ups take something cheaper than a key (see TuKeyArgument).
template <class K> struct TuHashKey;

/// Numbers are made unsigned at their own width, and are never cut. A negative `long` is another
/// number where it has another width: maps that are stored have keys of a fixed width.
template <class K>
requires std::integral<K> || std::is_enum_v<K>
struct TuHashKey<K>
{
    static constexpr auto Compute(K key)
    {
        using Wide
            = std::conditional_t<sizeof(K) <= sizeof(std::uint32_t), std::uint32_t, std::uint64_t>;
        if constexpr (std::is_same_v<K, bool>) {
            return Wide{ 0 };
        } else {
            return static_cast<Wide>(static_cast<std::make_unsigned_t<K>>(key)) >> 4;
        }
    }
};

template <class T> struct TuHashKey<T*>
{
    static std::uintptr_t Compute(const T* key)
    {
        return reinterpret_cast<std::uintptr_t>(key) >> 4;
    }
};

/// A smart pointer is the address that it holds.
template <class T> struct TuHashKey<TuSmartPointer<T>>
{
    using Argument = TuPointerArgument<T>;

    static std::uintptr_t Compute(Argument key) { return TuHashKey<T*>::Compute(key.Get()); }
    static bool AreEqual(const TuSmartPointer<T>& a, Argument b) { return a.Get() == b.Get(); }
};

/// hash = hash * 33 + unit, in 32 bits; letters of different case differ.
template <class Unit> struct TuHashKey<CStringT<Unit>>
{
    using Argument = TuTextArgument<Unit>;
    using View = typename CStringT<Unit>::View;

    static std::uint32_t Compute(const Argument& key);
    static bool AreEqual(const CStringT<Unit>& a, const Argument& b)
    {
        const View view = b.GetView();
        return a.GetLength() == view.size()
            && (view.empty()
                || std::memcmp(a.GetString(), view.data(), view.size() * sizeof(Unit)) == 0);
    }
};

template <class Unit> inline std::uint32_t TuHashKey<CStringT<Unit>>::Compute(const Argument& key)
{
    using Unsigned = std::make_unsigned_t<Unit>;
    const auto unit = [](Unit value) { return std::uint32_t{ static_cast<Unsigned>(value) }; };
    constexpr std::uint32_t k1 = 33;
    constexpr std::uint32_t k2 = k1 * 33;
    constexpr std::uint32_t k3 = k2 * 33;
    constexpr std::uint32_t k4 = k3 * 33;

    std::uint32_t hash = 0;
    const Unit* next = key.GetView().data();
    std::size_t left = key.GetView().size();
    // Four units in a step: only one product waits for the step before.
    for (; left >= 4; left -= 4, next += 4) {
        hash = hash * k4
            + (unit(next[0]) * k3 + unit(next[1]) * k2 + unit(next[2]) * k1 + unit(next[3]));
    }
    for (; left != 0; --left, ++next) {
        hash = hash * k1 + unit(*next);
    }
    return hash;
}
