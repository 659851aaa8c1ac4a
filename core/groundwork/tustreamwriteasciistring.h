#pragma once

#include "groundwork/tustreamwriteascii.h"

#include <type_traits>

/// Holds the type record, which all string streams share whatever their text.
class GROUNDWORK_API TuStreamWriteASCIIStringBase : public TuStreamWriteASCII
{
    TU_DECLARE_RTTI

protected:
    using TuStreamWriteASCII::TuStreamWriteASCII;
};

/// A readable writer into a text (CString, or CStringA in the system code page). It can itself be
/// written into another stream.
template <class Text>
class GROUNDWORK_TEMPLATE TuStreamWriteASCIIStringT final : public TuStreamWriteASCIIStringBase
{
public:
    explicit TuStreamWriteASCIIStringT(bool separated = false)
        : TuStreamWriteASCIIStringBase(separated)
    {
    }

    const Text& GetText() const { return m_text; }

private:
    static constexpr bool kWide = std::is_same_v<typename Text::value_type, char16_t>;

    void write(const char* text) override
    {
        if constexpr (kWide) {
            m_text += CString::FromCodePage(text);
        } else {
            m_text += text;
        }
    }
    void write(const char16_t* text) override
    {
        if constexpr (kWide) {
            m_text += text;
        } else {
            m_text += CString(text).ToCodePage();
        }
    }

    Text m_text;
};
