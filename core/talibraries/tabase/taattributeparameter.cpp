#include "tabase/taattributeparameter.h"

#include "groundwork/tucheckedcast.h"
#include "groundwork/tuexceptions.h"
#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"

namespace {

constexpr unsigned int kVersion = 0;

} // namespace

TU_DEFINE_RTTI_ROOT(TaAttributeParameter, &TaAttributeParameter::CreateByFactory,
    &TaAttributeParameter::CloneByFactory);
TU_DEFINE_EXTENSIONS(TaAttributeParameter, ISerializable)

TaAttributeParameter::TaAttributeParameter(const TaAttributeParameter& other) noexcept
    : IReferenceCounted(other)
    , IExtensionInterface(other)
    , IObject(other)
    , ISerializable(other)
    , m_isValid(other.m_isValid)
{
}

TaAttributeParameter& TaAttributeParameter::operator=(const TaAttributeParameter& other) noexcept
{
    m_isValid = other.m_isValid;
    return *this;
}

void TaAttributeParameter::Serialize(TuStreamWriteBinary& stream) const
{
    stream.WriteVersion(kVersion);
}

void TaAttributeParameter::Serialize(TuStreamReadBinary& stream)
{
    stream.ReadAndCompareVersion(kVersion);
}

IObject* TaAttributeParameter::CreateByFactory() { return new TaAttributeParameter(); }

IObject* TaAttributeParameter::CloneByFactory(const IObject& object)
{
    return new TaAttributeParameter(TuCheckedCast<TaAttributeParameter>(object));
}
