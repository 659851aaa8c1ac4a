#pragma once

#include "tamesh/mesh.h"
#include "tamesh/meshinput.h"

#include <string>
#include <string_view>

namespace tamesh {

enum EMeshFormat
{
    eMF_Unknown,
    eMF_OFF,
    eMF_OBJ,
    eMF_STL,
};

/// By the ending of the name, in capitals or not.
EMeshFormat GetMeshFormat(std::string_view fileName);

/// Throws MeshFailure for a name that tells none.
void CheckMeshFormat(const std::string& fileName);

/// Reads a whole mesh. What comes back is sound: coordinates are finite, and every face has at
/// least three corners, which name vertices that are there.
///
/// Failure: MeshFailure with the line (for binary formats without) for input that is not sound or
///          of no format that is known; what the stream throws passes on. Memory grows as data
///          arrives, whatever the input claims.
Mesh ReadMesh(const SMeshInput& input);

/// One per format; GetMeshFormat(input.name) is not asked.
Mesh ReadOFF(const SMeshInput& input);
Mesh ReadOBJ(const SMeshInput& input);
Mesh ReadSTL(const SMeshInput& input);

} // namespace tamesh
