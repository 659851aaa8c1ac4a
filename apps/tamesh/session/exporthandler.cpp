#include "tamesh/session/exporthandler.h"

#include "tamesh/figurelines.h"
#include "tamesh/guard.h"
#include "tamesh/meshdrawing.h"
#include "tamesh/meshpacking.h"
#include "tamesh/resultvalues.h"
#include "tamesh/session/meshcolours.h"
#include "tamesh/session/meshtarget.h"
#include "tamesh/tameshrecord.h"

#include <vector>

namespace tamesh {

namespace {

    std::vector<std::uint32_t> getPath(const MeshTarget& target)
    {
        const auto path = FindValue<TaPathData>(*target.GetNode(), SPartNames::kPath);
        if (path.IsNull() || !path->Fits(target.GetMesh().GetVertexCount())) {
            throw MeshFailure(
                TU_HERE, target.GetName(), 0, "has no path; 'path --from V --to V' finds one");
        }
        return path->GetPath().vertices;
    }

    /// So that a report can draw it again.
    TaParameterSet toParameters(const SCommand& command)
    {
        const SPictureOptions& options = command.picture;
        TaParameterSet parameters;
        parameters.SetParameter(u"by", CString::FromUtf8(GetColoursName(command.colours)));
        parameters.SetParameter(u"file", CString::FromUtf8(command.output));
        parameters.SetParameter(u"height", options.size.height);
        parameters.SetParameter(u"path", command.withPath);
        parameters.SetParameter(u"up", CString::FromUtf8(GetAxisName(options.up)));
        parameters.SetParameter(u"view-x", options.toViewer.x);
        parameters.SetParameter(u"view-y", options.toViewer.y);
        parameters.SetParameter(u"view-z", options.toViewer.z);
        parameters.SetParameter(u"width", options.size.width);
        return parameters;
    }

} // namespace

ExportHandler::ExportHandler(const SSessionParts& session)
    : CommandHandler(u"Export", session, { eCI_Picture, eCI_Pack })
{
}

void ExportHandler::carryOut(const SJob& job)
{
    if (job.command.id == eCI_Picture) {
        picture(job);
    } else {
        pack(job);
    }
}

void ExportHandler::picture(const SJob& job)
{
    MeshTarget target(getTree(), job);
    target.ReadAll();
    const SColoring coloring = MakeColours(job.console, target, job.command);
    const std::vector<std::uint32_t> path
        = job.command.withPath ? getPath(target) : std::vector<std::uint32_t>();
    const Image image = DrawMesh(
        job.console, target.GetName(), target.GetMesh(), coloring, job.command.picture, path);
    NameFailures(
        job.command.output, [&] { WriteImageFile(job.console, job.command.output, image); });
    target.Store(SPartNames::kPicture, [&](NewPart& part) {
        part.AddValue<TaParameterNode, TaParameterData>(
            SPartNames::kParameters, toParameters(job.command));
        part.AddValue<TaColoringNode, TaColoringData>(SPartNames::kData, coloring);
    });
    WriteResult(job.console, target.GetName() + ": drawn in " + job.command.output + "\n");
}

void ExportHandler::pack(const SJob& job)
{
    MeshTarget target(getTree(), job);
    target.WriteGeometry();
    const TuSmartPointer<TaMeshData> data = target.FindMeshData();
    target.GetMesh(); // is there
    PackMeshData(job.console, target.GetName(), *data, job.command.packing);
    const std::uint64_t raw = TaMeshRecord::GetStoredSize(data->GetMesh());
    const std::uint64_t packed = data->GetPacked()->GetStoredSize();
    const double percent = 100.0 * static_cast<double>(packed) / static_cast<double>(raw);
    FigureLines lines;
    lines.Add("raw", raw, "bytes");
    lines.Add("packed", packed, "bytes,", FormatNumber(percent, 3), "%");
    WriteResult(job.console, target.GetName() + " (packed)\n" + lines.GetText());
}

} // namespace tamesh
