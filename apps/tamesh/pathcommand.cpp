#include "tamesh/commands.h"
#include "tamesh/guard.h"
#include "tamesh/meshdrawing.h"
#include "tamesh/meshfiles.h"
#include "tamesh/meshpath.h"
#include "tamesh/pngwriter.h"
#include "tamesh/progress.h"

#include <optional>

namespace tamesh {

namespace {

    /// What one `tamesh path` finds.
    struct SFound
    {
        Mesh mesh;
        std::optional<MeshGraph> graph;
        SMeshPath path;
        std::optional<Image> image;
    };

    void find(
        SFound& found, IConsole& console, const std::string& name, const SPathOptions& options)
    {
        found.mesh = ReadMeshFile(console, name);
        const Mesh& mesh = found.mesh;
        const std::uint32_t from = FindNamedVertex(console, mesh, options.from, name);
        const std::uint32_t to = FindNamedVertex(console, mesh, options.to, name);
        if (!options.graphFile.empty() && mesh.GetVertexCount() > kMostVerticesInDot) {
            throw MeshFailure(TU_HERE, name, 0,
                "has " + std::to_string(mesh.GetVertexCount())
                    + " vertices; a graph is written of at most "
                    + std::to_string(kMostVerticesInDot));
        }
        {
            Progress progress(console, "connecting " + name, MeshGraph::CountSteps(mesh));
            found.graph.emplace(mesh, &progress);
        }
        found.path = FindMeshPath(console, name, *found.graph, from, to);
        if (options.pictureFile.empty()) {
            return;
        }
        const SColoring coloring = ColorByDistance(
            name, from, FindDistances(console, name, *found.graph, from), found.graph->GetUnit());
        found.image = DrawMesh(console, name, mesh, coloring, options.picture, found.path.vertices);
    }

} // namespace

EExitCode FindPath(IConsole& console, const std::string& meshFile, const SPathOptions& options)
{
    SFound found;
    EExitCode code = Guard(console, meshFile, [&] { find(found, console, meshFile, options); });
    const auto write = [&](const std::string& name, auto&& writeInto) {
        if (code == eEC_Done && !name.empty()) {
            code = GuardOutput(console, name, writeInto);
        }
    };
    write(options.pathFile, [&](OutputFile& file) {
        OutputText text(file);
        WriteMeshPath(text, found.mesh, found.path);
    });
    write(options.graphFile, [&](OutputFile& file) {
        OutputText text(file);
        found.graph->GetGraph().DumpDot(text, false);
    });
    write(options.pictureFile, [&](OutputFile& file) { WritePNG(file.GetStream(), *found.image); });
    return code != eEC_Done ? code : Guard(console, meshFile, [&] {
        WriteResult(console, FormatMeshPath(meshFile, found.path, options.digits));
    });
}

} // namespace tamesh
