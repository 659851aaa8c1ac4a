#include "tamesh/meshdrawing.h"

#include "tamesh/displaytext.h"
#include "tamesh/files.h"
#include "tamesh/meshfailure.h"
#include "tamesh/meshpicture.h"
#include "tamesh/pngwriter.h"
#include "tamesh/progress.h"

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

    void checkVertices(const std::string& name, const Mesh& mesh)
    {
        if (mesh.GetVertexCount() == 0) {
            throw MeshFailure(TU_HERE, name, 0, "has no vertices that could be shown");
        }
    }

} // namespace

SColoring ColorMesh(
    IConsole& console, const std::string& name, const Mesh& mesh, EColoring kind, EAxis up)
{
    checkVertices(name, mesh);
    Progress progress(console, "colouring " + name, countSteps(kind, mesh));
    SColoring coloring = makeColoring(kind, mesh, up, progress);
    coloring.title = MakeDisplayName(name) + ": " + coloring.title;
    return coloring;
}

Image DrawMesh(IConsole& console, const std::string& name, const Mesh& mesh,
    const SColoring& coloring, const SPictureOptions& options, std::span<const std::uint32_t> path)
{
    checkVertices(name, mesh);
    Progress progress(console, "drawing " + name, MeshPicture::CountSteps(mesh));
    MeshPicture picture(mesh, coloring, options, &progress);
    picture.DrawMesh();
    if (!path.empty()) {
        picture.DrawPath(path);
    }
    return picture.MakeImage();
}

void WriteImageFile(IConsole& console, const std::string& fileName, const Image& image)
{
    CheckInterrupt(console);
    OutputFile file(fileName);
    WritePNG(file.GetStream(), image);
    CheckInterrupt(console);
    file.Commit();
}

} // namespace tamesh
