#include "tamesh/vertexnormals.h"

#include "tamesh/progress.h"
#include "tamesh/vectors.h"

namespace tamesh {

std::vector<SPoint> FindVertexNormals(
    const Mesh& mesh, std::span<const SPoint> positions, ProgressSteps& steps)
{
    std::vector<SPoint> normals(mesh.GetVertexCount());
    for (std::uint32_t i = 0; i < mesh.GetFaceCount(); ++i) {
        ForEachTriangle(mesh.GetFace(i), [&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
            const SPoint normal = Cross(positions[b] - positions[a], positions[c] - positions[a]);
            for (const std::uint32_t corner : { a, b, c }) {
                normals[corner] = normals[corner] + normal;
            }
        });
        steps.Advance();
    }
    for (SPoint& normal : normals) {
        normal = Normalise(normal);
        steps.Advance();
    }
    return normals;
}

} // namespace tamesh
