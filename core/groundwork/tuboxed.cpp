#include "groundwork/tuboxed.h"

#include "groundwork/tucheckedcast.h"
#include "groundwork/tuexceptions.h"
#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwriteascii.h"
#include "groundwork/tustreamwritebinary.h"

#include <utility>

template <class Value, class Stored> void TuBoxed<Value, Stored>::SetValue(const Value& value)
{
    if constexpr (!std::is_same_v<Value, Stored>) {
        if (!std::in_range<Stored>(value)) {
            throw TuExceptionPreconditionViolation(
                TU_HERE, u"a boxed long has 32 bits on every system");
        }
    }
    m_value = static_cast<Stored>(value);
}

template <class Value, class Stored>
void TuBoxed<Value, Stored>::Serialize(TuStreamWriteBinary& stream) const
{
    stream.WriteVersion(0);
    stream << m_value;
}

template <class Value, class Stored>
void TuBoxed<Value, Stored>::Serialize(TuStreamReadBinary& stream)
{
    stream.ReadAndCompareVersion(0);
    stream >> m_value;
}

template <class Value, class Stored>
void TuBoxed<Value, Stored>::dump(TuStreamWriteASCII& stream) const
{
    stream << m_value;
}

template <class Value, class Stored>
const IExtensionInterface* TuBoxed<Value, Stored>::GetExtension(
    const char* name, bool mustExist) const
{
    if (TuIsExtension<ISerializable>(name)) {
        return static_cast<const ISerializable*>(this);
    }
    if (mustExist) {
        throw TuExceptionUnknownExtension(TU_HERE);
    }
    return nullptr;
}

template <class Value, class Stored>
IExtensionInterface* TuBoxed<Value, Stored>::GetExtension(const char* name, bool mustExist)
{
    return const_cast<IExtensionInterface*>(
        static_cast<const TuBoxed*>(this)->GetExtension(name, mustExist));
}

template class TuBoxed<bool>;
template class TuBoxed<char>;
template class TuBoxed<std::int8_t>;
template class TuBoxed<std::int16_t>;
template class TuBoxed<std::int32_t>;
template class TuBoxed<long, std::int32_t>;
template class TuBoxed<std::int64_t>;
template class TuBoxed<std::uint8_t>;
template class TuBoxed<std::uint16_t>;
template class TuBoxed<std::uint32_t>;
template class TuBoxed<unsigned long, std::uint32_t>;
template class TuBoxed<std::uint64_t>;
template class TuBoxed<float>;
template class TuBoxed<double>;
template class TuBoxed<CString>;

#define TU_DEFINE_BOXED(Class)                                                                     \
    const TuRTTI Class::RTTI(u"" #Class, &Class::CreateByFactory, &Class::CloneByFactory);         \
    IObject* Class::CreateByFactory() { return new Class; }                                        \
    IObject* Class::CloneByFactory(const IObject& object)                                          \
    {                                                                                              \
        return new Class(TuCheckedCast<Class>(object));                                            \
    }

TU_DEFINE_BOXED(TuBool)
TU_DEFINE_BOXED(TuChar)
TU_DEFINE_BOXED(TuInt8)
TU_DEFINE_BOXED(TuInt16)
TU_DEFINE_BOXED(TuInt32)
TU_DEFINE_BOXED(TuLong)
TU_DEFINE_BOXED(TuInt64)
TU_DEFINE_BOXED(TuUInt8)
TU_DEFINE_BOXED(TuUInt16)
TU_DEFINE_BOXED(TuUInt32)
TU_DEFINE_BOXED(TuULong)
TU_DEFINE_BOXED(TuUInt64)
TU_DEFINE_BOXED(TuFloat32)
TU_DEFINE_BOXED(TuFloat64)
TU_DEFINE_BOXED(TuString)
