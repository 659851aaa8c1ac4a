#pragma once

#include "tamesh/mesh.h"

#include <cstdint>

class TuStreamReadBinary;
class TuStreamWriteBinary;

namespace tamesh {

class Progress;

/// How many elements of a packed mesh are coded together: little enough for a progress bar, and for
/// a reader that must not believe a count.
constexpr std::uint32_t kPackedBlock = 65536;

/// Writes the faces of a mesh as coded differences: counts of corners to the count before, first
/// corners to the first corner before, all others to the corner before. Each kind has a coder of
/// its own for every kPackedBlock faces.
void PackFaces(TuStreamWriteBinary& stream, const Mesh& mesh, Progress* progress);

/// A mesh without vertices. `progress` is only asked whether the user wants the program to stop.
///
/// Failure: TuExceptionStream for faces with too few corners, or ones that are not less than
/// `vertexCount`.
Mesh UnpackFaces(TuStreamReadBinary& stream, std::uint32_t faceCount, std::uint32_t vertexCount,
    const Progress* progress);

} // namespace tamesh
