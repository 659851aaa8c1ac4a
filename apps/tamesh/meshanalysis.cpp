#include "tamesh/meshanalysis.h"

#include "groundwork/tustreamwriteasciistring.h"
#include "tabase/taunionfind.h"
#include "tamesh/progress.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace tamesh {

namespace {

    /// Calls take(smaller, larger) for each side of each face whose ends are different vertices.
    template <class Take> void forEachSide(const Mesh& mesh, ProgressSteps& steps, Take&& take)
    {
        for (std::uint32_t i = 0; i < mesh.GetFaceCount(); ++i) {
            const std::span<const std::uint32_t> face = mesh.GetFace(i);
            std::uint32_t previous = face.back();
            for (const std::uint32_t corner : face) {
                if (corner != previous) {
                    take(std::min(corner, previous), std::max(corner, previous));
                }
                previous = corner;
            }
            steps.Advance();
        }
    }

    /// All sides by their smaller end: those of vertex i have their larger ends from begins[i] to
    /// begins[i + 1].
    struct SSides
    {
        std::vector<std::uint32_t> begins;
        std::vector<std::uint32_t> largerEnds;
    };

    SSides collectSides(const Mesh& mesh, ProgressSteps& steps)
    {
        SSides sides;
        sides.begins.resize(std::size_t{ mesh.GetVertexCount() } + 1);
        forEachSide(
            mesh, steps, [&](std::uint32_t smaller, std::uint32_t) { ++sides.begins[smaller]; });
        std::partial_sum(sides.begins.begin(), sides.begins.end(), sides.begins.begin());
        // Each begin stands at its end now, and moves to its place while the sides are put in.
        sides.largerEnds.resize(sides.begins.back());
        forEachSide(mesh, steps, [&](std::uint32_t smaller, std::uint32_t larger) {
            sides.largerEnds[--sides.begins[smaller]] = larger;
        });
        return sides;
    }

    void countEdges(const Mesh& mesh, SMeshFigures& figures, ProgressSteps& steps)
    {
        SSides sides = collectSides(mesh, steps);
        for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
            auto side = sides.largerEnds.begin() + sides.begins[i];
            const auto end = sides.largerEnds.begin() + sides.begins[i + 1];
            std::sort(side, end);
            while (side != end) {
                const auto next = std::upper_bound(side, end, *side);
                ++figures.edges;
                figures.boundaryEdges += next - side == 1;
                figures.nonManifoldEdges += next - side > 2;
                side = next;
            }
            steps.Advance();
        }
    }

    void countComponents(const Mesh& mesh, SMeshFigures& figures, ProgressSteps& steps)
    {
        TaUnionFind sets(mesh.GetVertexCount());
        std::vector<bool> used(mesh.GetVertexCount());
        for (std::uint32_t i = 0; i < mesh.GetFaceCount(); ++i) {
            const std::span<const std::uint32_t> face = mesh.GetFace(i);
            for (const std::uint32_t corner : face) {
                sets.AddPair(face.front(), corner);
                used[corner] = true;
            }
            steps.Advance();
        }
        figures.components = sets.CreateSetNumbers();
        figures.isolatedVertices
            = static_cast<std::uint64_t>(std::count(used.begin(), used.end(), false));
    }

    void countDegenerateFaces(const Mesh& mesh, SMeshFigures& figures, ProgressSteps& steps)
    {
        std::vector<std::uint32_t> sorted;
        for (std::uint32_t i = 0; i < mesh.GetFaceCount(); ++i) {
            const std::span<const std::uint32_t> face = mesh.GetFace(i);
            sorted.assign(face.begin(), face.end());
            std::sort(sorted.begin(), sorted.end());
            if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end()) {
                ++figures.degenerateFaces;
            }
            steps.Advance();
        }
    }

    void findBounds(const Mesh& mesh, SMeshFigures& figures)
    {
        if (mesh.GetVertexCount() == 0) {
            return;
        }
        const auto [lower, upper] = FindBounds(mesh);
        figures.lowerBound = lower;
        figures.upperBound = upper;
    }

    class FigureLines
    {
    public:
        template <class... Values> void Add(std::string_view name, const Values&... values)
        {
            constexpr std::size_t kNameWidth = 22;
            std::string start = "  " + std::string(name);
            start.resize(std::max(kNameWidth, start.size()), ' ');
            m_text << CStringA(start);
            ((m_text << " " << values), ...);
            m_text << "\n";
        }
        std::string GetText() const { return std::string(m_text.GetText().GetView()); }

    private:
        TuStreamWriteASCIIStringT<CStringA> m_text;
    };

} // namespace

std::uint64_t GetAnalysisSteps(const Mesh& mesh)
{
    constexpr std::uint64_t kWalks = 4; // over all faces
    return kWalks * mesh.GetFaceCount() + mesh.GetVertexCount();
}

SMeshFigures AnalyseMesh(const Mesh& mesh, Progress* progress)
{
    ProgressSteps steps(progress);
    SMeshFigures figures;
    figures.vertices = mesh.GetVertexCount();
    figures.faces = mesh.GetFaceCount();
    countEdges(mesh, figures, steps);
    countDegenerateFaces(mesh, figures, steps);
    countComponents(mesh, figures, steps);
    figures.eulerCharacteristic = static_cast<std::int64_t>(figures.vertices)
        - static_cast<std::int64_t>(figures.edges) + static_cast<std::int64_t>(figures.faces);
    findBounds(mesh, figures);
    return figures;
}

std::string FormatFigures(const SMeshFigures& figures)
{
    FigureLines lines;
    lines.Add("vertices", figures.vertices);
    lines.Add("faces", figures.faces);
    lines.Add("edges", figures.edges);
    lines.Add("boundary edges", figures.boundaryEdges);
    lines.Add("non-manifold edges", figures.nonManifoldEdges);
    lines.Add("degenerate faces", figures.degenerateFaces);
    lines.Add("components", figures.components);
    lines.Add("isolated vertices", figures.isolatedVertices);
    lines.Add("Euler characteristic", figures.eulerCharacteristic);
    if (figures.vertices != 0) {
        const SPoint& lower = figures.lowerBound;
        const SPoint& upper = figures.upperBound;
        lines.Add("lower bound", lower.x, lower.y, lower.z);
        lines.Add("upper bound", upper.x, upper.y, upper.z);
    }
    return lines.GetText();
}

} // namespace tamesh
