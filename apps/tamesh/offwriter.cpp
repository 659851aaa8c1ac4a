#include "tamesh/offwriter.h"

#include "groundwork/tustreamwriteascii.h"
#include "tamesh/progress.h"

namespace tamesh {

void WriteOFF(TuStreamWriteASCII& stream, const Mesh& mesh, Progress* progress)
{
    ProgressSteps steps(progress);
    stream << "OFF\n" << mesh.GetVertexCount() << " " << mesh.GetFaceCount() << " 0\n";
    for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
        const SPoint& point = mesh.GetVertex(i);
        stream << point.x << " " << point.y << " " << point.z << "\n";
        steps.Advance();
    }
    for (std::uint32_t i = 0; i < mesh.GetFaceCount(); ++i) {
        const std::span<const std::uint32_t> face = mesh.GetFace(i);
        stream << static_cast<std::uint32_t>(face.size());
        for (const std::uint32_t corner : face) {
            stream << " " << corner;
        }
        stream << "\n";
        steps.Advance();
    }
}

} // namespace tamesh
