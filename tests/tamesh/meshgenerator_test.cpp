#include "tamesh/meshgenerator.h"

#include "groundwork/tustreamwriteasciistring.h"
#include "tamesh/meshanalysis.h"
#include "tamesh/offwriter.h"
#include "tamesh/testinput.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cmath>
#include <set>
#include <string>
#include <utility>

namespace {

using namespace tamesh;

std::string writeText(const Mesh& mesh)
{
    TuStreamWriteASCIIStringT<CStringA> text;
    WriteOFF(text, mesh);
    return std::string(text.GetText().GetView());
}

/// Expects a mesh in one piece, without flaws, that is read back as it was written.
/// `getDistance` is about 0 for all of its vertices.
void expectSound(const Mesh& mesh, std::uint32_t vertices, std::uint32_t faces,
    std::int64_t eulerCharacteristic, std::uint64_t boundaryEdges,
    double (*getDistance)(const SPoint&))
{
    const SMeshFigures figures = AnalyseMesh(mesh);
    EXPECT_EQ(figures.vertices, vertices);
    EXPECT_EQ(figures.faces, faces);
    EXPECT_EQ(figures.eulerCharacteristic, eulerCharacteristic);
    EXPECT_EQ(figures.boundaryEdges, boundaryEdges);
    EXPECT_EQ(figures.components, 1u);
    EXPECT_EQ(figures.nonManifoldEdges + figures.isolatedVertices + figures.degenerateFaces, 0u);
    for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
        EXPECT_NEAR(getDistance(mesh.GetVertex(i)), 0.0, 1e-5);
    }
    std::set<std::pair<std::uint32_t, std::uint32_t>> sides;
    for (std::uint32_t i = 0; i < mesh.GetFaceCount(); ++i) {
        std::uint32_t previous = mesh.GetFace(i).back();
        for (const std::uint32_t corner : mesh.GetFace(i)) {
            EXPECT_TRUE(sides.emplace(previous, corner).second) << "walked twice in one direction";
            previous = corner;
        }
    }
    const std::string text = writeText(mesh);
    EXPECT_EQ(writeText(ReadMeshText("a.off", text)), text);
}

TEST(MeshGeneratorTest, ShapesAreSound)
{
    for (const std::uint32_t n : { 1u, 2u, 3u, 10u }) {
        expectSound(MakeSphere(n), 4 * n * n + 2, 8 * n * n, 2, 0,
            [](const SPoint& p) { return p.x * p.x + p.y * p.y + p.z * p.z - 1.0; });
    }
    for (const std::uint32_t n : { 3u, 4u, 9u, 24u }) {
        expectSound(MakeTorus(n), n * n, n * n, 0, 0, [](const SPoint& p) {
            const double ring = std::sqrt(p.x * p.x + p.y * p.y) - 1.0;
            return ring * ring + p.z * p.z - 0.16;
        });
    }
    const Mesh terrain = MakeTerrain(20);
    expectSound(terrain, 21 * 21, 800, 1, 80, [](const SPoint&) { return 0.0; });
    const SMeshFigures figures = AnalyseMesh(terrain);
    EXPECT_GT(figures.upperBound.z - figures.lowerBound.z, 0.05); // hills, not a plain
}

TEST(MeshGeneratorTest, WritesTheSameBytesOnEverySystem)
{
    const auto checksumOf = [](const Mesh& mesh) {
        const std::string text = writeText(mesh);
        return crc32_z(0, reinterpret_cast<const unsigned char*>(text.data()), text.size());
    };
    EXPECT_EQ(writeText(MakeSphere(1)),
        "OFF\n6 8 0\n0 0 1\n1 0 0\n0 1 0\n-1 0 0\n0 -1 0\n0 0 -1\n3 0 1 2\n3 0 2 3\n3 0 3 4\n"
        "3 0 4 1\n3 5 2 1\n3 5 3 2\n3 5 4 3\n3 5 1 4\n");
    EXPECT_EQ(checksumOf(MakeTerrain(50)), 6988103u);
    EXPECT_EQ(checksumOf(MakeTorus(50)), 3394873292u);
    EXPECT_EQ(checksumOf(MakeSphere(50)), 339327613u);
}

} // namespace
