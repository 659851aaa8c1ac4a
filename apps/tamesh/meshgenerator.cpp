#include "tamesh/meshgenerator.h"

#include "tamesh/progress.h"

#include <cmath>
#include <numbers>

namespace tamesh {

namespace {

    /// To six decimals; the division makes it the double next to that decimal number, so that it
    /// also prints with six decimals.
    double roundCoordinate(double value)
    {
        constexpr double kSteps = 1e6;
        return std::floor(value * kSteps + 0.5) / kSteps + 0.0; // never -0
    }

    SPoint roundPoint(double x, double y, double z)
    {
        return { roundCoordinate(x), roundCoordinate(y), roundCoordinate(z) };
    }

    struct SDirection
    {
        double cosine;
        double sine;
    };

    /// By the power series, which is exact to a double within an eighth of the circle.
    SDirection directionOf(double angle)
    {
        constexpr int kTerms = 10;
        const double square = angle * angle;
        double cosine = 1.0;
        double sine = 1.0;
        for (int i = kTerms; i > 0; --i) {
            cosine = 1.0 - cosine * square / (2.0 * i * (2.0 * i - 1.0));
            sine = 1.0 - sine * square / (2.0 * i * (2.0 * i + 1.0));
        }
        return { cosine, sine * angle };
    }

    /// The direction `step` of `count` around the circle.
    SDirection directionOfStep(std::uint32_t step, std::uint32_t count)
    {
        const std::uint64_t quarters = std::uint64_t{ step } * 4;
        const std::uint64_t quarter = quarters / count;
        const std::uint64_t rest = quarters % count; // of a quarter, in parts of `count`
        const bool mirrored = rest * 2 > count;
        const double part = static_cast<double>(mirrored ? count - rest : rest) / count;
        SDirection direction = directionOf(part * (std::numbers::pi / 2));
        if (mirrored) {
            direction = { direction.sine, direction.cosine };
        }
        for (std::uint64_t i = 0; i < quarter; ++i) {
            direction = { -direction.sine, direction.cosine };
        }
        return direction;
    }

    /// A number in [0, 1) that looks random, for each point of the lattice of each octave.
    double latticeNoise(std::uint32_t x, std::uint32_t y, std::uint32_t octave)
    {
        std::uint32_t value = x * 0x9E3779B1u ^ y * 0x85EBCA77u ^ octave * 0xC2B2AE3Du;
        value = (value ^ (value >> 15)) * 0x2C1B3C6Du;
        value = (value ^ (value >> 12)) * 0x297A2D39u;
        value ^= value >> 15;
        return value / 4294967296.0;
    }

    double mixSmoothly(double a, double b, double part)
    {
        const double weight = part * part * (3.0 - 2.0 * part);
        return a + (b - a) * weight;
    }

    /// One octave: noise on a lattice of `cells` by `cells`, smooth in between.
    double smoothNoise(std::uint32_t column, std::uint32_t row, std::uint32_t resolution,
        std::uint32_t cells, std::uint32_t octave)
    {
        const std::uint64_t u = std::uint64_t{ column } * cells;
        const std::uint64_t v = std::uint64_t{ row } * cells;
        const auto x = static_cast<std::uint32_t>(u / resolution);
        const auto y = static_cast<std::uint32_t>(v / resolution);
        const double partX = static_cast<double>(u % resolution) / resolution;
        const double partY = static_cast<double>(v % resolution) / resolution;
        return mixSmoothly(
            mixSmoothly(latticeNoise(x, y, octave), latticeNoise(x + 1, y, octave), partX),
            mixSmoothly(latticeNoise(x, y + 1, octave), latticeNoise(x + 1, y + 1, octave), partX),
            partY);
    }

    double terrainHeight(std::uint32_t column, std::uint32_t row, std::uint32_t resolution)
    {
        constexpr std::uint32_t kOctaves = 6;
        constexpr std::uint32_t kFirstCells = 3;
        double height = 0.0;
        double weight = 0.15;
        for (std::uint32_t octave = 0; octave < kOctaves; ++octave) {
            height += weight * smoothNoise(column, row, resolution, kFirstCells << octave, octave);
            weight *= 0.5;
        }
        return height;
    }

    /// The ball is a stack of rings of lattice points on an octahedron |x| + |y| + |z| = n, blown
    /// up: ring k has 4 min(k, 2 n - k) points, the poles, k = 0 and 2 n, have one.
    class SphereRings
    {
    public:
        explicit SphereRings(std::uint32_t resolution)
            : m_resolution(resolution)
        {
        }

        std::uint32_t GetRingCount() const { return 2 * m_resolution + 1; }
        /// Points on one of the four sides of a ring.
        std::uint32_t GetSide(std::uint32_t ring) const
        {
            return ring <= m_resolution ? ring : 2 * m_resolution - ring;
        }
        std::uint32_t GetSize(std::uint32_t ring) const
        {
            return GetSide(ring) == 0 ? 1 : 4 * GetSide(ring);
        }
        SPoint GetPoint(std::uint32_t ring, std::uint32_t position) const;

    private:
        std::uint32_t m_resolution;
    };

    SPoint SphereRings::GetPoint(std::uint32_t ring, std::uint32_t position) const
    {
        const std::uint32_t side = GetSide(ring);
        double x = side == 0 ? 0.0 : side - position % side;
        double y = side == 0 ? 0.0 : position % side;
        for (std::uint32_t i = 0; side != 0 && i < position / side; ++i) {
            const double turned = x;
            x = -y;
            y = turned;
        }
        const double z = static_cast<double>(m_resolution) - ring;
        const double length = std::sqrt(x * x + y * y + z * z);
        return roundPoint(x / length, y / length, z / length);
    }

    /// The strip between two rings, `small` the one with fewer points; `small` begins at vertex
    /// `smallBegin`, and so on. `outwards` is false where the small ring lies below.
    void addStrip(Mesh& mesh, std::uint32_t smallBegin, std::uint32_t smallSide,
        std::uint32_t largeBegin, bool smallAbove)
    {
        const std::uint32_t largeSide = smallSide + 1;
        const auto smallVertex = [&](std::uint32_t position) {
            return smallBegin + (smallSide == 0 ? 0 : position % (4 * smallSide));
        };
        const auto largeVertex
            = [&](std::uint32_t position) { return largeBegin + position % (4 * largeSide); };
        const auto add = [&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
            if (smallAbove) {
                mesh.AddFace({ a, b, c });
            } else {
                mesh.AddFace({ a, c, b });
            }
        };
        for (std::uint32_t quarter = 0; quarter < 4; ++quarter) {
            for (std::uint32_t i = 0; i < largeSide; ++i) {
                const std::uint32_t small = quarter * smallSide + i;
                const std::uint32_t large = quarter * largeSide + i;
                add(smallVertex(small), largeVertex(large), largeVertex(large + 1));
                if (i < smallSide) {
                    add(smallVertex(small), largeVertex(large + 1), smallVertex(small + 1));
                }
            }
        }
    }

    void report(Progress* progress, const Mesh& mesh)
    {
        if (progress != nullptr) {
            progress->Advance(std::uint64_t{ mesh.GetVertexCount() } + mesh.GetFaceCount());
        }
    }

} // namespace

Mesh MakeTerrain(std::uint32_t resolution, Progress* progress)
{
    Mesh mesh;
    for (std::uint32_t row = 0; row <= resolution; ++row) {
        for (std::uint32_t column = 0; column <= resolution; ++column) {
            mesh.AddVertex(roundPoint(static_cast<double>(column) / resolution,
                static_cast<double>(row) / resolution, terrainHeight(column, row, resolution)));
        }
        report(progress, mesh);
    }
    const std::uint32_t width = resolution + 1;
    for (std::uint32_t row = 0; row < resolution; ++row) {
        for (std::uint32_t column = 0; column < resolution; ++column) {
            const std::uint32_t corner = row * width + column;
            mesh.AddFace({ corner, corner + 1, corner + width + 1 });
            mesh.AddFace({ corner, corner + width + 1, corner + width });
        }
        report(progress, mesh);
    }
    return mesh;
}

Mesh MakeTorus(std::uint32_t resolution, Progress* progress)
{
    constexpr double kTubeRadius = 0.4;
    Mesh mesh;
    for (std::uint32_t ring = 0; ring < resolution; ++ring) {
        const SDirection around = directionOfStep(ring, resolution);
        for (std::uint32_t step = 0; step < resolution; ++step) {
            const SDirection tube = directionOfStep(step, resolution);
            const double radius = 1.0 + kTubeRadius * tube.cosine;
            mesh.AddVertex(
                roundPoint(radius * around.cosine, radius * around.sine, kTubeRadius * tube.sine));
        }
        report(progress, mesh);
    }
    for (std::uint32_t ring = 0; ring < resolution; ++ring) {
        const std::uint32_t begin = ring * resolution;
        const std::uint32_t nextBegin = (ring + 1) % resolution * resolution;
        for (std::uint32_t step = 0; step < resolution; ++step) {
            const std::uint32_t next = (step + 1) % resolution;
            mesh.AddFace({ begin + step, nextBegin + step, nextBegin + next, begin + next });
        }
        report(progress, mesh);
    }
    return mesh;
}

Mesh MakeSphere(std::uint32_t resolution, Progress* progress)
{
    const SphereRings rings(resolution);
    Mesh mesh;
    for (std::uint32_t ring = 0; ring < rings.GetRingCount(); ++ring) {
        for (std::uint32_t position = 0; position < rings.GetSize(ring); ++position) {
            mesh.AddVertex(rings.GetPoint(ring, position));
        }
        report(progress, mesh);
    }
    std::uint32_t begin = 0;
    for (std::uint32_t ring = 0; ring + 1 < rings.GetRingCount(); ++ring) {
        const std::uint32_t next = begin + rings.GetSize(ring);
        if (ring < resolution) {
            addStrip(mesh, begin, rings.GetSide(ring), next, true);
        } else {
            addStrip(mesh, next, rings.GetSide(ring + 1), begin, false);
        }
        begin = next;
        report(progress, mesh);
    }
    return mesh;
}

} // namespace tamesh
