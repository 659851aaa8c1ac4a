#include "tamesh/vertexname.h"

#include "tamesh/pictureoptions.h"
#include "tamesh/progress.h"
#include "tamesh/unitbox.h"
#include "tamesh/vectors.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace tamesh {

namespace {

    /// Tells which vertices are nearer to a point. The point may be so far away that squared
    /// distances overflow, or are all the same: what is compared is the place of the point with the
    /// middle between two vertices, and along the way from the one to the other.
    class NearestVertex
    {
    public:
        NearestVertex(const UnitBox& box, const SPoint& point)
            : m_box(box)
        {
            SPoint offset = point - box.GetCenter();
            double unit = box.GetUnit();
            if (!std::isfinite(offset.x + offset.y + offset.z)) {
                offset = point * 0.5 - box.GetCenter() * 0.5;
                unit = unit * 0.5;
            }
            const double longest
                = std::max({ unit, std::abs(offset.x), std::abs(offset.y), std::abs(offset.z) });
            m_scale = unit / longest;
            m_point = { offset.x / longest, offset.y / longest, offset.z / longest };
        }

        void Add(std::uint32_t vertex, const SPoint& point)
        {
            const SPoint placed = m_box.Place(point);
            const SPoint middle = placed * 0.5 + m_nearest * 0.5;
            if (vertex == 0 || Dot(placed - m_nearest, middle * m_scale - m_point) < 0.0) {
                m_vertex = vertex;
                m_nearest = placed;
            }
        }
        std::uint32_t Get() const { return m_vertex; }

    private:
        const UnitBox& m_box;
        double m_scale; // of the box, to units in which the point lies not far away
        SPoint m_point;
        std::uint32_t m_vertex = 0;
        SPoint m_nearest;
    };

} // namespace

std::optional<VertexName> ParseVertexName(std::string_view text)
{
    if (const std::optional<SPoint> point = ParsePoint(text)) {
        return point;
    }
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    const bool isNumber = result.ec == std::errc() && result.ptr == end;
    return isNumber ? std::optional<VertexName>(number) : std::nullopt;
}

std::optional<std::uint32_t> FindVertex(
    const Mesh& mesh, const VertexName& name, Progress* progress)
{
    const std::uint32_t count = mesh.GetVertexCount();
    if (const auto* number = std::get_if<std::uint32_t>(&name)) {
        return *number < count ? std::optional(*number) : std::nullopt;
    }
    if (count == 0) {
        return std::nullopt;
    }
    const UnitBox box(mesh);
    NearestVertex nearest(box, std::get<SPoint>(name));
    ProgressSteps steps(progress);
    for (std::uint32_t i = 0; i != count; ++i) {
        nearest.Add(i, mesh.GetVertex(i));
        steps.Advance();
    }
    return nearest.Get();
}

} // namespace tamesh
