#include "tamesh/meshgenerator.h"

#include "tamesh/meshanalysis.h"
#include "tamesh/meshtext.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <set>
#include <string>
#include <utility>

namespace {

using namespace tamesh;

/// Expects a mesh in one piece, without flaws, that is read back as it was written.
void expectSound(const Mesh& mesh, std::uint32_t vertices, std::uint32_t faces,
    std::int64_t eulerCharacteristic, std::uint64_t boundaryEdges)
{
    const SMeshFigures figures = AnalyseMesh(mesh);
    EXPECT_EQ(figures.vertices, vertices);
    EXPECT_EQ(figures.faces, faces);
    EXPECT_EQ(figures.eulerCharacteristic, eulerCharacteristic);
    EXPECT_EQ(figures.boundaryEdges, boundaryEdges);
    EXPECT_EQ(figures.components, 1u);
    EXPECT_EQ(figures.nonManifoldEdges + figures.isolatedVertices + figures.degenerateFaces, 0u);
    std::set<std::pair<std::uint32_t, std::uint32_t>> sides;
    for (std::uint32_t i = 0; i < mesh.GetFaceCount(); ++i) {
        std::uint32_t previous = mesh.GetFace(i).back();
        for (const std::uint32_t corner : mesh.GetFace(i)) {
            EXPECT_TRUE(sides.emplace(previous, corner).second) << "walked twice in one direction";
            previous = corner;
        }
    }
    const std::string text = WriteMeshText(mesh);
    EXPECT_EQ(WriteMeshText(ReadMeshText("a.off", text)), text);
}

TEST(MeshGeneratorTest, ShapesAreSound)
{
    for (const std::uint32_t n : { 1u, 2u, 3u, 10u }) {
        expectSound(MakeSphere(n), 4 * n * n + 2, 8 * n * n, 2, 0);
    }
    for (const std::uint32_t n : { 3u, 4u, 9u, 24u }) {
        expectSound(MakeTorus(n), n * n, n * n, 0, 0);
    }
    expectSound(MakeTerrain(20), 21 * 21, 800, 1, 80);
}

TEST(MeshGeneratorTest, WritesTheSameBytesOnEverySystem)
{
    const auto checksumOf = [](const Mesh& mesh) {
        const std::string text = WriteMeshText(mesh);
        return crc32_z(0, reinterpret_cast<const unsigned char*>(text.data()), text.size());
    };
    EXPECT_EQ(checksumOf(MakeTerrain(50)), 6988103u);
    EXPECT_EQ(checksumOf(MakeTorus(9)), 3335734790u); // no multiple of the quarters
    EXPECT_EQ(checksumOf(MakeTorus(50)), 3394873292u);
    EXPECT_EQ(checksumOf(MakeSphere(50)), 339327613u);
}

} // namespace
