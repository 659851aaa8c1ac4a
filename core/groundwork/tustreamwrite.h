#pragma once

#include "groundwork/cstring.h"
#include "groundwork/iobject.h"

#include <concepts>
#include <string_view>
#include <type_traits>

template <class Text> class TuStreamWriteASCIIStringT;

/// Text units are not numbers: a stream takes text as text, never one unit by itself. (`char` is
/// taken as the small number that it is in records.)
template <class T>
concept TuTextUnit = std::same_as<T, char> || std::same_as<T, char8_t> || std::same_as<T,
    char16_t> || std::same_as<T, char32_t> || std::same_as<T, wchar_t>;

/// The units of the texts that streams take by a pointer.
template <class T>
concept TuStreamTextUnit
    = std::same_as<T, char> || std::same_as<T, char16_t> || std::same_as<T, wchar_t>;

/// The abstract writer: one operator per primitive, in a binary and a readable flavour.
///
/// A fixed-width value is written at its own width on every system: `long` and `unsigned long` go
/// by their width there. Pointers that are not text, and single wide units, do not compile.
///
/// Threads: one thread at a time.
/// Failure: TuExceptionStream when the sink fails; what was written before stays written.
class GROUNDWORK_API TuStreamWrite : public virtual IObject
{
    TU_DECLARE_RTTI

public:
    virtual TuStreamWrite& operator<<(bool value) = 0;
    virtual TuStreamWrite& operator<<(signed char value) = 0;
    virtual TuStreamWrite& operator<<(unsigned char value) = 0;
    virtual TuStreamWrite& operator<<(short value) = 0;
    virtual TuStreamWrite& operator<<(unsigned short value) = 0;
    virtual TuStreamWrite& operator<<(int value) = 0;
    virtual TuStreamWrite& operator<<(unsigned int value) = 0;
    virtual TuStreamWrite& operator<<(long long value) = 0;
    virtual TuStreamWrite& operator<<(unsigned long long value) = 0;
    virtual TuStreamWrite& operator<<(float value) = 0;
    virtual TuStreamWrite& operator<<(double value) = 0;
    /// Zero-terminated text; null is the empty text.
    virtual TuStreamWrite& operator<<(const char* text) = 0;
    virtual TuStreamWrite& operator<<(const char16_t* text) = 0;
    /// Whether the stream compresses what it is given.
    virtual bool IsCompressing() const { return false; }

    TuStreamWrite& operator<<(char value) { return *this << static_cast<signed char>(value); }
    TuStreamWrite& operator<<(long value)
    {
        using Fixed = std::conditional_t<sizeof(long) == sizeof(int), int, long long>;
        return *this << static_cast<Fixed>(value);
    }
    TuStreamWrite& operator<<(unsigned long value)
    {
        using Fixed
            = std::conditional_t<sizeof(long) == sizeof(int), unsigned int, unsigned long long>;
        return *this << static_cast<Fixed>(value);
    }
    TuStreamWrite& operator<<(const wchar_t* text) { return *this << CString(text); }
    /// Text with its length: zero units in it are kept where the form of the stream can hold them.
    TuStreamWrite& operator<<(const CString& text)
    {
        writeText(text.GetView());
        return *this;
    }
    TuStreamWrite& operator<<(const CStringA& text)
    {
        writeText(text.GetView());
        return *this;
    }
    /// The text that a string stream has collected.
    template <class Text> TuStreamWrite& operator<<(const TuStreamWriteASCIIStringT<Text>& stream)
    {
        return *this << stream.GetText();
    }
    template <class T>
    requires(!std::same_as<T, char> && TuTextUnit<T>) TuStreamWrite& operator<<(T) = delete;
    template <class T>
    requires(!TuStreamTextUnit<std::remove_cv_t<T>>) TuStreamWrite& operator<<(T*) = delete;
    template <class T, class Class> TuStreamWrite& operator<<(T Class::*) = delete;

    /// Opens a record: its layout's number, counted from 0.
    void WriteVersion(unsigned int version) { *this << version; }

protected:
    TuStreamWrite() = default;
    TuStreamWrite(const TuStreamWrite&) = default;
    TuStreamWrite& operator=(const TuStreamWrite&) = default;

    virtual void writeText(std::string_view text) = 0;
    virtual void writeText(std::u16string_view text) = 0;
};
