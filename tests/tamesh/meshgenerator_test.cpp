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

TEST(MeshGeneratorTest, TheSphereIsClosedAndRound)
{
    for (const std::uint32_t resolution : { 1u, 2u, 3u, 10u }) {
        const Mesh mesh = MakeSphere(resolution);
        const SMeshFigures figures = AnalyseMesh(mesh);
        EXPECT_EQ(figures.vertices, 4u * resolution * resolution + 2);
        EXPECT_EQ(figures.faces, 8u * resolution * resolution);
        EXPECT_EQ(figures.eulerCharacteristic, 2);
        EXPECT_EQ(figures.boundaryEdges + figures.nonManifoldEdges + figures.isolatedVertices, 0u);
        EXPECT_EQ(figures.components, 1u);
        EXPECT_TRUE(isOriented(mesh));
        for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
            const SPoint& p = mesh.GetVertex(i);
            EXPECT_NEAR(p.x * p.x + p.y * p.y + p.z * p.z, 1.0, 1e-5);
        }
    }
}

TEST(MeshGeneratorTest, TheTorusIsClosedWithAHole)
{
    for (const std::uint32_t resolution : { 3u, 4u, 9u, 24u }) {
        const Mesh mesh = MakeTorus(resolution);
        const SMeshFigures figures = AnalyseMesh(mesh);
        EXPECT_EQ(figures.vertices, resolution * resolution);
        EXPECT_EQ(figures.faces, resolution * resolution);
        EXPECT_EQ(figures.eulerCharacteristic, 0);
        EXPECT_EQ(figures.boundaryEdges + figures.nonManifoldEdges, 0u);
        EXPECT_TRUE(isOriented(mesh));
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
    const SMeshFigures figures = AnalyseMesh(mesh);
    EXPECT_EQ(figures.vertices, 21u * 21u);
    EXPECT_EQ(figures.faces, 800u);
    EXPECT_EQ(figures.boundaryEdges, 80u);
    EXPECT_EQ(figures.nonManifoldEdges, 0u);
    EXPECT_EQ(figures.eulerCharacteristic, 1);
    EXPECT_TRUE(isOriented(mesh));
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

TEST(MeshGeneratorTest, WhatIsWrittenIsReadBack)
{
    const Mesh mesh = MakeTorus(7);
    const Mesh read = ReadMeshText("a.off", writeText(mesh));
    ASSERT_EQ(read.GetVertexCount(), mesh.GetVertexCount());
    for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
        EXPECT_EQ(read.GetVertex(i), mesh.GetVertex(i));
    }
    EXPECT_TRUE(std::ranges::equal(read.GetCorners(), mesh.GetCorners()));
}

} // namespace
