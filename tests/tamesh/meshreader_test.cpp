#include "tamesh/meshreader.h"

#include "support/bufferbytes.h"
#include "tamesh/meshfailure.h"
#include "tamesh/meshtext.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace tamesh;

/// The bytes of a binary STL file that begins with `head`.
std::string makeSTL(std::string head, const std::vector<std::array<float, 9>>& triangles)
{
    head.resize(80, ' ');
    return head + BytesOf([&](auto& stream) {
        stream << static_cast<unsigned int>(triangles.size());
        for (const auto& triangle : triangles) {
            stream << 0.0f << 0.0f << 0.0f; // a normal
            for (const float value : triangle) {
                stream << value;
            }
            stream << static_cast<unsigned short>(0); // an attribute
        }
    });
}

const std::string kFacet = "facet normal nan nan nan\nouter loop\nvertex 0 0 -0\n"
                           "vertex 1.5 0 0\nvertex 0 -2 .001\nendloop\nendfacet\n";

const std::string kMark = "\xEF\xBB\xBF"; // of the byte order

const std::pair<const char*, std::string> kFormsOfATriangle[] = {
    { "a.off", "OFF\n3 1 0\n0 0 0\n1.5 0 0\n0 -2 0.001\n3 0 1 2\n" },
    // comments, blank lines, counts on the first line, signs, CR LF, no last line end; numbers that
    // are too small for a double
    { "a.OFF",
        kMark
            + "# made by hand\r\n\r\nOFF 3 1\r\n0 0 0 # first\r\n\r\n+15e-1\t1e-999 1e-400\r\n"
              "  0 -2. 1E-3  \r\n3  0 1 2" },
    // CR alone, vertex colours, a face colour
    { "a.off",
        "STCNOFF\r3 1 0\r0 0 0 255 0 0 1\r1.5 0 0 1 1 1 1\r0 -2 .001 9 9 9 9\r3 0 1 2 7 7 7\r" },
    { "a.obj",
        "# x\nmtllib a.mtl\no thing\nv 0 0 0\nv 1.5 0 0 1.0\nv 0 -2 0.001\nvt 0 0\n"
        "vn 0 0 1\nusemtl m\ns off\nf 1 2 3\n" },
    // texture and normal indices, negative ones, a line that goes on
    { "a.Obj", "v 0 0 0\nv 1.5 0 0\nv 0 -2 \\\n0.001\nf 1/1 -2//7 \\\r\n3/1/-1\n" },
    // a line that goes on in a blank one, or in a comment, and ends there
    { "a.obj", "v 0 0 0\nv 1.5 0 0 \\\n\nv 0 -2 .001\nf 1 2 3 \\\n# x\nvn 0 0 1 \\" },
    // a face before its vertices
    { "a.obj", "f 1 2 3\nv 0 0 0\nv 1.5 0 0\nv 0 -2 0.001" },
    { "a.stl", kMark + "solid\n" + kFacet + "endsolid\n" },
    { "a.stl",
        "  SOLID # 1\r\n\r\n\tFacet Normal 0 0 1\nOUTER LOOP\nVertex 0 0 0\n"
        "vertex 1.5 0 0\nvertex 0 -2 1e-3\nENDLOOP\nEndFacet\nendsolid # 1" },
    { "a.stl", "solid a\n" + kFacet + "endsolid a\nsolid b\nendsolid b\n" },
};

TEST(MeshReaderTest, EveryFormOfATriangleIsRead)
{
    for (const auto& [name, content] : kFormsOfATriangle) {
        EXPECT_EQ(WriteMeshText(ReadMeshText(name, content)), kFormsOfATriangle[0].second)
            << content;
    }
}

TEST(MeshReaderTest, BinarySTLIsToldFromTextByItsSizeAndItsEqualPositionsAreMerged)
{
    // Its head is the word that begins text. -0 equals 0.
    const Mesh mesh = ReadMeshText("a.stl",
        makeSTL("solid by another program",
            { { 0, 0, 0, 1, 0, 0, 0, 1, 0 }, { 1, 0, 0, 1, 1, 0, -0.0f, 1, 0 } }));
    EXPECT_EQ(WriteMeshText(mesh), "OFF\n4 2 0\n0 0 0\n1 0 0\n0 1 0\n1 1 0\n3 0 1 2\n3 1 3 2\n");
    EXPECT_EQ(ReadMeshText("a.stl", makeSTL("", {})).GetFaceCount(), 0u);

    std::vector<std::array<float, 9>> strip;
    for (float x = 0; x < 1000; ++x) {
        strip.push_back({ x, 0, 0, x + 1, 0, 0, 0.5f, 1, 0 });
    }
    EXPECT_EQ(ReadMeshText("a.stl", makeSTL("", strip)).GetVertexCount(), 1002u);
}

struct SFault
{
    std::string content;
    const char* report; // behind the name
};

const std::string kTwo = "OFF\n3 1 0\n0 0 0\n1 0 0\n";
const std::string kThree = kTwo + "0 1 0\n";

const std::vector<SFault> kFaultsOfOFF{
    { "", ":1: the file is empty; an OFF file begins with the keyword OFF" },
    { { "\x7F\x45LF\x02\x00\n", 7 },
        ":1: an OFF file begins with the keyword OFF, not with \"?ELF??\"" },
    { "# c\n4OFF\n1 0 0\n",
        ":2: the vertices of a file that begins with \"4OFF\" do not have three coordinates" },
    { "OFF BINARY\n", ":1: binary OFF files are not read; save the mesh as text" },
    { "OFF\n", ":1: the file ends before the numbers of vertices and faces" },
    { "OFF\n-3 1 0\n", ":2: the number of vertices is \"-3\", which is negative" },
    { "OFF\n4294967296 1 0\n",
        ":2: the number of vertices is 4294967296, more than a mesh can have" },
    // A huge count takes no memory before the data comes.
    { "OFF\n4294967295 4294967295 0\n0 0 0\n", ":3: the file ends after 1 of 4294967295 vertices" },
    { kTwo + "0 1,5 0\n", ":5: the y coordinate was expected, but \"1,5\" is no number" },
    { kTwo + "0 1\n", ":5: the z coordinate is missing" },
    { kTwo + "1e999 1 0\n", ":5: the x coordinate is \"1e999\", which is not a finite number" },
    { kTwo + "0 1 nan\n", ":5: the z coordinate is \"nan\", which is not a finite number" },
    { kTwo + "0 1 0 red\n", ":5: a number was expected, but \"red\" is no number" },
    { kThree + "2 0 1\n", ":6: a face has at least 3 corners, not 2" },
    { kThree + "18446744073709551615 0 1 2\n",
        ":6: the face has 18446744073709551615 corners, but only 3 follow" },
    { kThree + "3 0 1 2.0\n", ":6: a vertex index was expected, but \"2.0\" is no whole number" },
    { kThree + "3 0 1 3\n", ":6: the face names vertex 3, but the 3 vertices count from 0" },
    { kThree + "\n3 0 1 2\n\n3 0 1 2\n",
        ":9: the header announces 3 vertices and 1 faces, but here is one more line" },
};

const std::string kPoint = "v 0 0 0\n";

const std::vector<SFault> kFaultsOfOBJ{
    { "hello\n", ": there is no vertex (a line that begins with v) in it" },
    { kPoint + "f 0 1 1\n", ":2: the face names vertex 0, but vertices count from 1" },
    { kPoint + "f 1 1 -2\n", ":2: the face names vertex -2, but there are 1 before it" },
    { kPoint + "\nf \\\n1 \\\n\n1 1 1\n", ":3: a face has at least 3 corners, not 1" },
    { "f 1 2 1\n" + kPoint + "f 3 1 1\n", ":1: the face names vertex 2, but there are only 1" },
    { kPoint + "f 1 1 99999999999999999999\n",
        ":2: a vertex index is \"99999999999999999999\", which is out of range" },
    { kPoint + "f 1 1 9999999999\n",
        ":2: the face names vertex 9999999999, but there are 1 before it" },
    { kPoint + "f 1 1 1/x\n", ":2: an index was expected, but \"x\" is no number" },
    { kPoint + "f 1 1 1/1/1/1\n",
        ":2: a corner is \"1/1/1/1\", which has more than three indices" },
};

constexpr float kInfinity = std::numeric_limits<float>::infinity();

const std::vector<SFault> kFaultsOfSTL{
    { "", ": no STL file: a text file begins with \"solid\", a binary file has at least 84 bytes" },
    { makeSTL("solid", { { 0, 0, 0, 1, 0, 0, 0, 1, 0 } }).substr(0, 133),
        ": no STL file: a text file begins with \"solid\", and a binary file of 1 triangles "
        "has 134 bytes, not 133" },
    { makeSTL("", { { 0, 0, 0, kInfinity, 0, 0, 0, 1, 0 } }),
        ": a coordinate of triangle 0 (counted from 0) is not a finite number" },
    { "solid\nfacet\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nendloop\n",
        ":6: \"vertex\" was expected, but the line is \"endloop\"" },
    { "solid\n" + kFacet, ":8: the file ends where \"endsolid\" was expected" },
};

void expectReports(const std::string& name, const std::vector<SFault>& faults)
{
    for (const SFault& fault : faults) {
        try {
            ReadMeshText(name, fault.content);
            ADD_FAILURE() << "was read, without: " << fault.report;
        } catch (const MeshFailure& failure) {
            EXPECT_EQ(failure.GetReport(), name + fault.report);
        }
    }
}

TEST(MeshReaderTest, FaultsAreReportedWithTheirLine)
{
    expectReports("a.off", kFaultsOfOFF);
    expectReports("a.obj", kFaultsOfOBJ);
    expectReports("a.stl", kFaultsOfSTL);
    expectReports(".off",
        { { "OFF 0 0 0", ": unknown format; the name of a mesh ends in .off, .obj or .stl" } });
}

} // namespace
