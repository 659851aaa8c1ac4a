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

/// By the coordinate along an axis. Progress comes to the number of vertices.
SColoring ColorByHeight(const Mesh& mesh, EAxis axis, Progress* progress = nullptr);

/// By the mean curvature; see FindMeanCurvatures. The range is as wide to both sides of 0, and
/// holds all but the 2 % of the values at either end.
SColoring ColorByCurvature(const Mesh& mesh, Progress* progress = nullptr);

/// By component: a colour for each of the largest, by vertices, and grey for all others. Progress
/// comes to the number of vertices and faces.
SColoring ColorByComponent(const Mesh& mesh, Progress* progress = nullptr);

} // namespace tamesh
