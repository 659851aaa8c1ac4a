#pragma once

#include "tamesh/coordinateform.h"
#include "tamesh/mesh.h"

#include <cstdint>

class TaStreamReadBinaryBuffer;
class TuStreamWriteBinary;

namespace tamesh {

class Progress;

/// Writes the vertices of a mesh in the order of VertexWalk, each coordinate as its coded
/// difference to what the form predicts. Each axis, and each word of it, has a coder of its own for
/// every kPackedBlock vertices. `progress` goes on from `done`.
void PackVertices(TuStreamWriteBinary& stream, const Mesh& mesh, const CoordinateForm& form,
    Progress* progress, std::uint64_t done);

/// `faces` is the mesh without vertices. `progress` is only asked whether the user wants the
/// program to stop.
///
/// Failure: TuExceptionStream for coordinates that the form does not have.
TuArray<SPoint> UnpackVertices(TaStreamReadBinaryBuffer& stream, const Mesh& faces,
    std::uint32_t vertexCount, const CoordinateForm& form, const Progress* progress);

} // namespace tamesh
