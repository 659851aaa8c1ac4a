#include "tamesh/commands.h"
#include "tamesh/guard.h"
#include "tamesh/meshdrawing.h"
#include "tamesh/meshfiles.h"
#include "tamesh/pngwriter.h"

#include <optional>

namespace tamesh {

EExitCode PictureMesh(IConsole& console, const std::string& meshFile, EColoring kind,
    const std::string& pictureFile, const SPictureOptions& options)
{
    std::optional<Image> image;
    const EExitCode code = Guard(console, meshFile, [&] {
        const Mesh mesh = ReadMeshFile(console, meshFile);
        const SColoring coloring = ColorMesh(console, meshFile, mesh, kind, options.up);
        image = DrawMesh(console, meshFile, mesh, coloring, options);
    });
    return code != eEC_Done ? code : GuardOutput(console, pictureFile, [&](OutputFile& file) {
        WritePNG(file.GetStream(), *image);
    });
}

} // namespace tamesh
