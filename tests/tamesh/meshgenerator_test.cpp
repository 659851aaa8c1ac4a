#include "tamesh/meshgenerator.h"

#include "groundwork/tustreamwriteasciistring.h"
#include "tamesh/meshanalysis.h"
#include "tamesh/offwriter.h"
#include "tamesh/testinput.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <utility>

namespace {

using namespace tamesh;

std::string writeText(const Mesh& mesh)
{
    TuStreamWriteASCIIStringT<CStringA> text;
    WriteOFF(text, mesh);
    return std::string(text.GetText().GetView());
}

/// FNV-1a, which is good enough to tell one text from another.
std::uint32_t hashOf(const std::string& text)
{
    std::uint32_t hash = 2166136261u;
    for (const char unit : text) {
        hash = (hash ^ static_cast<unsigned char>(unit)) * 16777619u;
    }
    return hash;
}

/// Whether no two faces walk an edge in the same direction.
bool isOriented(const Mesh& mesh)
{
    std::set<std::pair<std::uint32_t, std::uint32_t>> sides;
    for (std::uint32_t i = 0; i < mesh.GetFaceCount(); ++i) {
        std::uint32_t previous = mesh.GetFace(i).back();
        for (const std::uint32_t corner : mesh.GetFace(i)) {
            if (!sides.emplace(previous, corner).second) {
                return false;
            }
            previous = corner;
        }
    }
    return true;
}

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
    EXPECT_TRUE(isOriented(mesh));
    const std::string text = writeText(mesh);
    EXPECT_EQ(writeText(ReadMeshText("a.off", text)), text);
}

TEST(MeshGeneratorTest, TheSphereIsClosedAndRound)
{
    for (const std::uint32_t n : { 1u, 2u, 3u, 10u }) {
        const Mesh mesh = MakeSphere(n);
        expectSound(mesh, 4 * n * n + 2, 8 * n * n, 2, 0);
        for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
            const SPoint& p = mesh.GetVertex(i);
            EXPECT_NEAR(p.x * p.x + p.y * p.y + p.z * p.z, 1.0, 1e-5);
        }
    }
}

TEST(MeshGeneratorTest, TheTorusIsClosedWithAHole)
{
    for (const std::uint32_t n : { 3u, 4u, 9u, 24u }) {
        const Mesh mesh = MakeTorus(n);
        expectSound(mesh, n * n, n * n, 0, 0);
        for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
            const SPoint& p = mesh.GetVertex(i);
            const double ring = std::sqrt(p.x * p.x + p.y * p.y) - 1.0;
            EXPECT_NEAR(ring * ring + p.z * p.z, 0.16, 1e-5);
        }
    }
}

TEST(MeshGeneratorTest, TheTerrainIsOneSheet)
{
    const Mesh mesh = MakeTerrain(20);
    expectSound(mesh, 21 * 21, 800, 1, 80);
    const SMeshFigures figures = AnalyseMesh(mesh);
    EXPECT_GT(figures.upperBound.z - figures.lowerBound.z, 0.05); // hills, not a plain
}

TEST(MeshGeneratorTest, WritesTheSameBytesOnEverySystem)
{
    EXPECT_EQ(writeText(MakeSphere(1)),
        "OFF\n6 8 0\n0 0 1\n1 0 0\n0 1 0\n-1 0 0\n0 -1 0\n0 0 -1\n3 0 1 2\n3 0 2 3\n3 0 3 4\n"
        "3 0 4 1\n3 5 2 1\n3 5 3 2\n3 5 4 3\n3 5 1 4\n");
    EXPECT_EQ(hashOf(writeText(MakeTerrain(50))), 4026685115u);
    EXPECT_EQ(hashOf(writeText(MakeTorus(50))), 2339437156u);
    EXPECT_EQ(hashOf(writeText(MakeSphere(50))), 3434661186u);
}

} // namespace
