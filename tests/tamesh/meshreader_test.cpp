#include "tamesh/meshreader.h"

#include "tamesh/meshfailure.h"
#include "tamesh/testinput.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <vector>

namespace {

using namespace tamesh;

std::vector<std::vector<std::uint32_t>> getFaces(const Mesh& mesh)
{
    std::vector<std::vector<std::uint32_t>> faces;
    for (std::uint32_t i = 0; i < mesh.GetFaceCount(); ++i) {
        const auto face = mesh.GetFace(i);
        faces.emplace_back(face.begin(), face.end());
    }
    return faces;
}

const std::vector<std::vector<std::uint32_t>> kTriangle{ { 0, 1, 2 } };

struct SGoodInput
{
    const char* name;
    std::string content;

    friend std::ostream& operator<<(std::ostream& out, const SGoodInput& input)
    {
        return out << input.name;
    }
};

class MeshReaderGoodInputTest : public testing::TestWithParam<SGoodInput>
{
};

/// Every form below is the triangle (0 0 0), (1.5 0 0), (0 -2 1e-3).
TEST_P(MeshReaderGoodInputTest, IsTheTriangle)
{
    const Mesh mesh = ReadMeshText(GetParam().name, GetParam().content);
    ASSERT_EQ(mesh.GetVertexCount(), 3u);
    EXPECT_EQ(mesh.GetVertex(0), (SPoint{ 0.0, 0.0, 0.0 }));
    EXPECT_EQ(mesh.GetVertex(1), (SPoint{ 1.5, 0.0, 0.0 }));
    EXPECT_EQ(mesh.GetVertex(2), (SPoint{ 0.0, -2.0, 1e-3 }));
    EXPECT_EQ(getFaces(mesh), kTriangle);
}

const std::string kFacet = "facet normal nan nan nan\nouter loop\nvertex 0 0 -0\n"
                           "vertex 1.5 0 0\nvertex 0 -2 .001\nendloop\nendfacet\n";

INSTANTIATE_TEST_SUITE_P(Forms, MeshReaderGoodInputTest,
    testing::Values(SGoodInput{ "a.off", "OFF\n3 1 0\n0 0 0\n1.5 0 0\n0 -2 0.001\n3 0 1 2\n" },
        // comments, blank lines, counts on the first line, signs, CR LF, no last line end
        SGoodInput{ "a.OFF",
            "# made by hand\r\n\r\nOFF 3 1\r\n0 0 0 # first\r\n\r\n+15e-1\t0 -0\r\n"
            "  0 -2. 1E-3  \r\n3  0 1 2" },
        // CR alone, vertex colours, a face colour
        SGoodInput{ "a.off",
            "COFF\r3 1 0\r0 0 0 255 0 0 1\r1.5 0 0 1 1 1 1\r0 -2 .001 9 9 9 9\r3 0 1 2 7 7 7\r" },
        SGoodInput{ "a.off", "STCNOFF\n3 1 0\n0 0 0 1\n1.5 0 0 1\n0 -2 .001 1\n3 0 1 2\n" },
        SGoodInput{ "a.obj",
            "# x\nmtllib a.mtl\no thing\nv 0 0 0\nv 1.5 0 0 1.0\nv 0 -2 0.001\nvt 0 0\nvn 0 0 1\n"
            "usemtl m\ns off\nf 1 2 3\n" },
        // texture and normal indices, negative ones, a line that goes on
        SGoodInput{ "a.Obj", "v 0 0 0\nv 1.5 0 0\nv 0 -2 \\\n0.001\nf 1/1 -2//7 \\\r\n3/1/-1\n" },
        // a line that goes on in a blank one, or in a comment, and ends there
        SGoodInput{ "a.obj", "v 0 0 0\nv 1.5 0 0 \\\n\nv 0 -2 .001\nf 1 2 3 \\\n# x\nvn 0 0 1 \\" },
        // a face before its vertices
        SGoodInput{ "a.obj", "f 1 2 3\nv 0 0 0\nv 1.5 0 0\nv 0 -2 0.001" },
        SGoodInput{ "a.stl", "solid\n" + kFacet + "endsolid\n" },
        SGoodInput{ "a.stl",
            "  SOLID # 1\r\n\r\n\tFacet Normal 0 0 1\nOUTER LOOP\nVertex 0 0 0\n"
            "vertex 1.5 0 0\nvertex 0 -2 1e-3\nENDLOOP\nEndFacet\nendsolid # 1" },
        // a byte order mark
        SGoodInput{ "a.off", "\xEF\xBB\xBFOFF 3 1\n0 0 0\n1.5 0 0\n0 -2 0.001\n3 0 1 2\n" },
        SGoodInput{ "a.obj", "\xEF\xBB\xBFv 0 0 0\nv 1.5 0 0\nv 0 -2 0.001\nf 1 2 3\n" },
        SGoodInput{ "a.stl", "\xEF\xBB\xBFsolid\n" + kFacet + "endsolid\n" },
        SGoodInput{ "a.stl", "solid a\n" + kFacet + "endsolid a\nsolid b\nendsolid b\n" }));

TEST(MeshReaderTest, TakesPolygonsOfAnySizeAndKeepsTheirOrder)
{
    const Mesh mesh = ReadMeshText(
        "a.off", "OFF\n5 2 0\n0 0 0\n1 0 0\n2 1 0\n1 2 0\n0 1 0\n5 4 3 2 1 0\n3 0 2 4\n");
    EXPECT_EQ(getFaces(mesh),
        (std::vector<std::vector<std::uint32_t>>{ { 4, 3, 2, 1, 0 }, { 0, 2, 4 } }));
    EXPECT_EQ(mesh.GetCornerCount(), 8u);

    const Mesh empty = ReadMeshText("a.off", "OFF 0 0 0");
    EXPECT_EQ(empty.GetVertexCount(), 0u);
    EXPECT_EQ(empty.GetFaceCount(), 0u);
}

TEST(MeshReaderTest, BinarySTLIsToldFromTextByItsSize)
{
    STLBytes stl("solid by another program"); // the word that begins text
    stl.AddTriangle({ 0, 0, 0, 1, 0, 0, 0, 1, 0 });
    stl.AddTriangle({ 1, 0, 0, 1, 1, 0, -0.0f, 1, 0 });
    const Mesh mesh = ReadMeshText("a.stl", stl.GetBytes());
    EXPECT_EQ(mesh.GetVertexCount(), 4u); // equal positions are one vertex, -0 equals 0
    EXPECT_EQ(
        getFaces(mesh), (std::vector<std::vector<std::uint32_t>>{ { 0, 1, 2 }, { 1, 3, 2 } }));

    EXPECT_EQ(ReadMeshText("a.stl", STLBytes("").GetBytes()).GetFaceCount(), 0u);
}

TEST(MeshReaderTest, MergesManyEqualPositionsOfSTL)
{
    STLBytes stl("grid");
    for (int i = 0; i < 1000; ++i) {
        const auto x = static_cast<float>(i);
        stl.AddTriangle({ x, 0, 0, x + 1, 0, 0, 0.5f, 1, 0 });
    }
    EXPECT_EQ(ReadMeshText("a.stl", stl.GetBytes()).GetVertexCount(), 1002u);
}

TEST(MeshReaderTest, NumbersTooSmallForADoubleAreZero)
{
    const Mesh mesh = ReadMeshText("a.off", "OFF\n1 0\n1e-999 4.9e-324 -1e-400\n");
    EXPECT_EQ(mesh.GetVertex(0).x, 0.0);
    EXPECT_EQ(mesh.GetVertex(0).y, std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(mesh.GetVertex(0).z, 0.0);
}

struct SBadInput
{
    const char* name;
    std::string content;
    const char* report;

    friend std::ostream& operator<<(std::ostream& out, const SBadInput& input)
    {
        return out << input.report;
    }
};

class MeshReaderBadInputTest : public testing::TestWithParam<SBadInput>
{
};

TEST_P(MeshReaderBadInputTest, IsReportedWithItsLine)
{
    try {
        ReadMeshText(GetParam().name, GetParam().content);
        ADD_FAILURE() << "was read";
    } catch (const MeshFailure& failure) {
        EXPECT_EQ(failure.GetReport(), GetParam().report);
    }
}

const std::string kTwoPoints = "OFF\n3 1 0\n0 0 0\n1 0 0\n";
const std::string kThreePoints = kTwoPoints + "0 1 0\n";

INSTANTIATE_TEST_SUITE_P(OFF, MeshReaderBadInputTest,
    testing::Values(SBadInput{ "a.off", "",
                        "a.off:1: the file is empty; an OFF file begins with the keyword OFF" },
        SBadInput{ "a.off",
            std::string("\x7F"
                        "ELF\x02\x00\n",
                7),
            "a.off:1: an OFF file begins with the keyword OFF, not with \"?ELF??\"" },
        SBadInput{ "a.off", "# c\n4OFF\n1 0 0\n",
            "a.off:2: the vertices of a file that begins with \"4OFF\" do not have three "
            "coordinates" },
        SBadInput{ "a.off", "OFF BINARY\n",
            "a.off:1: binary OFF files are not read; save the mesh as text" },
        SBadInput{
            "a.off", "OFF\n", "a.off:1: the file ends before the numbers of vertices and faces" },
        SBadInput{ "a.off", "OFF\n-3 1 0\n",
            "a.off:2: the number of vertices is \"-3\", which is negative" },
        SBadInput{ "a.off", "OFF\n4294967296 1 0\n",
            "a.off:2: the number of vertices is 4294967296, more than a mesh can have" },
        // A huge count takes no memory before the data comes.
        SBadInput{ "a.off", "OFF\n4294967295 4294967295 0\n0 0 0\n",
            "a.off:3: the file ends after 1 of 4294967295 vertices" },
        SBadInput{ "a.off", kTwoPoints + "0 1,5 0\n",
            "a.off:5: the y coordinate was expected, but \"1,5\" is no number" },
        SBadInput{ "a.off", kTwoPoints + "0 1\n", "a.off:5: the z coordinate is missing" },
        SBadInput{ "a.off", kTwoPoints + "1e999 1 0\n",
            "a.off:5: the x coordinate is \"1e999\", which is not a finite number" },
        SBadInput{ "a.off", kTwoPoints + "0 1 nan\n",
            "a.off:5: the z coordinate is \"nan\", which is not a finite number" },
        SBadInput{ "a.off", kTwoPoints + "0 1 0 red\n",
            "a.off:5: a number was expected, but \"red\" is no number" },
        SBadInput{ "a.off", kThreePoints, "a.off:5: the file ends after 0 of 1 faces" },
        SBadInput{
            "a.off", kThreePoints + "2 0 1\n", "a.off:6: a face has at least 3 corners, not 2" },
        SBadInput{ "a.off", kThreePoints + "18446744073709551615 0 1 2\n",
            "a.off:6: the face has 18446744073709551615 corners, but only 3 follow" },
        SBadInput{ "a.off", kThreePoints + "3 0 1 3\n",
            "a.off:6: the face names vertex 3, but the 3 vertices count from 0" },
        SBadInput{ "a.off", kThreePoints + "\n3 0 1 2\n\n3 0 1 2\n",
            "a.off:9: the header announces 3 vertices and 1 faces, but here is one more line" }));

INSTANTIATE_TEST_SUITE_P(OBJ, MeshReaderBadInputTest,
    testing::Values(SBadInput{ "a.obj", "hello\n",
                        "a.obj: there is no vertex (a line that begins with v) in it" },
        SBadInput{ "a.obj", "v 0 0 0\nf 0 1 1\n",
            "a.obj:2: the face names vertex 0, but vertices count from 1" },
        SBadInput{ "a.obj", "v 0 0 0\nf 1 1 -2\n",
            "a.obj:2: the face names vertex -2, but there are 1 before it" },
        SBadInput{ "a.obj", "v 0 0 0\n\nf \\\n1 \\\n\n1 1 1\n",
            "a.obj:3: a face has at least 3 corners, not 1" },
        SBadInput{ "a.obj", "f 1 2 1\nv 0 0 0\nf 3 1 1\n",
            "a.obj:1: the face names vertex 2, but there are only 1" },
        SBadInput{ "a.obj", "v 0 0 0\nf 1 1 99999999999999999999\n",
            "a.obj:2: a vertex index is \"99999999999999999999\", which is out of range" },
        SBadInput{ "a.obj", "v 0 0 0\nf 1 1 9999999999\n",
            "a.obj:2: the face names vertex 9999999999, but there are 1 before it" },
        SBadInput{ "a.obj", "v 0 0 0\nf 1 1 1/x\n",
            "a.obj:2: an index was expected, but \"x\" is no number" },
        SBadInput{ "a.obj", "v 0 0 0\nf 1 1 1/1/1/1\n",
            "a.obj:2: a corner is \"1/1/1/1\", which has more than three indices" }));

std::string cutTriangle()
{
    STLBytes stl("solid");
    stl.AddTriangle({ 0, 0, 0, 1, 0, 0, 0, 1, 0 });
    return stl.GetBytes().substr(0, 133);
}

std::string infiniteTriangle()
{
    STLBytes stl("");
    stl.AddTriangle({ 0, 0, 0, std::numeric_limits<float>::infinity(), 0, 0, 0, 1, 0 });
    return stl.GetBytes();
}

INSTANTIATE_TEST_SUITE_P(STL, MeshReaderBadInputTest,
    testing::Values(SBadInput{ "a.stl", "",
                        "a.stl: no STL file: a text file begins with \"solid\", a binary file"
                        " has at least 84 bytes" },
        SBadInput{ "a.stl", cutTriangle(),
            "a.stl: no STL file: a text file begins with \"solid\", and a binary file of 1 "
            "triangles"
            " has 134 bytes, not 133" },
        SBadInput{ "a.stl", infiniteTriangle(),
            "a.stl: a coordinate of triangle 0 (counted from 0) is not a finite number" },
        SBadInput{ "a.stl", "solid\nfacet\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nendloop\n",
            "a.stl:6: \"vertex\" was expected, but the line is \"endloop\"" },
        SBadInput{
            "a.stl", "solid\n" + kFacet, "a.stl:8: the file ends where \"endsolid\" was expected" },
        SBadInput{ "a.ply", "ply\n",
            "a.ply: unknown format; the name of a mesh ends in .off, .obj or .stl" },
        SBadInput{ ".off", "OFF 0 0 0",
            ".off: unknown format; the name of a mesh ends in .off, .obj or .stl" }));

} // namespace
