#include "groundwork/tustreamwritebinary.h"

#include "groundwork/iserializable.h"

TU_DEFINE_RTTI(TuStreamWriteBinary, TuStreamWrite, nullptr, nullptr);

void TuStreamWriteBinary::WriteChunk(const ISerializable& object)
{
    WriteVersion(0);
    *this << object.GetClassName();
    object.Serialize(*this);
}
