#pragma once

#include "tamesh/mesh.h"

#include <span>
#include <vector>

namespace tamesh {

class ProgressSteps;

/// A direction of length 1 per vertex, the mean of those of its faces by their area; of length 0
/// where they have no area, or cancel. `positions` are used in place of those of the mesh's
/// vertices. As many steps as the mesh has faces and vertices.
std::vector<SPoint> FindVertexNormals(
    const Mesh& mesh, std::span<const SPoint> positions, ProgressSteps& steps);

} // namespace tamesh
