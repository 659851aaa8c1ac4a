#pragma once

#include <compare>
#include <stdexcept>
#include <utility>

/// A number that counts how many of its kind live, refers to itself (so that moving its bytes is
/// noticed), and fails to copy when told to.
class Fragile
{
public:
    static inline int s_living = 0;
    /// The copy, counted down from here, that fails; 0 is none.
    static inline int s_copiesUntilFailure = 0;

    Fragile(int value = 0) // NOLINT(google-explicit-constructor): stands for its number
        : m_value(value)
    {
        ++s_living;
    }
    Fragile(const Fragile& other)
        : m_value(other.GetValue())
    {
        if (s_copiesUntilFailure != 0 && --s_copiesUntilFailure == 0) {
            throw std::runtime_error("this copy fails");
        }
        ++s_living;
    }
    Fragile& operator=(const Fragile& other)
    {
        Fragile copy(other);
        std::swap(m_value, copy.m_value);
        return *this;
    }
    ~Fragile()
    {
        m_self = nullptr;
        --s_living;
    }

    int GetValue() const { return m_self == this ? m_value : throw std::logic_error("moved"); }
    friend bool operator==(const Fragile& a, const Fragile& b)
    {
        return a.GetValue() == b.GetValue();
    }
    friend auto operator<=>(const Fragile& a, const Fragile& b)
    {
        return a.GetValue() <=> b.GetValue();
    }

private:
    const Fragile* m_self = this;
    int m_value;
};
