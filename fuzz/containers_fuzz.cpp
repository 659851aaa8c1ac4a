#include "groundwork/tulist.h"
#include "groundwork/tulistsorted.h"
#include "groundwork/tumap.h"
#include "groundwork/tuset.h"
#include "support/memorystreams.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

/// Reads a container from the bytes. What was read is written and read once more: the same record
/// must come out.
template <class Container> void readAndWrite(const std::vector<unsigned char>& bytes)
{
    Container container;
    try {
        ReadFromBytes(bytes, [&](auto& stream) { container.Serialize(stream); });
    } catch (const TuException&) {
        if (!container.IsEmpty()) {
            std::abort(); // after a failed read it is as it was
        }
        return;
    }
    const auto write = [](const Container& source) {
        return WriteToBytes([&](auto& stream) { source.Serialize(stream); });
    };
    const std::vector<unsigned char> written = write(container);
    Container again;
    ReadFromBytes(written, [&](auto& stream) { again.Serialize(stream); });
    if (!(again == container) || write(again) != written) {
        std::abort();
    }
}

} // namespace

/// The first byte says which container the rest is a record of.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::vector<unsigned char> bytes(data + 1, data + size);
    switch (data[0] % 5) {
    case 0:
        readAndWrite<TuList<CString>>(bytes);
        break;
    case 1:
        readAndWrite<TuListSorted<short>>(bytes);
        break;
    case 2:
        readAndWrite<TuSet<unsigned int>>(bytes);
        break;
    case 3:
        readAndWrite<TuMap<CString, bool>>(bytes);
        break;
    default:
        readAndWrite<TuMap<unsigned char, TuList<TuSet<CStringA>>>>(bytes);
    }
    return 0;
}
