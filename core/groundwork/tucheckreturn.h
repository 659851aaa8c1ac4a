#pragma once

#include "groundwork/tuassert.h"

#include <exception>
#include <utility>

/// Complains, in debug builds, when a result was dropped unread.
struct TuCheckReturnPolicyAssert
{
    static void OnUnread()
    {
        TU_ASSERT(false,
            "the result of a call was dropped without a look at it; test it, or call MarkRead() to"
            " say that it does not matter");
    }
};

/// Says nothing when a result is dropped.
struct TuCheckReturnPolicyIgnore
{
    static void OnUnread() { }
};

/// A result that the caller is expected to look at. Reading it, by conversion or GetValue, or
/// MarkRead() is a look; a copy or a move hands the duty on to the new object. The compiler warns
/// where a result is not even taken.
///
/// Failure: none; the destructor complains through the policy and never throws.
template <class T, class Policy = TuCheckReturnPolicyAssert> class [[nodiscard]] TuCheckReturn
{
public:
    TuCheckReturn(T value) // NOLINT(google-explicit-constructor): `return true;`
        : m_value(std::move(value))
    {
    }
    TuCheckReturn(const TuCheckReturn& other)
        : m_value(other.m_value)
        , m_read(std::exchange(other.m_read, true))
    {
    }
    TuCheckReturn& operator=(const TuCheckReturn& other)
    {
        if (this != &other) {
            complainIfUnread();
            m_value = other.m_value;
            m_read = std::exchange(other.m_read, true);
        }
        return *this;
    }
    ~TuCheckReturn() { complainIfUnread(); }

    operator const T&() const { return GetValue(); } // NOLINT(google-explicit-constructor)
    const T& GetValue() const
    {
        m_read = true;
        return m_value;
    }
    void MarkRead() const { m_read = true; }

private:
    void complainIfUnread() const
    {
        // An exception on its way is the greater news.
        if (!m_read && std::uncaught_exceptions() <= m_exceptions) {
            Policy::OnUnread();
        }
    }

    T m_value;
    mutable bool m_read = false;
    int m_exceptions = std::uncaught_exceptions();
};
