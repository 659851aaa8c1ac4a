#pragma once

#include "groundwork/cstring.h"
#include "groundwork/tustreamwrite.h"

#include <compare>
#include <concepts>
#include <cstdint>
#include <type_traits>
#include <variant>

class TuStreamReadBinary;
class TuStreamWriteBinary;

/// A value that carries its kind: nothing, a number, or a text. Parameter sets and options hold
/// their values as such.
///
/// Order: all variants stand in one order: null first, then the numbers (a bool counts as 0 or 1),
/// then the texts. Numbers compare by their exact value whatever their kinds (5 < 5.5 < 6, and a
/// 64-bit integer is not rounded to meet a double); NaN comes after all other numbers and equals
/// itself. Texts compare by UTF-16 unit, whatever their kinds. What stands equal in the order is
/// equal: 5 and 5.0, a narrow and a wide "a".
///
/// Threads: as a plain value.
/// Failure: a conversion throws TuException where a text is no value of the wanted type.
class GROUNDWORK_API TuVariant
{
public:
    /// The kind numbers are stored, and callers test them.
    enum EVariantType
    {
        eVT_Null = 0,
        eVT_Bool = 1,
        eVT_Int32 = 2,
        eVT_Int64 = 3,
        eVT_UInt32 = 4,
        eVT_NarrowText = 5, // bytes in the system code page
        eVT_PathText = 6, // a file's path
        eVT_Double = 7,
        eVT_WideText = 8,
    };

    TuVariant() = default;
    /// Integers of up to 32 bits become eVT_Int32 or eVT_UInt32, wider ones eVT_Int64; `long` goes
    /// by its width. TuExceptionPreconditionViolation for an unsigned value that does not fit.
    template <std::integral T>
    requires(!TuTextUnit<T>)
        TuVariant(T value) // NOLINT(google-explicit-constructor): a value is a variant
    {
        if constexpr (std::same_as<T, bool>) {
            m_value = value;
        } else if constexpr (std::is_signed_v<T> && sizeof(T) <= sizeof(std::int32_t)) {
            m_value = std::int32_t{ value };
        } else if constexpr (sizeof(T) <= sizeof(std::uint32_t)) {
            m_value = std::uint32_t{ value };
        } else if constexpr (std::is_signed_v<T>) {
            m_value = static_cast<std::int64_t>(value);
        } else {
            m_value = checkedInt64(value);
        }
    }
    template <std::floating_point T>
    requires(sizeof(T) <= sizeof(double))
        TuVariant(T value) // NOLINT(google-explicit-constructor): a value is a variant
        : m_value(double{ value })
    {
    }
    TuVariant(CString text); // NOLINT(google-explicit-constructor): a text is a variant
    TuVariant(CStringA text); // NOLINT(google-explicit-constructor): so is a narrow one
    TuVariant(const char16_t* text); // NOLINT(google-explicit-constructor): and a literal
    TuVariant(const wchar_t* text); // NOLINT(google-explicit-constructor)
    TuVariant(const char* text); // NOLINT(google-explicit-constructor)
    template <class T>
    requires(!TuTextUnit<std::remove_cv_t<T>>) TuVariant(T*)
    = delete; // it would become a bool
    static TuVariant FromPath(CString path);

    EVariantType GetType() const { return static_cast<EVariantType>(m_value.index()); }
    bool IsNull() const { return GetType() == eVT_Null; }
    bool IsText() const;
    bool IsNumber() const { return !IsNull() && !IsText(); }
    void SetNull() { m_value = std::monostate(); }

    /// Null is false, a number is whether it is not 0, and of the texts "true", "false" and numbers
    /// are taken.
    bool ToBool() const;
    /// Null is 0. A value beyond the range of the target becomes its nearest end, a fraction is cut
    /// off, NaN becomes 0. Texts are read as numbers in the C locale.
    int ToInt() const;
    long long ToInt64() const;
    double ToDouble() const;
    /// Null is empty; numbers and bools as the readable streams write them.
    CString ToString() const;
    explicit operator bool() const { return ToBool(); }
    explicit operator int() const { return ToInt(); }
    explicit operator CString() const { return ToString(); }

    friend GROUNDWORK_API std::weak_ordering operator<=>(const TuVariant& a, const TuVariant& b);
    friend bool operator==(const TuVariant& a, const TuVariant& b) { return (a <=> b) == 0; }

    /// Version 0, the kind as one byte, the value in the form of its kind. Reading throws
    /// TuExceptionWrongFileVersion for an unknown kind; a failed read changes nothing.
    void Serialize(TuStreamWriteBinary& stream) const;
    void Serialize(TuStreamReadBinary& stream);

private:
    struct SPath
    {
        CString text;
    };
    // The index of the alternative is the kind.
    using Value = std::variant<std::monostate, bool, std::int32_t, std::int64_t, std::uint32_t,
        CStringA, SPath, double, CString>;

    static std::int64_t checkedInt64(unsigned long long value);

    Value m_value;
};
