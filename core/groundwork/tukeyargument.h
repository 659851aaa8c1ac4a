#pragma once

#include "groundwork/cstring.h"
#include "groundwork/tusmartpointer.h"

#include <concepts>
#include <cstddef>
#include <string>

/// What look-ups in maps and sets take: a key, or something that stands for it and is cheaper.
template <class K, class Hash> struct TuKeyArgument
{
    using Type = const K&;
};
template <class K, class Hash>
requires requires { typename Hash::Argument; }
struct TuKeyArgument<K, Hash>
{
    using Type = const typename Hash::Argument&;
};

/// Any text, as the key of a look-up: literals and views are looked up as they are. It refers to
/// the text that it is made from.
template <class Unit> class TuTextArgument
{
public:
    using Text = CStringT<Unit>;
    using View = typename Text::View;

    TuTextArgument(const Text& text) // NOLINT(google-explicit-constructor): texts pass as they are
        : m_view(text)
    {
    }
    TuTextArgument(View text) // NOLINT(google-explicit-constructor)
        : m_view(text)
    {
    }
    TuTextArgument(const std::basic_string<Unit>& text) // NOLINT(google-explicit-constructor)
        : m_view(text)
    {
    }
    /// Null is the empty text.
    TuTextArgument(const Unit* text) // NOLINT(google-explicit-constructor)
        : m_view(text != nullptr ? View(text) : View())
    {
    }
    TuTextArgument(std::nullptr_t) = delete;
    /// What must be converted first, `wchar_t` text for one.
    template <class Other>
    requires(std::convertible_to<const Other&, Text> && !std::convertible_to<const Other&, View>)
        TuTextArgument(const Other& text) // NOLINT(google-explicit-constructor)
        : m_converted(text)
        , m_view(m_converted)
    {
    }
    TuTextArgument(const TuTextArgument&) = delete;
    TuTextArgument& operator=(const TuTextArgument&) = delete;

    View GetView() const { return m_view; }
    explicit operator Text() const { return m_view; }

private:
    Text m_converted; // empty unless needed
    View m_view;
};

/// Any pointer to an object, as the key of a look-up. It counts no reference, so that an object
/// that nobody holds yet may be asked for.
template <class T> class TuPointerArgument
{
public:
    TuPointerArgument(T* object) // NOLINT(google-explicit-constructor): pointers pass as they are
        : m_object(object)
    {
    }
    template <class U>
    requires std::convertible_to<U*, T*> TuPointerArgument( // NOLINT(google-explicit-constructor)
        const TuSmartPointer<U>& pointer)
        : m_object(pointer.Get())
    {
    }

    T* Get() const { return m_object; }
    explicit operator TuSmartPointer<T>() const { return m_object; }

private:
    T* m_object;
};
