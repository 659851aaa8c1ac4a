#pragma once

#include "groundwork/iextensioninterface.h"
#include "groundwork/iobject.h"

class TuStreamReadBinary;
class TuStreamWriteBinary;

/// What writes itself to a binary stream and reads itself back.
///
/// Both directions stand together in a class's source, write above read, with the version first
/// (TuStreamWrite::WriteVersion, TuStreamRead::ReadAndCompareVersion). A class that is read back by
/// name (TuStreamReadBinary::ReadChunk) needs a type record with a create function.
class GROUNDWORK_API ISerializable : public virtual IExtensionInterface, public virtual IObject
{
public:
    static constexpr const char* kExtensionName = "Groundwork.Serializable";

    virtual void Serialize(TuStreamWriteBinary& stream) const = 0;
    virtual void Serialize(TuStreamReadBinary& stream) = 0;
};
