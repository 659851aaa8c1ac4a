#include "tamesh/meshanalysis.h"

#include "tamesh/meshtext.h"

#include <gtest/gtest.h>

namespace {

using namespace tamesh;

TEST(MeshAnalysisTest, CountsWhatATetrahedronHas)
{
    const Mesh mesh = ReadMeshText(
        "a.off", "OFF\n4 4 6\n0 0 0\n2 0 0\n0 -3 0\n0 0 4\n3 0 1 2\n3 0 3 1\n3 1 3 2\n3 2 3 0\n");
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

TEST(MeshAnalysisTest, TellsEdgesFacesAndVerticesThatAreNotSound)
{
    const SMeshFigures figures = AnalyseMesh(ReadMeshText("a.off",
        "OFF\n11 6 0\n0 0 0\n1 0 0\n0 1 0\n0 0 1\n0 -1 0\n5 0 0\n6 0 0\n6 1 0\n5 1 0\n"
        "9 9 9\n8 8 8\n" // of no face: components of their own
        "3 0 1 2\n3 0 1 3\n3 1 0 4\n" // three sheets that share the edge 0-1
        "4 5 6 7 8\n3 5 5 6\n4 5 6 7 6\n")); // a polygon, and degenerate faces along its sides
    EXPECT_EQ(figures.edges, 11u); // none from a vertex to itself
    EXPECT_EQ(figures.nonManifoldEdges, 3u);
    EXPECT_EQ(figures.boundaryEdges, 8u);
    EXPECT_EQ(figures.degenerateFaces, 2u);
    EXPECT_EQ(figures.components, 4u);
    EXPECT_EQ(figures.isolatedVertices, 2u);
    EXPECT_EQ(figures.eulerCharacteristic, 6);
    EXPECT_EQ(figures.upperBound, (SPoint{ 9, 9, 9 }));
}

TEST(MeshAnalysisTest, AnEmptyMeshHasNoBounds)
{
    const std::string text = FormatFigures(AnalyseMesh(ReadMeshText("a.off", "OFF 0 0 0")));
    EXPECT_NE(text.find("components           0\n"), text.npos);
    EXPECT_EQ(text.find("bound "), text.npos);
}

} // namespace
