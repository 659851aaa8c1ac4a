#pragma once

#include "groundwork/cstring.h"
#include "groundwork/iserializable.h"
#include "groundwork/tuidumpable.h"
#include "groundwork/tureferencecounted.h"

#include <compare>
#include <cstdint>

/// What the boxed values share: a primitive as a shared object with a type record, so that it can
/// be held by a smart pointer, made by class name, and stored.
///
/// `Value` is what callers see, `Stored` what is held and written: `long` and `unsigned long` hold
/// and write 32 bits on every system.
///
/// Threads: counting is safe on any thread; the value is guarded by whoever shares the object.
/// Failure: TuExceptionPreconditionViolation for a value that `Stored` cannot hold; the object then
///          keeps its old one.
template <class Value, class Stored = Value>
class GROUNDWORK_API TuBoxed : public TuReferenceCounted,
                               public ISerializable,
                               public TuIDumpable<1>
{
public:
    const TuRTTI& GetRTTI() const override = 0;

    Value GetValue() const;
    void SetValue(const Value& value);
    operator Value() const; // NOLINT(google-explicit-constructor): that is it

    friend bool operator==(const TuBoxed& a, const TuBoxed& b) { return a.m_value == b.m_value; }
    friend auto operator<=>(const TuBoxed& a, const TuBoxed& b) { return a.m_value <=> b.m_value; }

    /// Version 0, the value. A failed read changes nothing.
    void Serialize(TuStreamWriteBinary& stream) const override;
    void Serialize(TuStreamReadBinary& stream) override;

    TU_DECLARE_EXTENSIONS;

protected:
    TuBoxed();
    explicit TuBoxed(const Value& value);

    /// The value alone; a text as it is.
    void dump(TuStreamWriteASCII& stream) const override;

private:
    Stored m_value{};
};

// Outside of the class: MinGW-w64 exports only that of an instance, and does not always inline.

template <class Value, class Stored> TuBoxed<Value, Stored>::TuBoxed() = default;

template <class Value, class Stored> TuBoxed<Value, Stored>::TuBoxed(const Value& value)
{
    SetValue(value);
}

template <class Value, class Stored> Value TuBoxed<Value, Stored>::GetValue() const
{
    return static_cast<Value>(m_value);
}

template <class Value, class Stored> TuBoxed<Value, Stored>::operator Value() const
{
    return GetValue();
}

extern template class TuBoxed<bool>;
extern template class TuBoxed<char>;
extern template class TuBoxed<std::int8_t>;
extern template class TuBoxed<std::int16_t>;
extern template class TuBoxed<std::int32_t>;
extern template class TuBoxed<long, std::int32_t>;
extern template class TuBoxed<std::int64_t>;
extern template class TuBoxed<std::uint8_t>;
extern template class TuBoxed<std::uint16_t>;
extern template class TuBoxed<std::uint32_t>;
extern template class TuBoxed<unsigned long, std::uint32_t>;
extern template class TuBoxed<std::uint64_t>;
extern template class TuBoxed<float>;
extern template class TuBoxed<double>;
extern template class TuBoxed<CString>;

/// One boxed class: a default value (0, false, empty), a value given, a copy, and the record.
#define TU_DECLARE_BOXED(Class, ValueType, ...)                                                    \
    class GROUNDWORK_API Class final : public TuBoxed<__VA_ARGS__>                                 \
    {                                                                                              \
        TU_DECLARE_RTTI                                                                            \
                                                                                                   \
    public:                                                                                        \
        Class() = default;                                                                         \
        explicit Class(const ValueType& value)                                                     \
            : TuBoxed(value)                                                                       \
        {                                                                                          \
        }                                                                                          \
                                                                                                   \
    private:                                                                                       \
        static IObject* CreateByFactory();                                                         \
        static IObject* CloneByFactory(const IObject& object);                                     \
    }

TU_DECLARE_BOXED(TuBool, bool, bool);
TU_DECLARE_BOXED(TuChar, char, char);
TU_DECLARE_BOXED(TuInt8, std::int8_t, std::int8_t);
TU_DECLARE_BOXED(TuInt16, std::int16_t, std::int16_t);
TU_DECLARE_BOXED(TuInt32, std::int32_t, std::int32_t);
TU_DECLARE_BOXED(TuLong, long, long, std::int32_t);
TU_DECLARE_BOXED(TuInt64, std::int64_t, std::int64_t);
TU_DECLARE_BOXED(TuUInt8, std::uint8_t, std::uint8_t);
TU_DECLARE_BOXED(TuUInt16, std::uint16_t, std::uint16_t);
TU_DECLARE_BOXED(TuUInt32, std::uint32_t, std::uint32_t);
TU_DECLARE_BOXED(TuULong, unsigned long, unsigned long, std::uint32_t);
TU_DECLARE_BOXED(TuUInt64, std::uint64_t, std::uint64_t);
TU_DECLARE_BOXED(TuFloat32, float, float);
TU_DECLARE_BOXED(TuFloat64, double, double);
TU_DECLARE_BOXED(TuString, CString, CString);
