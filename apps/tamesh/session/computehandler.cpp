#include "tamesh/session/computehandler.h"

#include "tamesh/displaytext.h"
#include "tamesh/figurelines.h"
#include "tamesh/guard.h"
#include "tamesh/meshpath.h"
#include "tamesh/resultvalues.h"
#include "tamesh/session/meshcolours.h"
#include "tamesh/session/meshtarget.h"
#include "tamesh/tameshcomponents.h"
#include "tamesh/tameshstatistics.h"

#include <algorithm>

namespace tamesh {

namespace {

    /// Computes, shows how far it is, and heeds the interrupt.
    void compute(TaAlgorithm& algorithm, IConsole& console, const std::string& task)
    {
        Progress progress(console, task, 1);
        algorithm.SetBreakEvent(console.GetInterrupt());
        algorithm.SetProgressSink(&progress);
        algorithm.Compute(TaAlgorithm::eCF_Throw);
    }

    void addCount(NewPart& part, const CString& name, std::uint64_t count)
    {
        part.AddValue<TaDataNodeUInt64, TuUInt64>(name, static_cast<unsigned long long>(count));
    }

    void addParameters(NewPart& part, TaParameterSet parameters)
    {
        part.AddValue<TaParameterNode, TaParameterData>(
            SPartNames::kParameters, std::move(parameters));
    }

    int toParameter(std::uint32_t vertex) { return static_cast<int>(vertex); }

} // namespace

ComputeHandler::ComputeHandler(const SSessionParts& session)
    : CommandHandler(
        u"Compute", session, { eCI_Info, eCI_Components, eCI_Path, eCI_Distance, eCI_Colour })
{
}

void ComputeHandler::carryOut(const SJob& job)
{
    MeshTarget target(getTree(), job);
    switch (job.command.id) {
    case eCI_Info:
        return info(job, target);
    case eCI_Components:
        return components(job, target);
    case eCI_Path:
        return path(job, target);
    case eCI_Distance:
        return distance(job, target);
    default:
        return color(job, target);
    }
}

void ComputeHandler::info(const SJob& job, MeshTarget& target)
{
    target.Read();
    TaMeshStatistics statistics;
    statistics.SetMesh(target.GetMesh());
    compute(statistics, job.console, "analysing " + target.GetName());
    const SMeshFigures figures = statistics.GetFigures();
    target.Store(SPartNames::kFigures, [&](NewPart& part) {
        addCount(part, u"Edges", figures.edges);
        addCount(part, u"Boundary edges", figures.boundaryEdges);
        addCount(part, u"Non-manifold edges", figures.nonManifoldEdges);
        addCount(part, u"Degenerate faces", figures.degenerateFaces);
        addCount(part, u"Components", figures.components);
        addCount(part, u"Isolated vertices", figures.isolatedVertices);
        part.AddValue<TaDataNodeInt64, TuInt64>(
            u"Euler characteristic", static_cast<long long>(figures.eulerCharacteristic));
    });
    WriteResult(job.console, target.GetName() + "\n" + FormatFigures(figures, job.settings.digits));
}

void ComputeHandler::components(const SJob& job, MeshTarget& target)
{
    constexpr std::size_t kMostShown = 10;
    target.Read();
    TaMeshComponents components;
    components.SetMesh(target.GetMesh());
    compute(components, job.console, "looking for the components of " + target.GetName());
    const std::vector<std::uint32_t>& sizes = components.GetSizes();
    target.Store(SPartNames::kComponents, [&](NewPart& part) {
        addCount(part, u"Count", sizes.size());
        part.AddValue<TaNumbersNode, TaNumbersData>(SPartNames::kData, sizes);
    });
    FigureLines lines;
    lines.Add("components", sizes.size());
    for (std::size_t i = 0; i != std::min(sizes.size(), kMostShown); ++i) {
        lines.Add("vertices", sizes[i]);
    }
    if (sizes.size() > kMostShown) {
        lines.Add("smaller ones", sizes.size() - kMostShown);
    }
    WriteResult(job.console, target.GetName() + " (components)\n" + lines.GetText());
}

void ComputeHandler::path(const SJob& job, MeshTarget& target)
{
    MeshGraph& graph = target.ReadWithGraph();
    const Mesh& mesh = target.GetMesh();
    const std::string& name = target.GetName();
    const auto find = [&](const VertexName& vertex) {
        return FindNamedVertex(job.console, mesh, vertex, name);
    };
    const std::uint32_t from = find(job.command.from);
    const std::uint32_t to = find(job.command.to);
    const SMeshPath path = FindMeshPath(job.console, name, graph, from, to);
    if (!job.command.output.empty()) {
        NameFailures(job.command.output, [&] {
            OutputFile file(job.command.output);
            OutputText text(file);
            WriteMeshPath(text, mesh, path);
            file.Commit();
        });
    }
    target.Store(SPartNames::kPath, [&](NewPart& part) {
        TaParameterSet parameters;
        parameters.SetParameter(u"from", toParameter(from));
        parameters.SetParameter(u"to", toParameter(to));
        addParameters(part, std::move(parameters));
        part.AddValue<TaDataNodeFloat64, TuFloat64>(u"Length", path.length);
        part.AddValue<TaPathNode, TaPathData>(SPartNames::kData, path);
    });
    WriteResult(job.console, FormatMeshPath(name, path, job.settings.digits));
}

void ComputeHandler::distance(const SJob& job, MeshTarget& target)
{
    MeshGraph& graph = target.ReadWithGraph();
    const std::string& name = target.GetName();
    const std::uint32_t from
        = FindNamedVertex(job.console, target.GetMesh(), job.command.from, name);
    const double unit = graph.GetUnit();
    std::vector<float> distances = FindDistances(job.console, name, graph, from);
    std::uint64_t reached = 0;
    float largest = 0.0F;
    for (const float distance : distances) {
        if (distance != TaGraphNode::GetInitialWeight()) {
            ++reached;
            largest = std::max(largest, distance);
        }
    }
    target.Store(SPartNames::kDistance, [&](NewPart& part) {
        TaParameterSet parameters;
        parameters.SetParameter(u"from", toParameter(from));
        addParameters(part, std::move(parameters));
        part.AddValue<TaDataNodeFloat64, TuFloat64>(u"Largest", largest * unit);
        part.Add(TuMake<TaDistanceNode>(SPartNames::kData,
            TuMake<TaDistanceData>(from, unit, std::move(distances)), true, true));
    });
    FigureLines lines;
    lines.Add("from vertex", from);
    lines.Add("vertices reached", reached);
    lines.Add("largest", FormatNumber(largest * unit, job.settings.digits));
    WriteResult(job.console, name + " (distance)\n" + lines.GetText());
}

void ComputeHandler::color(const SJob& job, MeshTarget& target)
{
    if (job.command.colours == eMC_Distance) {
        target.ReadAll();
    } else {
        target.Read();
    }
    const SColoring coloring = MakeColours(job.console, target, job.command);
    target.Store(SPartNames::kColours, [&](NewPart& part) {
        TaParameterSet parameters;
        parameters.SetParameter(u"by", CString::FromUtf8(GetColoursName(job.command.colours)));
        parameters.SetParameter(u"up", CString::FromUtf8(GetAxisName(job.command.picture.up)));
        addParameters(part, std::move(parameters));
        part.AddValue<TaColoringNode, TaColoringData>(SPartNames::kData, coloring);
    });
    WriteResult(job.console, coloring.title + "\n");
}

} // namespace tamesh
