#include "tamesh/document.h"

#include "groundwork/tulittleendian.h"
#include "support/documentfuzz.h"
#include "support/meshfuzz.h"

#include <zlib.h>

#include <algorithm>

namespace {

/// Whether it is a document.
bool load(const std::vector<std::uint8_t>& bytes)
{
    TaStreamReadBinaryBuffer stream(bytes.data(), bytes.size());
    tamesh::Document document;
    try {
        document.Load(stream);
    } catch (const TuException&) {
        return false;
    }
    CheckMesh(document.GetMesh());
    // Old versions, and nodes that need not be stored, are not written again; what is written is.
    const std::vector<std::uint8_t> written
        = WriteToVector([&](auto& target) { document.Save(target); });
    TaStreamReadBinaryBuffer again(written.data(), written.size());
    document.Load(again);
    if (written != WriteToVector([&](auto& target) { document.Save(target); })) {
        std::abort();
    }
    return true;
}

/// The checksum stops nearly all inputs of old versions at the end: try again with the right one.
void loadOld(std::vector<std::uint8_t> bytes)
{
    if (bytes.size() >= sizeof(std::uint32_t)) {
        const std::size_t end = bytes.size() - sizeof(std::uint32_t);
        TuStoreLittleEndian(
            bytes.data() + end, static_cast<std::uint32_t>(crc32_z(0, bytes.data(), end)));
        load(bytes);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::vector<std::uint8_t> bytes(data, data + size);
    load(bytes);
    loadOld(bytes);
    load(WithRightChecksums(bytes));
    // The input as what hangs below a part, which is most of a document.
    load(MakeDocument(bytes));
    return 0;
}
