#include "groundwork/tustreamreadbinary.h"

#include "groundwork/iserializable.h"
#include "groundwork/tuexceptions.h"

#include <memory>

TU_DEFINE_RTTI(TuStreamReadBinary, TuStreamRead, nullptr, nullptr);

ISerializable* TuStreamReadBinary::ReadChunk()
{
    ReadAndCompareVersion(0);
    CString name;
    *this >> name;
    const TuRTTI::CreateFunction create = TuRTTI::getCreate(name);
    if (create == nullptr) {
        throw TuException(
            TU_HERE, TuExceptionStream(TU_HERE, u"no class to create is called \"" + name + u"\""));
    }
    std::unique_ptr<IObject> object(create());
    auto* serializable = dynamic_cast<ISerializable*>(object.get());
    if (serializable == nullptr) {
        throw TuException(TU_HERE,
            TuExceptionStream(
                TU_HERE, u"objects of the class \"" + name + u"\" cannot be read from a stream"));
    }
    serializable->Serialize(*this);
    static_cast<void>(object.release());
    return serializable;
}
