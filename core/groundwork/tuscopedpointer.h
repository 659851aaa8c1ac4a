#pragma once

#include "groundwork/groundworkapi.h"

#include <utility>

/// Sole owner of one heap object; deletes it when it goes out of scope.
///
/// Ownership: movable, not copyable.
template <class T> class GROUNDWORK_TEMPLATE TuScopedPointer
{
public:
    TuScopedPointer() = default;
    explicit TuScopedPointer(T* object)
        : m_object(object)
    {
    }
    TuScopedPointer(TuScopedPointer&& other) noexcept
        : m_object(other.Detach())
    {
    }
    TuScopedPointer& operator=(TuScopedPointer&& other) noexcept
    {
        Reset(other.Detach());
        return *this;
    }
    ~TuScopedPointer()
    {
        static_assert(sizeof(T) > 0, "an incomplete class cannot be deleted");
        delete m_object;
    }

    T* Get() const { return m_object; }
    T& operator*() const { return *m_object; }
    T* operator->() const { return m_object; }
    explicit operator bool() const { return m_object != nullptr; }

    /// Deletes the object held and holds `object`; to reset to the same object does nothing.
    void Reset(T* object = nullptr)
    {
        if (object != m_object) {
            delete std::exchange(m_object, object);
        }
    }
    /// Gives the object up to the caller.
    [[nodiscard]] T* Detach() { return std::exchange(m_object, nullptr); }

private:
    T* m_object = nullptr;
};
