#include "support/versionedrecord.h"

#include "groundwork/tuexceptions.h"
#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"

TU_DEFINE_RTTI_ROOT(VersionedRecord, &VersionedRecord::CreateByFactory, nullptr);
TU_DEFINE_EXTENSIONS(VersionedRecord, ISerializable)

void VersionedRecord::Serialize(TuStreamWriteBinary& stream) const
{
    SerializeAs(stream, kVersion);
}

void VersionedRecord::SerializeAs(TuStreamWriteBinary& stream, unsigned int version) const
{
    stream.WriteVersion(version);
    stream << title;
    if (version >= 1) {
        stream << static_cast<unsigned int>(weights.size());
        for (const float weight : weights) {
            stream << weight;
        }
    }
    if (version >= 2) {
        stream << visible;
    }
}

void VersionedRecord::Serialize(TuStreamReadBinary& stream)
{
    const unsigned int version = stream.ReadAndCompareVersion(kVersion);
    stream >> title;
    weights.clear();
    if (version >= 1) {
        unsigned int count = 0;
        stream >> count;
        for (; count != 0; --count) {
            stream >> weights.emplace_back();
        }
    }
    visible = true;
    if (version >= 2) {
        stream >> visible;
    }
}
