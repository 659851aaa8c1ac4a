#pragma once

/// A copy to work on, given back at the end of the scope, also when an exception leaves it. Where
/// nobody takes its address, the compiler keeps the copy in processor registers, which it cannot do
/// with an object that stores through pointers to bytes may reach.
template <class T> class TaLocalCopy
{
public:
    explicit TaLocalCopy(T& original)
        : m_original(original)
        , m_copy(original)
    {
    }
    ~TaLocalCopy() { m_original = m_copy; }
    TaLocalCopy(const TaLocalCopy&) = delete;
    TaLocalCopy& operator=(const TaLocalCopy&) = delete;

    T& operator*() { return m_copy; }
    T* operator->() { return &m_copy; }

private:
    T& m_original;
    T m_copy;
};
