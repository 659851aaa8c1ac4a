#include "groundwork/tuexceptions.h"
#include "support/versionedrecord.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tabase/tastreamwritebinarybuffer.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

/// Reads chunks from any bytes. What could be read is written and must give those bytes again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    TaStreamReadBinaryBuffer stream(data, size);
    try {
        while (stream.GetRemaining() != 0) {
            const std::size_t begin = stream.GetPosition();
            const std::unique_ptr<ISerializable> object(stream.ReadChunk());
            const std::size_t length = stream.GetPosition() - begin;

            TaStreamWriteBinaryBuffer written;
            const auto* record = dynamic_cast<const VersionedRecord*>(object.get());
            if (record == nullptr) {
                written.WriteChunk(*object);
            } else {
                // The version stands behind the chunk's own one and the class's name.
                const std::size_t name = sizeof("VersionedRecord") - 1;
                unsigned int version = 0;
                std::memcpy(&version, data + begin + 8 + 2 * name, sizeof(version));
                written.WriteVersion(0);
                written << record->GetClassName();
                record->SerializeAs(written, version);
            }
            if (written.GetSize() != length
                || std::memcmp(written.GetData(), data + begin, length) != 0) {
                std::abort();
            }
        }
    } catch (const TuException&) { // how hostile input is refused; anything else is a fault
    }
    return 0;
}
