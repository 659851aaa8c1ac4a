#pragma once

/// A number as a type: selects one of two overloads at compile time.
template <int Value> struct TuIntToType
{
    static constexpr int kValue = Value;
};
