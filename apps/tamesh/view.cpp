#include "tamesh/view.h"

#include "tamesh/progress.h"
#include "tamesh/unitbox.h"
#include "tamesh/vectors.h"

#include <algorithm>
#include <cmath>

namespace tamesh {

namespace {

    SPoint directionOf(EAxis axis)
    {
        return { axis == eA_X ? 1.0 : 0.0, axis == eA_Y ? 1.0 : 0.0, axis == eA_Z ? 1.0 : 0.0 };
    }

    /// Of any finite length.
    SPoint makeDirection(const SPoint& vector)
    {
        const double longest
            = std::max({ std::abs(vector.x), std::abs(vector.y), std::abs(vector.z) });
        return Normalise({ vector.x / longest, vector.y / longest, vector.z / longest });
    }

} // namespace

View::View(const SPoint& toViewer, EAxis up)
    : m_toViewer(makeDirection(toViewer))
{
    constexpr double kEndOn = 1e-6; // the sine of an angle that nobody sees
    m_right = Cross(directionOf(up), m_toViewer);
    m_right = Dot(m_right, m_right) > kEndOn * kEndOn ? Normalise(m_right)
                                                      : directionOf(up == eA_X ? eA_Y : eA_X);
    m_up = Cross(m_toViewer, m_right);
}

std::vector<SPoint> View::Project(const Mesh& mesh, const SFrame& frame, ProgressSteps& steps) const
{
    const UnitBox box(mesh);
    std::vector<SPoint> seen(mesh.GetVertexCount());
    SBounds bounds;
    for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
        const SPoint point = box.Place(mesh.GetVertex(i));
        seen[i] = { Dot(point, m_right), -Dot(point, m_up), Dot(point, m_toViewer) };
        if (i == 0) {
            bounds = { seen[0], seen[0] };
        }
        ExtendBounds(bounds, seen[i]);
        steps.Advance();
    }
    // A point, or a line that is seen end-on, has no size that could be fitted.
    constexpr double kSmallest = 1e-9;
    const SPoint size = bounds.upper - bounds.lower;
    const double scale = std::min(
        frame.width / std::max(size.x, kSmallest), frame.height / std::max(size.y, kSmallest));
    const SPoint center = (bounds.lower + bounds.upper) * 0.5;
    const SPoint place{ frame.left + frame.width * 0.5, frame.top + frame.height * 0.5, 0.0 };
    for (SPoint& point : seen) {
        point = (point - center) * scale + place;
    }
    return seen;
}

} // namespace tamesh
