#include "tamesh/meshanalysis.h"

#include "groundwork/tustreamwriteasciistring.h"
#include "tabase/taunionfind.h"

#include <algorithm>
#include <vector>

namespace tamesh {

namespace {

    /// Both directions of an edge give the same number.
    std::uint64_t edgeKey(std::uint32_t a, std::uint32_t b)
    {
        return (std::uint64_t{ std::min(a, b) } << 32) | std::max(a, b);
    }

    void countEdges(const Mesh& mesh, SMeshFigures& figures)
    {
        std::vector<std::uint64_t> sides;
        sides.reserve(mesh.GetCornerCount());
        for (std::uint32_t i = 0; i < mesh.GetFaceCount(); ++i) {
            const std::span<const std::uint32_t> face = mesh.GetFace(i);
            std::uint32_t previous = face.back();
            for (const std::uint32_t corner : face) {
                if (corner != previous) {
                    sides.push_back(edgeKey(previous, corner));
                }
                previous = corner;
            }
        }
        std::sort(sides.begin(), sides.end());
        for (auto side = sides.begin(); side != sides.end();) {
            const auto next = std::find_if(
                side, sides.end(), [key = *side](std::uint64_t other) { return other != key; });
            ++figures.edges;
            figures.boundaryEdges += next - side == 1;
            figures.nonManifoldEdges += next - side > 2;
            side = next;
        }
    }

    void countComponents(const Mesh& mesh, SMeshFigures& figures)
    {
        TaUnionFind sets(mesh.GetVertexCount());
        std::vector<bool> used(mesh.GetVertexCount());
        for (std::uint32_t i = 0; i < mesh.GetFaceCount(); ++i) {
            const std::span<const std::uint32_t> face = mesh.GetFace(i);
            for (const std::uint32_t corner : face) {
                sets.AddPair(face.front(), corner);
                used[corner] = true;
            }
        }
        figures.components = sets.CreateSetNumbers();
        figures.isolatedVertices
            = static_cast<std::uint64_t>(std::count(used.begin(), used.end(), false));
    }

    void countDegenerateFaces(const Mesh& mesh, SMeshFigures& figures)
    {
        std::vector<std::uint32_t> sorted;
        for (std::uint32_t i = 0; i < mesh.GetFaceCount(); ++i) {
            const std::span<const std::uint32_t> face = mesh.GetFace(i);
            sorted.assign(face.begin(), face.end());
            std::sort(sorted.begin(), sorted.end());
            if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end()) {
                ++figures.degenerateFaces;
            }
        }
    }

    void findBounds(const Mesh& mesh, SMeshFigures& figures)
    {
        if (mesh.GetVertexCount() == 0) {
            return;
        }
        SPoint lower = mesh.GetVertex(0);
        SPoint upper = lower;
        for (std::uint32_t i = 1; i < mesh.GetVertexCount(); ++i) {
            const SPoint& point = mesh.GetVertex(i);
            lower = { std::min(lower.x, point.x), std::min(lower.y, point.y),
                std::min(lower.z, point.z) };
            upper = { std::max(upper.x, point.x), std::max(upper.y, point.y),
                std::max(upper.z, point.z) };
        }
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

SMeshFigures AnalyseMesh(const Mesh& mesh)
{
    SMeshFigures figures;
    figures.vertices = mesh.GetVertexCount();
    figures.faces = mesh.GetFaceCount();
    countEdges(mesh, figures);
    countDegenerateFaces(mesh, figures);
    countComponents(mesh, figures);
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
