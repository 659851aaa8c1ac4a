#include "tamesh/unitbox.h"

#include "tamesh/vectors.h"

#include <algorithm>

namespace tamesh {

UnitBox::UnitBox(const Mesh& mesh)
{
    const SBounds bounds = FindBounds(mesh);
    // Halved first: the sum and the difference may be too large for a double.
    const SPoint lower = bounds.lower * 0.5;
    const SPoint upper = bounds.upper * 0.5;
    m_center = lower + upper;
    const SPoint half = upper - lower;
    const double longest = std::max({ half.x, half.y, half.z });
    // Half of the smallest number there is, is 0.
    const double whole = std::max({ bounds.upper.x - bounds.lower.x,
        bounds.upper.y - bounds.lower.y, bounds.upper.z - bounds.lower.z });
    m_unit = longest > 0.0 ? longest : whole > 0.0 ? whole : 1.0;
}

SPoint UnitBox::Place(const SPoint& point) const
{
    const SPoint offset = point - m_center;
    return { offset.x / m_unit, offset.y / m_unit, offset.z / m_unit };
}

} // namespace tamesh
