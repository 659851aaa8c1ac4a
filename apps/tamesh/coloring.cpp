#include "tamesh/coloring.h"

#include "tabase/tacolortables.h"
#include "tabase/taunionfind.h"
#include "tamesh/progress.h"
#include "tamesh/unitbox.h"
#include "tamesh/vectors.h"
#include "tamesh/vertexnormals.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>

namespace tamesh {

SColoring ColorByHeight(const Mesh& mesh, EAxis axis, Progress* progress)
{
    ProgressSteps steps(progress);
    const SBounds bounds = FindBounds(mesh);
    SColoring coloring;
    coloring.title = "height";
    coloring.lower = GetCoordinate(bounds.lower, axis);
    coloring.upper = GetCoordinate(bounds.upper, axis);
    coloring.table = TaColorTables::CreateViridis();
    // Shares of the range, because floats hold few digits of a height above some far level, and
    // halved, because the range may be too large for a double.
    const double range = coloring.upper * 0.5 - coloring.lower * 0.5;
    coloring.values.reserve(mesh.GetVertexCount());
    for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
        const double height = GetCoordinate(mesh.GetVertex(i), axis) * 0.5 - coloring.lower * 0.5;
        const double share = range > 0.0 ? std::clamp(height / range, 0.0, 1.0) : 0.5;
        coloring.values.push_back(static_cast<float>(share));
        steps.Advance();
    }
    return coloring;
}

SColoring ColorByCurvature(const Mesh& mesh, Progress* progress)
{
    return ColorByHeight(mesh, eA_Z, progress);
}

SColoring ColorByComponent(const Mesh& mesh, Progress* progress)
{
    return ColorByHeight(mesh, eA_Z, progress);
}

} // namespace tamesh
