#include "tabase/tacolortables.h"
#include "tabase/tampgraphtoshortestpath.h"
#include "tamesh/coloring.h"
#include "tamesh/commands.h"
#include "tamesh/displaytext.h"
#include "tamesh/figurelines.h"
#include "tamesh/guard.h"
#include "tamesh/meshfiles.h"
#include "tamesh/meshgraph.h"
#include "tamesh/meshpicture.h"
#include "tamesh/pngwriter.h"
#include "tamesh/progress.h"

#include <algorithm>
#include <functional>
#include <optional>

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

    std::uint32_t findVertex(
        IConsole& console, const Mesh& mesh, const VertexName& name, const std::string& fileName)
    {
        Progress progress(console, "looking for a vertex of " + fileName, mesh.GetVertexCount());
        const std::optional<std::uint32_t> vertex = FindVertex(mesh, name, &progress);
        if (!vertex) {
            const std::uint32_t count = mesh.GetVertexCount();
            throw MeshFailure(TU_HERE, fileName, 0,
                count == 0 ? "has no vertices"
                           : "has no vertex " + std::to_string(std::get<std::uint32_t>(name))
                        + "; its vertices are 0 to " + std::to_string(count - 1));
        }
        return *vertex;
    }

    /// The path of one `tamesh path`.
    class PathFinder
    {
    public:
        PathFinder(IConsole& console, const std::string& name, const SPathOptions& options)
            : m_console(console)
            , m_name(name)
            , m_options(options)
        {
        }

        void Find();
        std::string Describe() const;
        void WritePath(TuStreamWriteASCII& stream) const;
        TaGraph& GetGraph() { return m_graph->GetGraph(); }
        Image Draw();

    private:
        SColoring colorByDistance();

        IConsole& m_console;
        const std::string& m_name;
        const SPathOptions& m_options;
        Mesh m_mesh;
        std::optional<MeshGraph> m_graph;
        std::uint32_t m_from = 0;
        std::uint32_t m_to = 0;
        double m_length = 0.0;
        std::vector<std::uint32_t> m_path;
    };

    void PathFinder::Find()
    {
        m_mesh = ReadMeshFile(m_console, m_name);
        m_from = findVertex(m_console, m_mesh, m_options.from, m_name);
        m_to = findVertex(m_console, m_mesh, m_options.to, m_name);
        if (!m_options.graphFile.empty() && m_mesh.GetVertexCount() > kMostVerticesInDot) {
            throw MeshFailure(TU_HERE, m_name, 0,
                "has " + std::to_string(m_mesh.GetVertexCount())
                    + " vertices; a graph is written of at most "
                    + std::to_string(kMostVerticesInDot));
        }
        {
            Progress progress(m_console, "connecting " + m_name, MeshGraph::CountSteps(m_mesh));
            m_graph.emplace(m_mesh, &progress);
        }
        TaGraphNode& from = m_graph->GetNode(m_from);
        TaGraphNode& to = m_graph->GetNode(m_to);
        if (!search(m_console, "searching " + m_name, m_graph->GetGraph(), from, to)) {
            throw MeshFailure(TU_HERE, m_name, 0,
                "no path leads from vertex " + std::to_string(m_from) + " to vertex "
                    + std::to_string(m_to));
        }
        m_length = to.GetWeight() * m_graph->GetUnit();
        TaGraphPathIterator path(from, to);
        for (const TaGraphNode& node : path) {
            m_path.push_back(MeshGraph::GetVertex(node));
        }
    }

    std::string PathFinder::Describe() const
    {
        FigureLines lines;
        lines.Add("length", FormatNumber(m_length, m_options.digits));
        lines.Add("vertices", m_path.size());
        std::string numbers;
        for (const std::uint32_t vertex : m_path) {
            numbers += (numbers.empty() ? "" : " ") + std::to_string(vertex);
        }
        lines.Add("path", numbers.c_str());
        return m_name + " (path)\n" + lines.GetText();
    }

    void PathFinder::WritePath(TuStreamWriteASCII& stream) const
    {
        for (const std::uint32_t vertex : m_path) {
            const SPoint& point = m_mesh.GetVertex(vertex);
            stream << "v " << point.x << " " << point.y << " " << point.z << "\n";
        }
        stream << (m_path.size() == 1 ? "p" : "l");
        for (std::size_t i = 1; i <= m_path.size(); ++i) {
            stream << " " << static_cast<unsigned long long>(i);
        }
        stream << "\n";
    }

    /// The search stops at the end of the path. One to a node that no connection leads to goes on
    /// until it has been everywhere.
    SColoring PathFinder::colorByDistance()
    {
        TaGraph& graph = m_graph->GetGraph();
        auto nowhere = std::make_unique<TaGraphNode>();
        graph.InsertNode(nowhere.get());
        TaGraphNode& start = m_graph->GetNode(m_from);
        search(m_console, "measuring " + m_name, graph, start, *nowhere.release());
        SColoring coloring;
        coloring.title
            = MakeDisplayName(m_name) + ": distance from vertex " + std::to_string(m_from);
        coloring.values.reserve(m_mesh.GetVertexCount());
        Progress progress(m_console, "colouring " + m_name, m_mesh.GetVertexCount());
        ProgressSteps steps(&progress);
        float largest = 0.0F;
        for (std::uint32_t i = 0; i != m_mesh.GetVertexCount(); ++i) {
            const float distance = m_graph->GetNode(i).GetWeight();
            coloring.values.push_back(distance);
            if (distance != TaGraphNode::GetInitialWeight()) {
                largest = std::max(largest, distance);
            }
            steps.Advance();
        }
        coloring.upper = largest * m_graph->GetUnit();
        coloring.table = TaColorTables::CreateViridis(256, 0.0F, largest);
        return coloring;
    }

    Image PathFinder::Draw()
    {
        const SColoring coloring = colorByDistance();
        Progress progress(m_console, "drawing " + m_name, MeshPicture::CountSteps(m_mesh));
        MeshPicture picture(m_mesh, coloring, m_options.picture, &progress);
        picture.DrawMesh();
        picture.DrawPath(m_path);
        return picture.MakeImage();
    }

} // namespace

EExitCode FindPath(IConsole& console, const std::string& meshFile, const SPathOptions& options)
{
    PathFinder finder(console, meshFile, options);
    std::optional<Image> image;
    EExitCode code = Guard(console, meshFile, [&] {
        finder.Find();
        if (!options.pictureFile.empty()) {
            image = finder.Draw();
        }
    });
    const auto write = [&](const std::string& name, auto&& writeInto) {
        if (code == eEC_Done && !name.empty()) {
            code = GuardOutput(console, name, writeInto);
        }
    };
    write(options.pathFile, [&](OutputFile& file) {
        OutputText text(file);
        finder.WritePath(text);
    });
    write(options.graphFile, [&](OutputFile& file) {
        OutputText text(file);
        finder.GetGraph().DumpDot(text, false);
    });
    write(options.pictureFile, [&](OutputFile& file) { WritePNG(file.GetStream(), *image); });
    return code != eEC_Done
        ? code
        : Guard(console, meshFile, [&] { WriteResult(console, finder.Describe()); });
}

} // namespace tamesh
