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
#include <iterator>
#include <limits>
#include <numeric>
#include <utility>

namespace tamesh {

namespace {

    constexpr unsigned long kTableSize = 256;

    // The palette of Okabe and Ito, "Color Universal Design" (2008), which people tell apart who do
    // not see red and green apart; without its black.
    constexpr std::array kComponentColors{ TaColor::FromDword(0xFF56B4E9u),
        TaColor::FromDword(0xFFE69F00u), TaColor::FromDword(0xFF009E73u),
        TaColor::FromDword(0xFFF0E442u), TaColor::FromDword(0xFF0072B2u),
        TaColor::FromDword(0xFFD55E00u), TaColor::FromDword(0xFFCC79A7u) };
    constexpr TaColor kOtherComponents = TaColor::FromDword(0xFFC0C0C0u);

    /// Computes the mean curvature of each vertex of a mesh that is placed in its unit box.
    class CurvatureFinder
    {
    public:
        CurvatureFinder(const Mesh& mesh, const UnitBox& box, ProgressSteps& steps)
            : m_mesh(mesh)
            , m_steps(steps)
            , m_vertices(mesh.GetVertexCount())
        {
            m_positions.reserve(mesh.GetVertexCount());
            for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
                m_positions.push_back(box.Place(mesh.GetVertex(i)));
            }
        }

        /// No number where there is none.
        std::vector<double> Find();

    private:
        /// What the triangles around a vertex come to.
        struct SVertex
        {
            SPoint sum; // of the sides from its neighbours, by cotangents
            double area = 0.0; // what is nearer to it than to other vertices
            /// 0 where each neighbour is one of an even number of sides, as it is inside a surface.
            std::uint64_t openSides = 0;
        };

        void addTriangle(const std::array<std::uint32_t, 3>& corners);
        double findCurvature(const SVertex& vertex, const SPoint& normal) const;

        /// Spreads the bits of an index, so that few of them cancel by chance.
        static std::uint64_t mix(std::uint64_t index)
        {
            index = (index + 1) * 0x9E3779B97F4A7C15u;
            return (index ^ index >> 32) * 0xD6E8FEB86659FD93u;
        }

        const Mesh& m_mesh;
        ProgressSteps& m_steps;
        std::vector<SPoint> m_positions;
        std::vector<SVertex> m_vertices;
    };

    void CurvatureFinder::addTriangle(const std::array<std::uint32_t, 3>& corners)
    {
        std::array<SPoint, 3> sides; // opposite of each corner
        for (std::size_t i = 0; i < 3; ++i) {
            sides[i] = m_positions[corners[(i + 2) % 3]] - m_positions[corners[(i + 1) % 3]];
            m_vertices[corners[i]].openSides
                ^= mix(corners[(i + 1) % 3]) ^ mix(corners[(i + 2) % 3]);
        }
        const SPoint normal = Cross(sides[0], sides[1]);
        const double doubleArea = std::sqrt(Dot(normal, normal));
        std::array<double, 3> cotangents{};
        for (std::size_t i = 0; i < 3; ++i) {
            cotangents[i] = -Dot(sides[(i + 1) % 3], sides[(i + 2) % 3]) / doubleArea;
        }
        if (!std::isfinite(cotangents[0] + cotangents[1] + cotangents[2])) {
            return; // it has no area
        }
        const bool isObtuse
            = std::ranges::any_of(cotangents, [](double cotangent) { return cotangent < 0.0; });
        for (std::size_t i = 0; i < 3; ++i) {
            const std::size_t next = (i + 1) % 3;
            const std::size_t last = (i + 2) % 3;
            SVertex& vertex = m_vertices[corners[i]];
            // The side to each neighbour counts by the angle that it faces.
            vertex.sum
                = vertex.sum + sides[next] * cotangents[next] - sides[last] * cotangents[last];
            if (!isObtuse) { // the part of the triangle that is nearest to the corner
                vertex.area += (Dot(sides[next], sides[next]) * cotangents[next]
                                   + Dot(sides[last], sides[last]) * cotangents[last])
                    / 8;
            } else {
                vertex.area += doubleArea / (cotangents[i] < 0.0 ? 4 : 8);
            }
        }
    }

    double CurvatureFinder::findCurvature(const SVertex& vertex, const SPoint& normal) const
    {
        const double curvature = Dot(vertex.sum, normal) / (4 * vertex.area);
        return vertex.openSides == 0 && std::isfinite(curvature)
            ? curvature
            : std::numeric_limits<double>::quiet_NaN();
    }

    std::vector<double> CurvatureFinder::Find()
    {
        for (std::uint32_t i = 0; i < m_mesh.GetFaceCount(); ++i) {
            ForEachTriangle(
                m_mesh.GetFace(i), [this](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
                    addTriangle({ a, b, c });
                });
            m_steps.Advance();
        }
        const std::vector<SPoint> normals = FindVertexNormals(m_mesh, m_positions, m_steps);
        std::vector<double> curvatures;
        curvatures.reserve(m_vertices.size());
        for (std::size_t i = 0; i < m_vertices.size(); ++i) {
            curvatures.push_back(findCurvature(m_vertices[i], normals[i]));
        }
        return curvatures;
    }

    /// The larger absolute value of the two between which all but the outermost 2 % at either end
    /// lie; 0 where there is no number.
    double findQuantileBound(const std::vector<double>& values)
    {
        std::vector<double> numbers;
        std::ranges::copy_if(
            values, std::back_inserter(numbers), [](double value) { return !std::isnan(value); });
        if (numbers.empty()) {
            return 0.0;
        }
        const auto left = static_cast<std::ptrdiff_t>(numbers.size() / 50);
        const auto lower = numbers.begin() + left;
        const auto upper = numbers.end() - 1 - left;
        std::nth_element(numbers.begin(), lower, numbers.end());
        std::nth_element(lower, upper, numbers.end());
        return std::max(std::abs(*lower), std::abs(*upper));
    }

    /// The sets of which there are colours, the largest first.
    std::vector<std::uint32_t> findLargest(const std::vector<std::uint32_t>& sizes)
    {
        std::vector<std::uint32_t> sets(sizes.size());
        std::iota(sets.begin(), sets.end(), 0u);
        const std::size_t count = std::min(sets.size(), kComponentColors.size());
        std::ranges::partial_sort(
            sets, sets.begin() + static_cast<std::ptrdiff_t>(count), {}, [&](std::uint32_t set) {
                return std::pair(~sizes[set], set); // of equal ones the one that comes first
            });
        sets.resize(count);
        return sets;
    }

} // namespace

SColoring ColorByHeight(const Mesh& mesh, EAxis axis, Progress* progress)
{
    ProgressSteps steps(progress);
    const SBounds bounds = FindBounds(mesh);
    SColoring coloring;
    coloring.title = "height";
    coloring.lower = GetCoordinate(bounds.lower, axis);
    coloring.upper = GetCoordinate(bounds.upper, axis);
    coloring.table = TaColorTables::CreateViridis(kTableSize);
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
    constexpr double kFlat = 1e-6; // a radius of a million meshes: nothing but rounding
    ProgressSteps steps(progress);
    const UnitBox box(mesh);
    const std::vector<double> curvatures = CurvatureFinder(mesh, box, steps).Find();
    const double widest = std::max(kFlat, findQuantileBound(curvatures));

    SColoring coloring;
    coloring.title = "mean curvature";
    coloring.upper = widest / box.GetUnit();
    coloring.lower = -coloring.upper;
    coloring.table = TaColorTables::CreateCoolWarm(kTableSize, -1.0f, 1.0f);
    coloring.values.reserve(curvatures.size());
    for (const double curvature : curvatures) {
        coloring.values.push_back(static_cast<float>(std::clamp(curvature / widest, -1.0, 1.0)));
    }
    return coloring;
}

SColoring ColorByComponent(const Mesh& mesh, Progress* progress)
{
    ProgressSteps steps(progress);
    TaUnionFind sets(mesh.GetVertexCount());
    for (std::uint32_t i = 0; i < mesh.GetFaceCount(); ++i) {
        const std::span<const std::uint32_t> face = mesh.GetFace(i);
        for (const std::uint32_t corner : face) {
            sets.AddPair(face.front(), corner);
        }
        steps.Advance();
    }
    std::vector<std::uint32_t> sizes(sets.CreateSetNumbers());
    for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
        ++sizes[sets.GetSetNumber(i)];
    }
    const std::vector<std::uint32_t> largest = findLargest(sizes);
    const bool hasOthers = largest.size() < sizes.size();
    const std::size_t colorCount = largest.size() + (hasOthers ? 1 : 0);

    SColoring coloring;
    coloring.title = "components: " + std::to_string(sizes.size()) + ", by number of vertices";
    coloring.upper = static_cast<double>(colorCount);
    coloring.table = TuMake<TaColorTable>(
        static_cast<unsigned long>(colorCount), 0.0f, static_cast<float>(colorCount));
    // The last entry is that of the largest, so that it stands at the top of the bar.
    std::vector<float> valueOfSet(sizes.size(), 0.5f);
    if (hasOthers) {
        coloring.names.emplace_back("others");
        coloring.table->SetEntryColor(0, kOtherComponents);
    }
    for (std::size_t i = largest.size(); i-- > 0;) {
        const auto entry = static_cast<std::uint32_t>(coloring.names.size());
        valueOfSet[largest[i]] = static_cast<float>(entry) + 0.5f;
        coloring.table->SetEntryColor(entry, kComponentColors[i]);
        coloring.names.push_back(std::to_string(sizes[largest[i]]));
    }
    coloring.values.reserve(mesh.GetVertexCount());
    for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
        coloring.values.push_back(valueOfSet[sets.GetSetNumber(i)]);
        steps.Advance();
    }
    return coloring;
}

} // namespace tamesh
