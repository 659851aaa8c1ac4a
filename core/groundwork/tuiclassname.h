#pragma once

#include "groundwork/cstring.h"

#include <utility>

/// A mix-in that holds a name: of a node, a thread, a handler. `N` tells the two names apart that a
/// class with two such bases has.
template <int N, class Text = CString> class GROUNDWORK_TEMPLATE TuIClassName
{
public:
    virtual const Text& GetName() const { return m_name; }
    /// The bytes that the mix-in holds: its own, and those of the name's units.
    virtual unsigned long long GetMemoryUsage() const
    {
        return sizeof(*this) + m_name.GetLength() * sizeof(typename Text::value_type);
    }

protected:
    TuIClassName() = default;
    explicit TuIClassName(Text name)
        : m_name(std::move(name))
    {
    }
    TuIClassName(const TuIClassName&) = default;
    TuIClassName& operator=(const TuIClassName&) = default;
    /// Not virtual, and so not public: a class says itself where its destructor stands.
    ~TuIClassName() = default;

    void setName(Text name) { m_name = std::move(name); }

private:
    Text m_name;
};
