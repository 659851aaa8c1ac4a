#include "tamesh/meancurvature.h"

#include "tamesh/progress.h"
#include "tamesh/unitbox.h"
#include "tamesh/vectors.h"
#include "tamesh/vertexnormals.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

namespace tamesh {

namespace {

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

} // namespace

std::vector<double> FindMeanCurvatures(const Mesh& mesh, const UnitBox& box, ProgressSteps& steps)
{
    return CurvatureFinder(mesh, box, steps).Find();
}

} // namespace tamesh
