#include "support/meshfuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzMeshReader(tamesh::ReadOFF, data, size);
    return 0;
}
