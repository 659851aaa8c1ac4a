#include "support/meshfuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzMeshReader(tamesh::ReadOBJ, data, size);
    return 0;
}
