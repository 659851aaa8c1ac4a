#include "tamesh/meshpacking.h"

#include "tamesh/progress.h"
#include "tamesh/tameshdata.h"

namespace tamesh {

CoordinateForm MakeCoordinateForm(const Mesh& mesh, const SPackOptions& options)
{
    return options.form == SPackOptions::eF_Quantized
        ? CoordinateForm::MakeQuantized(mesh, options.bits)
        : CoordinateForm::MakeLossless(mesh);
}

void PackMeshData(
    IConsole& console, const std::string& name, TaMeshData& data, const SPackOptions& options)
{
    const Mesh& mesh = data.GetMesh();
    const CoordinateForm form = MakeCoordinateForm(mesh, options);
    Progress progress(
        console, "packing " + name, std::uint64_t{ mesh.GetVertexCount() } + mesh.GetFaceCount());
    data.Pack(form, &progress);
}

} // namespace tamesh
