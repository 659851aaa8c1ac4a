#pragma once

#include "groundwork/tuarray.h"

/// Last in, first out. The elements lie in one block, as in a TuArray, the oldest first.
///
/// Ownership: of its elements.
/// Threads:   many readers, or one writer.
/// Failure:   TuExceptionPreconditionViolation for the top of an empty stack; otherwise as TuArray.
template <class T> class TuStack : public TuContainer<T>
{
public:
    using value_type = T;
    using const_iterator = typename TuArray<T>::const_iterator;

    TuStack() = default;

    void Push(const T& element) { m_elements.Add(element); }
    void Push(T&& element) { m_elements.Add(std::move(element)); }
    template <class... Args> T& Emplace(Args&&... args)
    {
        return m_elements.Emplace(std::forward<Args>(args)...);
    }
    /// Takes the newest element off.
    T Pop()
    {
        T top(std::move(m_elements.GetLast()));
        m_elements.RemoveLast();
        return top;
    }
    T& GetTop() { return m_elements.GetLast(); }
    const T& GetTop() const { return m_elements.GetLast(); }
    void RemoveAll() { m_elements.RemoveAll(); }
    void Swap(TuStack& other) noexcept { m_elements.Swap(other.m_elements); }

    unsigned int GetCount() const { return m_elements.GetSize(); }
    bool IsEmpty() const { return m_elements.IsEmpty(); }

    const_iterator begin() const { return m_elements.begin(); }
    const_iterator end() const { return m_elements.end(); }
    unsigned int size() const { return m_elements.size(); }
    bool empty() const { return m_elements.empty(); }

    friend bool operator==(const TuStack& a, const TuStack& b)
    {
        return a.m_elements == b.m_elements;
    }

private:
    TuArray<T> m_elements;
};
