#include "tamesh/meshpath.h"

#include "tabase/tacolortables.h"
#include "tabase/tampgraphtoshortestpath.h"
#include "tamesh/displaytext.h"
#include "tamesh/figurelines.h"
#include "tamesh/meshfailure.h"
#include "tamesh/progress.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace tamesh {

namespace {

    /// Searches, shows how far it is, and heeds the interrupt. False where no path leads there.
    bool search(IConsole& console, const std::string& task, TaGraph& graph, TaGraphNode& from,
        TaGraphNode& to)
    {
        Progress progress(console, task, 1);
        TaMpGraphToShortestPath search;
        search.SetInput(&graph, &from, &to);
        search.SetBreakEvent(console.GetInterrupt());
        search.SetProgressSink(&progress);
        try {
            search.Compute(TaAlgorithm::eCF_Throw);
            return true;
        } catch (const TuException& failure) {
            if (failure.GetLine() == TaMpGraphToShortestPath::kLineNoPath
                && failure.GetFile() == TaMpGraphToShortestPath::kSource) {
                return false;
            }
            throw;
        }
    }

} // namespace

std::uint32_t FindNamedVertex(
    IConsole& console, const Mesh& mesh, const VertexName& vertex, const std::string& name)
{
    Progress progress(console, "looking for a vertex of " + name, mesh.GetVertexCount());
    const std::optional<std::uint32_t> found = FindVertex(mesh, vertex, &progress);
    if (!found) {
        const std::uint32_t count = mesh.GetVertexCount();
        throw MeshFailure(TU_HERE, name, 0,
            count == 0 ? "has no vertices"
                       : "has no vertex " + std::to_string(std::get<std::uint32_t>(vertex))
                    + "; its vertices are 0 to " + std::to_string(count - 1));
    }
    return *found;
}

SMeshPath FindMeshPath(IConsole& console, const std::string& name, MeshGraph& graph,
    std::uint32_t from, std::uint32_t to)
{
    TaGraphNode& start = graph.GetNode(from);
    TaGraphNode& end = graph.GetNode(to);
    if (!search(console, "searching " + name, graph.GetGraph(), start, end)) {
        throw MeshFailure(TU_HERE, name, 0,
            "no path leads from vertex " + std::to_string(from) + " to vertex "
                + std::to_string(to));
    }
    SMeshPath path{ from, to, end.GetWeight() * graph.GetUnit(), {} };
    TaGraphPathIterator nodes(start, end);
    for (const TaGraphNode& node : nodes) {
        path.vertices.push_back(MeshGraph::GetVertex(node));
    }
    return path;
}

/// A search stops at the end of its path. One to a node that no connection leads to goes on until
/// it has been everywhere.
std::vector<float> FindDistances(
    IConsole& console, const std::string& name, MeshGraph& graph, std::uint32_t from)
{
    search(console, "measuring " + name, graph.GetGraph(), graph.GetNode(from), graph.GetNowhere());
    std::vector<float> distances;
    const std::uint32_t count = graph.GetVertexCount();
    distances.reserve(count);
    Progress progress(console, "measuring " + name, count);
    ProgressSteps steps(&progress);
    for (std::uint32_t i = 0; i != count; ++i) {
        distances.push_back(graph.GetNode(i).GetWeight());
        steps.Advance();
    }
    return distances;
}

SColoring ColorByDistance(
    const std::string& name, std::uint32_t from, std::vector<float> distances, double unit)
{
    float largest = 0.0F;
    for (const float distance : distances) {
        if (distance != TaGraphNode::GetInitialWeight()) {
            largest = std::max(largest, distance);
        }
    }
    SColoring coloring;
    coloring.title = MakeDisplayName(name) + ": distance from vertex " + std::to_string(from);
    coloring.values = std::move(distances);
    coloring.upper = largest * unit;
    coloring.table = TaColorTables::CreateViridis(256, 0.0F, largest);
    return coloring;
}

std::string FormatMeshPath(const std::string& name, const SMeshPath& path, int digits)
{
    FigureLines lines;
    lines.Add("length", FormatNumber(path.length, digits));
    lines.Add("vertices", path.vertices.size());
    std::string numbers;
    for (const std::uint32_t vertex : path.vertices) {
        numbers += (numbers.empty() ? "" : " ") + std::to_string(vertex);
    }
    lines.Add("path", numbers.c_str());
    return name + " (path)\n" + lines.GetText();
}

void WriteMeshPath(TuStreamWriteASCII& stream, const Mesh& mesh, const SMeshPath& path)
{
    for (const std::uint32_t vertex : path.vertices) {
        const SPoint& point = mesh.GetVertex(vertex);
        stream << "v " << point.x << " " << point.y << " " << point.z << "\n";
    }
    stream << (path.vertices.size() == 1 ? "p" : "l");
    for (std::size_t i = 1; i <= path.vertices.size(); ++i) {
        stream << " " << static_cast<unsigned long long>(i);
    }
    stream << "\n";
}

} // namespace tamesh
