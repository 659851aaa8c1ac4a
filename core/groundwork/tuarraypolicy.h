#pragma once

#include <memory>
#include <type_traits>

/// How a TuArray makes elements that nobody gave a value, and how it moves elements.

/// The usual policy: new elements are value-initialised (numbers are 0); elements that the compiler
/// may copy as bytes are moved as bytes, all others one by one by their own constructors.
struct TuArrayPolicyConstructDefault
{
    template <class T> static constexpr bool kMovesBytes = std::is_trivially_copyable_v<T>;

    template <class T> static void Construct(T* first, unsigned int count)
    {
        std::uninitialized_value_construct_n(first, count);
    }
};

/// The policy of TuArrayManaged: each element is constructed, moved and destroyed by itself.
struct TuArrayPolicyConstructManaged : TuArrayPolicyConstructDefault
{
    template <class T> static constexpr bool kMovesBytes = false;
};

/// New elements have any value: for numbers that are written before they are read, where filling
/// large arrays with 0 first would take time.
struct TuArrayPolicyConstructUninitialised : TuArrayPolicyConstructDefault
{
    template <class T> static constexpr void Construct(T*, unsigned int)
    {
        static_assert(std::is_trivially_default_constructible_v<T>,
            "only numbers and plain records may be left as the memory is");
    }
};
