#include "tamesh/commands.h"

#include "tamesh/displaytext.h"
#include "tamesh/document.h"
#include "tamesh/guard.h"
#include "tamesh/meshanalysis.h"
#include "tamesh/meshfiles.h"
#include "tamesh/meshgenerator.h"
#include "tamesh/meshreader.h"
#include "tamesh/progress.h"
#include "tamesh/tameshstatistics.h"

#include <algorithm>
#include <filesystem>
#include <sstream>
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

    /// Of a line of a dump; the top has depth 0.
    int getDepth(std::string_view line)
    {
        for (int depth = 1; line.size() >= 4; ++depth) {
            const std::string_view lead = line.substr(0, 4);
            if (lead == " |--") {
                return depth;
            }
            if (lead != " |  " && lead != "    ") {
                break;
            }
            line.remove_prefix(4);
        }
        return 0;
    }

    /// The data tree of a document, which may be anybody's, a line for each node.
    std::string formatTree(const TaNode& root, int depth)
    {
        // The lines of a dump grow with the depth, which costs little in a file.
        constexpr std::size_t kDeepest = 40;
        std::vector<TaNode::ConstChildrenIterator> open{ root.GetChildren() };
        while (!open.empty()) {
            if (open.size() > kDeepest) {
                return "  (the data tree is too deep to be shown)\n";
            }
            if (!open.back()) {
                open.pop_back();
            } else {
                const TaNode& child = *open.back();
                ++open.back();
                open.push_back(child.GetChildren());
            }
        }
        std::istringstream lines(root.ToString().ToUtf8());
        std::string text;
        for (std::string line; std::getline(lines, line);) {
            if (getDepth(line) <= depth) {
                text += "  " + MakeDisplayText(line) + "\n";
            }
        }
        return text;
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

    template <class Work>
    EExitCode forEach(IConsole& console, const std::vector<std::string>& names, Work&& work)
    {
        EExitCode code = eEC_Done;
        for (const std::string& name : names) {
            const EExitCode fileCode = Guard(console, name, [&] { work(name); });
            code = fileCode != eEC_Done ? fileCode : code;
            if (code == eEC_Interrupted) {
                break;
            }
        }
        return code;
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
    return forEach(console, meshFiles, [&](const std::string& name) {
        showFigures(
            console, options, name, nameOf(GetMeshFormat(name)), ReadMeshFile(console, name));
    });
}

EExitCode ShowDocuments(
    IConsole& console, const std::vector<std::string>& documentFiles, const SViewOptions& options)
{
    return forEach(console, documentFiles, [&](const std::string& name) {
        Document document;
        ReadDocumentFile(console, name, document);
        showFigures(console, options, name, "document", document.GetMesh(),
            formatTree(*document.GetTree().GetRootNode(), options.treeDepth));
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
