#include "tamesh/commands.h"

#include "tamesh/document.h"
#include "tamesh/guard.h"
#include "tamesh/meshanalysis.h"
#include "tamesh/meshfiles.h"
#include "tamesh/meshgenerator.h"
#include "tamesh/meshreader.h"
#include "tamesh/progress.h"
#include "tamesh/tameshstatistics.h"
#include "tamesh/treelines.h"

#include <algorithm>
#include <filesystem>
#include <vector>

namespace tamesh {

namespace {

    SMeshFigures analyse(
        IConsole& console, const SViewOptions& options, const std::string& name, const Mesh& mesh)
    {
        Progress progress(console, "analysing " + name, 1);
        TaMeshStatistics statistics;
        statistics.SetMesh(mesh);
        if (options.isRecorded) {
            std::u16string id
                = std::filesystem::path(CString::FromUtf8(name).GetView()).stem().u16string();
            // In a name it is a character like others here, in the path of a recording no more.
            std::ranges::replace(id, u'\\', u'_');
            statistics.AddFlags(TaAlgorithm::eF_RecordUnitTest);
            statistics.SetUniqueID(id);
        }
        statistics.SetBreakEvent(console.GetInterrupt());
        statistics.SetProgressSink(&progress);
        statistics.Compute(TaAlgorithm::eCF_Throw);
        return statistics.GetFigures();
    }

    void showFigures(IConsole& console, const SViewOptions& options, const std::string& name,
        std::string_view kind, const Mesh& mesh, const std::string& tree = {})
    {
        const std::string text = name + " (" + std::string(kind) + ")\n"
            + FormatFigures(analyse(console, options, name, mesh), options.digits) + tree;
        WriteResult(console, text);
    }

    std::string_view nameOf(EMeshFormat format)
    {
        switch (format) {
        case eMF_OFF:
            return "OFF";
        case eMF_OBJ:
            return "OBJ";
        case eMF_STL:
            return "STL";
        case eMF_Unknown:
            break;
        }
        return "unknown";
    }

    /// Vertices and faces.
    std::uint64_t countElements(EShape shape, std::uint64_t n)
    {
        switch (shape) {
        case eS_Terrain:
            return (n + 1) * (n + 1) + 2 * n * n;
        case eS_Torus:
            return 2 * n * n;
        case eS_Sphere:
            break;
        }
        return 4 * n * n + 2 + 8 * n * n;
    }

    Mesh makeShape(EShape shape, std::uint32_t resolution, Progress& progress)
    {
        switch (shape) {
        case eS_Terrain:
            return MakeTerrain(resolution, &progress);
        case eS_Torus:
            return MakeTorus(resolution, &progress);
        case eS_Sphere:
            break;
        }
        return MakeSphere(resolution, &progress);
    }

} // namespace

EExitCode ShowMeshes(
    IConsole& console, const std::vector<std::string>& meshFiles, const SViewOptions& options)
{
    return GuardEach(console, meshFiles, [&](const std::string& name) {
        showFigures(
            console, options, name, nameOf(GetMeshFormat(name)), ReadMeshFile(console, name));
    });
}

EExitCode ShowDocuments(
    IConsole& console, const std::vector<std::string>& documentFiles, const SViewOptions& options)
{
    return GuardEach(console, documentFiles, [&](const std::string& name) {
        Document document;
        ReadDocumentFile(console, name, document);
        const std::string tree = FormatTree(*document.GetTree().GetRootNode(), options.treeDepth);
        if (document.HasMesh()) {
            showFigures(console, options, name, "document", document.GetMesh(), tree);
        } else {
            WriteResult(console, name + " (document without a mesh)\n" + tree);
        }
    });
}

EExitCode MakeMesh(
    IConsole& console, EShape shape, std::uint32_t resolution, const std::string& meshFile)
{
    return Guard(console, meshFile, [&] {
        const std::uint64_t elements = countElements(shape, resolution);
        const Mesh mesh = [&] {
            Progress progress(console, "making " + meshFile, elements);
            return makeShape(shape, resolution, progress);
        }();
        WriteMeshFile(console, meshFile, mesh);
    });
}

} // namespace tamesh
