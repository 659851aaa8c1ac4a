#pragma once

#include "tamesh/mesh.h"

#include <vector>

namespace tamesh {

class ProgressSteps;
class UnitBox;

/// The mean curvature of each vertex, of the mesh as the box places it: the reciprocal of a length,
/// positive where the mesh bulges to the side from which its faces run counter-clockwise.
///
/// It is found as in Meyer, Desbrun, Schröder, Barr: "Discrete Differential-Geometry Operators for
/// Triangulated 2-Manifolds" (2003), by the cotangents of angles over the mixed area around a
/// vertex, along the mean normal there. Not a number where there is none: at a border, and where no
/// face has an area.
///
/// Twice as many steps as the mesh has faces, and as many as it has vertices.
std::vector<double> FindMeanCurvatures(const Mesh& mesh, const UnitBox& box, ProgressSteps& steps);

} // namespace tamesh
