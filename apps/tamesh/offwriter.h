#pragma once

#include "tamesh/mesh.h"

class TuStreamWriteASCII;

namespace tamesh {

class Progress;

/// Writes a mesh as an OFF file, with LF at the end of each line. The stream is not a separated
/// one.
void WriteOFF(TuStreamWriteASCII& stream, const Mesh& mesh, Progress* progress = nullptr);

} // namespace tamesh
