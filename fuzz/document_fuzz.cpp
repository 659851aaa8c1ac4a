#include "tamesh/document.h"

#include "groundwork/tulittleendian.h"
#include "support/meshfuzz.h"
#include "tabase/tastreamwritebinarybuffer.h"

#include <zlib.h>

#include <algorithm>
#include <vector>

namespace {

void load(const std::vector<std::uint8_t>& bytes)
{
    TaStreamReadBinaryBuffer stream(bytes.data(), bytes.size());
    tamesh::Document document;
    try {
        document.Load(stream);
    } catch (const TuException&) {
        return;
    }
    CheckMesh(document.GetMesh());
    // Old versions, and nodes that need not be stored, are not written again; what is written is.
    TaStreamWriteBinaryBuffer written;
    document.Save(written);
    TaStreamReadBinaryBuffer again(written.GetData(), written.GetSize());
    document.Load(again);
    TaStreamWriteBinaryBuffer rewritten;
    document.Save(rewritten);
    if (!std::equal(written.GetData(), written.GetData() + written.GetSize(), rewritten.GetData(),
            rewritten.GetData() + rewritten.GetSize())) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::vector<std::uint8_t> bytes(data, data + size);
    load(bytes);
    // The checksum stops nearly all of these inputs at the end: try again with the right one.
    if (size >= sizeof(std::uint32_t)) {
        const std::size_t end = size - sizeof(std::uint32_t);
        TuStoreLittleEndian(
            bytes.data() + end, static_cast<std::uint32_t>(crc32_z(0, bytes.data(), end)));
        load(bytes);
    }
    return 0;
}
