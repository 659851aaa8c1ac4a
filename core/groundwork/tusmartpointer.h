#pragma once

#include "groundwork/tureferencecounted.h"

#include <compare>
#include <concepts>
#include <cstddef>
#include <functional>
#include <utility>

/// Shares ownership of an object that counts its references (TuReferenceCounted, or any other class
/// that implements IReferenceCounted). The size of one pointer.
///
/// Ownership: each non-null pointer is one strong reference; the last one deletes the object
///            through its virtual destructor.
/// Threads:   pointers to one object may be copied and dropped on any thread; one pointer object is
///            used by one thread at a time, like a raw pointer.
/// Failure:   none.
template <class T> class GROUNDWORK_TEMPLATE TuSmartPointer
{
public:
    using element_type = T;

    TuSmartPointer() = default;
    // NOLINTBEGIN(google-explicit-constructor): it is made of pointers as pointers are
    template <std::same_as<std::nullptr_t> Null> TuSmartPointer(Null) { }
    /// From a new object, or one more reference to a shared one.
    TuSmartPointer(T* object)
        : m_object(object)
    {
        addReference();
    }
    TuSmartPointer(const TuSmartPointer& other)
        : TuSmartPointer(other.m_object)
    {
    }
    TuSmartPointer(TuSmartPointer&& other) noexcept
        : m_object(std::exchange(other.m_object, nullptr))
    {
    }
    /// To a base of the class, or to the read-only view.
    template <class U>
    requires std::convertible_to<U*, T*> TuSmartPointer(const TuSmartPointer<U>& other)
        : TuSmartPointer(other.Get())
    {
    }
    template <class U>
    requires std::convertible_to<U*, T*> TuSmartPointer(TuSmartPointer<U>&& other)
    noexcept
        : m_object(other.Detach())
    {
    }
    // NOLINTEND(google-explicit-constructor)
    ~TuSmartPointer() { releaseReference(); }

    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): swapped with a copy
    TuSmartPointer& operator=(const TuSmartPointer& other)
    {
        TuSmartPointer(other).Swap(*this);
        return *this;
    }
    TuSmartPointer& operator=(TuSmartPointer&& other) noexcept
    {
        TuSmartPointer(std::move(other)).Swap(*this);
        return *this;
    }

    T* Get() const { return m_object; }
    T& operator*() const { return *m_object; }
    T* operator->() const { return m_object; }
    explicit operator bool() const { return m_object != nullptr; }
    bool IsNull() const { return m_object == nullptr; }

    void Reset() { TuSmartPointer().Swap(*this); }
    void Swap(TuSmartPointer& other) noexcept { std::swap(m_object, other.m_object); }

    /// Gives up the pointer and leaves its reference counted; Adopt takes it up again.
    [[nodiscard]] T* Detach() { return std::exchange(m_object, nullptr); }
    /// Takes over a reference that is already counted.
    [[nodiscard]] static TuSmartPointer Adopt(T* object)
    {
        TuSmartPointer pointer;
        pointer.m_object = object;
        return pointer;
    }

    // Pointers are equal when they refer to the same object; the order is that of addresses.
    template <class U> friend bool operator==(const TuSmartPointer& a, const TuSmartPointer<U>& b)
    {
        return a.m_object == b.Get();
    }
    friend bool operator==(const TuSmartPointer& a, const T* b) { return a.m_object == b; }
    template <std::same_as<std::nullptr_t> Null>
    friend bool operator==(const TuSmartPointer& a, Null)
    {
        return a.IsNull();
    }
    friend std::strong_ordering operator<=>(const TuSmartPointer& a, const TuSmartPointer& b)
    {
        return std::compare_three_way()(a.m_object, b.m_object);
    }

private:
    void addReference()
    {
        if (m_object != nullptr) {
            m_object->getReferenceCounter().AddReference();
        }
    }
    void releaseReference()
    {
        if (m_object != nullptr && m_object->getReferenceCounter().ReleaseReference()) {
            destroy(m_object);
        }
    }
    /// Out of line: the common release, which is inlined everywhere, stays small.
    [[gnu::noinline]] static void destroy(T* object)
    {
        object->getReferenceCounter().EndReferences();
#if !defined(__clang_analyzer__) // it cannot count, and takes every release for the last
        delete object;
#endif
    }

    T* m_object = nullptr;
};

/// A new object in a smart pointer.
template <class T, class... Args> [[nodiscard]] TuSmartPointer<T> TuMake(Args&&... args)
{
    return TuSmartPointer<T>(new T(std::forward<Args>(args)...));
}

template <class T> struct std::hash<TuSmartPointer<T>>
{
    std::size_t operator()(const TuSmartPointer<T>& pointer) const noexcept
    {
        return std::hash<T*>()(pointer.Get());
    }
};
