#include "tamesh/meshreader.h"

#include "tamesh/meshfailure.h"

#include <algorithm>

namespace tamesh {

EMeshFormat GetMeshFormat(std::string_view fileName)
{
    constexpr std::size_t kEndingLength = 4;
    if (fileName.size() <= kEndingLength) {
        return eMF_Unknown;
    }
    std::string ending(fileName.substr(fileName.size() - kEndingLength));
    std::transform(ending.begin(), ending.end(), ending.begin(),
        [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return ending == ".off" ? eMF_OFF
        : ending == ".obj"  ? eMF_OBJ
        : ending == ".stl"  ? eMF_STL
                            : eMF_Unknown;
}

void CheckMeshFormat(const std::string& fileName)
{
    if (GetMeshFormat(fileName) == eMF_Unknown) {
        throw MeshFailure(
            TU_HERE, fileName, 0, "unknown format; the name of a mesh ends in .off, .obj or .stl");
    }
}

Mesh ReadMesh(const SMeshInput& input)
{
    CheckMeshFormat(input.name);
    switch (GetMeshFormat(input.name)) {
    case eMF_OFF:
        return ReadOFF(input);
    case eMF_OBJ:
        return ReadOBJ(input);
    default:
        return ReadSTL(input);
    }
}

} // namespace tamesh
