#pragma once

#include "groundwork/tusmartpointer.h"
#include "tabase/tacolortable.h"
#include "tamesh/mesh.h"
#include "tamesh/pictureoptions.h"

#include <string>
#include <vector>

namespace tamesh {

class Progress;

/// What the colours of a mesh say: a value for each vertex, and a table that gives it a colour.
struct SColoring
{
    std::string title;
    /// One per vertex, within the range of the table. What is no number, or the largest float, has
    /// no colour and is drawn grey.
    std::vector<float> values;
    TuSmartPointer<TaColorTable> table;
    /// What the ends of the table's range stand for; the numbers beside the colour bar.
    double lower = 0.0;
    double upper = 0.0;
    /// Where the table's entries stand for different things: their names, instead of the numbers.
    std::vector<std::string> names;
};

// Progress comes to the number of vertices and faces, or somewhat above.

/// By the coordinate along an axis.
SColoring ColorByHeight(const Mesh& mesh, EAxis axis, Progress* progress = nullptr);

/// By the mean curvature, the reciprocal of a length: positive where the mesh bulges to the side
/// from which its faces run counter-clockwise, half the sum of 1 / r of two circles. The range
/// shown is as wide to both sides of 0, and holds all but the 2 % of the values at either end.
///
/// It is found as in Meyer, Desbrun, Schröder, Barr: "Discrete Differential-Geometry Operators for
/// Triangulated 2-Manifolds" (2003), by the cotangents of angles over the mixed area around a
/// vertex. Vertices at a border, and of faces without area only, have none.
SColoring ColorByCurvature(const Mesh& mesh, Progress* progress = nullptr);

/// By component: a colour for each of the largest, by vertices, and grey for all others.
SColoring ColorByComponent(const Mesh& mesh, Progress* progress = nullptr);

} // namespace tamesh
