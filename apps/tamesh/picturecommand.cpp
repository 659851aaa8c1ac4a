#include "tamesh/coloring.h"
#include "tamesh/commands.h"
#include "tamesh/displaytext.h"
#include "tamesh/guard.h"
#include "tamesh/meshfiles.h"
#include "tamesh/meshpicture.h"
#include "tamesh/pngwriter.h"
#include "tamesh/progress.h"

#include <optional>

namespace tamesh {

namespace {

    std::uint64_t countSteps(EColoring kind, const Mesh& mesh)
    {
        const std::uint64_t faceWalks = kind == eC_Height ? 0 : kind == eC_Component ? 1 : 2;
        return mesh.GetVertexCount() + faceWalks * mesh.GetFaceCount();
    }

    SColoring makeColoring(EColoring kind, const Mesh& mesh, EAxis up, Progress& progress)
    {
        switch (kind) {
        case eC_Height:
            return ColorByHeight(mesh, up, &progress);
        case eC_Curvature:
            return ColorByCurvature(mesh, &progress);
        case eC_Component:
            break;
        }
        return ColorByComponent(mesh, &progress);
    }

    SColoring colorMesh(
        IConsole& console, const std::string& name, const Mesh& mesh, EColoring kind, EAxis up)
    {
        Progress progress(console, "colouring " + name, countSteps(kind, mesh));
        SColoring coloring = makeColoring(kind, mesh, up, progress);
        coloring.title = MakeDisplayName(name) + ": " + coloring.title;
        return coloring;
    }

} // namespace

EExitCode PictureMesh(IConsole& console, const std::string& meshFile, EColoring kind,
    const std::string& pictureFile, const SPictureOptions& options)
{
    std::optional<Image> image;
    const EExitCode code = Guard(console, meshFile, [&] {
        const Mesh mesh = ReadMeshFile(console, meshFile);
        if (mesh.GetVertexCount() == 0) {
            throw MeshFailure(TU_HERE, meshFile, 0, "has no vertices that could be shown");
        }
        const SColoring coloring = colorMesh(console, meshFile, mesh, kind, options.up);
        Progress progress(console, "drawing " + meshFile, MeshPicture::CountSteps(mesh));
        MeshPicture picture(mesh, coloring, options, &progress);
        picture.DrawMesh();
        image = picture.MakeImage();
    });
    return code != eEC_Done ? code : GuardOutput(console, pictureFile, [&](OutputFile& file) {
        WritePNG(file.GetStream(), *image);
    });
}

} // namespace tamesh
