#include "tamesh/meshanalysis.h"

#include "tamesh/testinput.h"

#include <gtest/gtest.h>

namespace {

using namespace tamesh;

TEST(MeshAnalysisTest, CountsWhatATetrahedronHas)
{
    Mesh mesh;
    mesh.AddVertex({ 0, 0, 0 });
    mesh.AddVertex({ 2, 0, 0 });
    mesh.AddVertex({ 0, -3, 0 });
    mesh.AddVertex({ 0, 0, 4 });
    for (const auto& face : { std::array{ 0u, 1u, 2u }, std::array{ 0u, 3u, 1u },
             std::array{ 1u, 3u, 2u }, std::array{ 2u, 3u, 0u } }) {
        mesh.AddFace(face);
    }
    EXPECT_EQ(FormatFigures(AnalyseMesh(mesh)),
        "  vertices             4\n"
        "  faces                4\n"
        "  edges                6\n"
        "  boundary edges       0\n"
        "  non-manifold edges   0\n"
        "  degenerate faces     0\n"
        "  components           1\n"
        "  isolated vertices    0\n"
        "  Euler characteristic 2\n"
        "  lower bound          0 -3 0\n"
        "  upper bound          2 0 4\n");
}

TEST(MeshAnalysisTest, TellsBoundaryFromNonManifoldEdges)
{
    // Three sheets that share the edge 0-1, and a polygon on its own.
    const SMeshFigures figures = AnalyseMesh(ReadMeshText("a.off",
        "OFF\n9 4 0\n0 0 0\n1 0 0\n0 1 0\n0 0 1\n0 -1 0\n5 0 0\n6 0 0\n6 1 0\n5 1 0\n"
        "3 0 1 2\n3 0 1 3\n3 1 0 4\n4 5 6 7 8\n"));
    EXPECT_EQ(figures.edges, 11u);
    EXPECT_EQ(figures.nonManifoldEdges, 1u);
    EXPECT_EQ(figures.boundaryEdges, 10u);
    EXPECT_EQ(figures.components, 2u);
    EXPECT_EQ(figures.eulerCharacteristic, 2);
}

TEST(MeshAnalysisTest, AVertexOfNoFaceIsAComponentOfItsOwn)
{
    const SMeshFigures figures = AnalyseMesh(
        ReadMeshText("a.off", "OFF\n5 1 0\n0 0 0\n1 0 0\n9 9 9\n0 1 0\n8 8 8\n3 0 1 3\n"));
    EXPECT_EQ(figures.isolatedVertices, 2u);
    EXPECT_EQ(figures.components, 3u);
    EXPECT_EQ(figures.eulerCharacteristic, 3); // one for each
    EXPECT_EQ(figures.upperBound, (SPoint{ 9, 9, 9 }));
}

TEST(MeshAnalysisTest, AFaceThatNamesAVertexTwiceIsDegenerate)
{
    const SMeshFigures figures = AnalyseMesh(ReadMeshText(
        "a.off", "OFF\n4 3 0\n0 0 0\n1 0 0\n0 1 0\n1 1 0\n3 0 0 1\n4 0 1 2 1\n3 0 1 3\n"));
    EXPECT_EQ(figures.degenerateFaces, 2u);
    EXPECT_EQ(figures.edges, 5u - 1u); // 0-1, 1-2, 2.. : none from a vertex to itself
}

TEST(MeshAnalysisTest, AnEmptyMeshHasNoBounds)
{
    const std::string text = FormatFigures(AnalyseMesh(Mesh()));
    EXPECT_NE(text.find("components           0\n"), text.npos);
    EXPECT_EQ(text.find("bound "), text.npos);
}

} // namespace
