#include "tamesh/vertexnormals.h"

#include "tamesh/progress.h"
#include "tamesh/vectors.h"

namespace tamesh {

std::vector<SPoint> FindVertexNormals(
    const Mesh& mesh, std::span<const SPoint> positions, ProgressSteps& steps)
{
    std::vector<SPoint> normals(mesh.GetVertexCount());
    for (std::uint32_t i = 0; i < mesh.GetFaceCount(); ++i) {
        // By the sides at the corner, so that it does not matter from where a face is fanned out.
        const std::span<const std::uint32_t> face = mesh.GetFace(i);
        for (std::size_t corner = 0; corner < face.size(); ++corner) {
            const SPoint& place = positions[face[corner]];
            const SPoint& next = positions[face[(corner + 1) % face.size()]];
            const SPoint& last = positions[face[(corner + face.size() - 1) % face.size()]];
            SPoint& normal = normals[face[corner]];
            normal = normal + Cross(next - place, last - place);
        }
        steps.Advance();
    }
    for (SPoint& normal : normals) {
        normal = Normalise(normal);
        steps.Advance();
    }
    return normals;
}

} // namespace tamesh
