#pragma once

#include "tamesh/commands.h"
#include "tamesh/coordinateform.h"

#include <string>

namespace tamesh {

class TaMeshData;

/// The form that the options ask for; they do not ask for the plain one. Throws std::range_error
/// for a mesh that cannot be quantized.
CoordinateForm MakeCoordinateForm(const Mesh& mesh, const SPackOptions& options);

/// Packs the mesh, with a progress bar. `name` is what the user knows it by. Throws Interrupted,
/// and what MakeCoordinateForm throws.
void PackMeshData(
    IConsole& console, const std::string& name, TaMeshData& data, const SPackOptions& options);

} // namespace tamesh
