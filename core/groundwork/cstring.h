#pragma once

#include "groundwork/groundworkapi.h"
#include "platform/platformtext.h"

#include <compare>
#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

/// Wide text that is more than a pointer: strings and views.
template <class Text>
concept TuWideString = std::convertible_to<const Text&,
    std::wstring_view> && !std::convertible_to<const Text&, const wchar_t*>;

/// Text that owns its units: UTF-16 (`CString`, also called `String`) or bytes (`CStringA`).
///
/// Lengths, positions and order count units, not characters: U+1F600 has two UTF-16 units and sorts
/// before U+FF5E. A text may hold zero units; where only a zero-terminated pointer can be passed
/// on, it then ends early. Conversions to other encodings have names; only `wchar_t` text, which
/// means the same as UTF-16 text, converts by itself.
///
/// Threads: as a standard string: many readers, or one writer.
template <class Unit> class GROUNDWORK_TEMPLATE CStringT
{
public:
    using value_type = Unit;
    using View = std::basic_string_view<Unit>;
    using const_iterator = const Unit*;
    using iterator = const_iterator;
    static constexpr std::size_t npos = View::npos;

    CStringT() = default;
    /// Null is the empty text.
    CStringT(const Unit* text) // NOLINT(google-explicit-constructor): a literal is a text
        : m_text(toView(text))
    {
    }
    CStringT(const Unit* text, std::size_t length)
        : m_text(text, length)
    {
    }
    CStringT(View text) // NOLINT(google-explicit-constructor): so is a view
        : m_text(text)
    {
    }
    CStringT(std::basic_string<Unit> text) // NOLINT(google-explicit-constructor): and a string
        : m_text(std::move(text))
    {
    }
    CStringT(const wchar_t* text) // NOLINT(google-explicit-constructor): wide text is UTF-16 here
        requires std::is_same_v<Unit, char16_t>
        : m_text(text != nullptr ? platform::FromWide(text) : std::u16string())
    {
    }
    template <TuWideString Wide>
    CStringT(const Wide& text) // NOLINT(google-explicit-constructor): so are wide strings
        requires std::is_same_v<Unit, char16_t> : m_text(platform::FromWide(text))
    {
    }
    CStringT(std::nullptr_t) = delete;

    static CStringT FromUtf8(std::string_view text) requires std::is_same_v<Unit, char16_t>
    {
        return platform::FromUtf8(text);
    }
    /// From text in the system code page.
    static CStringT FromCodePage(std::string_view text) requires std::is_same_v<Unit, char16_t>
    {
        return platform::FromCodePage(text);
    }
    std::string ToUtf8() const requires std::is_same_v<Unit, char16_t>
    {
        return platform::ToUtf8(m_text);
    }
    std::string ToCodePage() const requires std::is_same_v<Unit, char16_t>
    {
        return platform::ToCodePage(m_text);
    }
    std::wstring ToWide() const requires std::is_same_v<Unit, char16_t>
    {
        return platform::ToWide(m_text);
    }

    CStringT& Append(View text)
    {
        m_text.append(text);
        return *this;
    }
    CStringT& Append(const Unit* text) { return Append(toView(text)); }
    template <class Text>
    CStringT& operator+=(const Text& text) requires std::convertible_to<const Text&, CStringT>
    {
        return withView(text, [this](View view) -> CStringT& { return Append(view); });
    }
    /// A unit, and nothing that would have to be cut to one.
    CStringT& operator+=(std::same_as<Unit> auto unit)
    {
        m_text += unit;
        return *this;
    }
    void Empty() { m_text.clear(); }
    void Reserve(std::size_t length) { m_text.reserve(length); }
    /// Cuts the text, or fills it up with zero units.
    void SetLength(std::size_t length) { m_text.resize(length); }

    bool IsEmpty() const { return m_text.empty(); }
    std::size_t GetLength() const { return m_text.size(); }
    /// Zero-terminated; valid until the text changes.
    const Unit* GetString() const { return m_text.c_str(); }
    View GetView() const { return m_text; }
    operator View() const { return m_text; } // NOLINT(google-explicit-constructor): see GetView
    Unit operator[](std::size_t position) const { return m_text[position]; }
    /// The units, to be changed in place; GetLength() of them.
    Unit* GetBuffer() { return m_text.data(); }

    template <class Text>
    std::size_t Find(const Text& text,
        std::size_t start = 0) const requires std::convertible_to<const Text&, CStringT>
    {
        return withView(text, [&](View view) { return GetView().find(view, start); });
    }
    /// Up to `length` units from `start`; empty where `start` lies beyond the end.
    CStringT Mid(std::size_t start, std::size_t length = npos) const
    {
        return start < m_text.size() ? CStringT(GetView().substr(start, length)) : CStringT();
    }
    CStringT Left(std::size_t length) const { return Mid(0, length); }

    /// Negative, zero or positive, by unit value.
    template <class Text>
    int Compare(const Text& other) const requires std::convertible_to<const Text&, CStringT>
    {
        return withView(other, [this](View view) { return GetView().compare(view); });
    }

    const_iterator begin() const { return m_text.data(); }
    const_iterator end() const { return m_text.data() + m_text.size(); }
    std::size_t size() const { return m_text.size(); }
    bool empty() const { return m_text.empty(); }

    friend bool operator==(const CStringT& a, const CStringT& b) { return a.m_text == b.m_text; }
    friend bool operator==(const CStringT& a, View b) { return a.GetView() == b; }
    friend bool operator==(const CStringT& a, const Unit* b) { return a.GetView() == toView(b); }
    friend bool operator==(const CStringT& a, const std::basic_string<Unit>& b)
    {
        return a.m_text == b;
    }
    friend bool operator==(const CStringT&, std::nullptr_t) = delete;
    friend auto operator<=>(const CStringT& a, const CStringT& b) { return a.m_text <=> b.m_text; }
    friend auto operator<=>(const CStringT& a, View b) { return a.GetView() <=> b; }
    friend auto operator<=>(const CStringT& a, const Unit* b) { return a.GetView() <=> toView(b); }
    friend auto operator<=>(const CStringT& a, const std::basic_string<Unit>& b)
    {
        return a.m_text <=> b;
    }
    friend CStringT operator+(const CStringT& a, const CStringT& b)
    {
        return CStringT(a).Append(b);
    }

private:
    static View toView(const Unit* text) { return text != nullptr ? View(text) : View(); }
    /// Hands any kind of text to `use` as a view, converted where that is needed.
    template <class Text, class Use> static decltype(auto) withView(const Text& text, Use use)
    {
        if constexpr (std::convertible_to<const Text&, const Unit*>) {
            return use(toView(text));
        } else if constexpr (std::convertible_to<const Text&, View>) {
            return use(View(text));
        } else {
            return use(CStringT(text).GetView());
        }
    }

    std::basic_string<Unit> m_text;
};

using CString = CStringT<char16_t>;
using String = CString;
using CStringA = CStringT<char>;
