#include "support/temporaryfolder.h"
#include "tamesh/commands.h"
#include "tamesh/fakeconsole.h"
#include "tamesh/meshgenerator.h"
#include "tamesh/meshgraph.h"
#include "tamesh/meshtext.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace tamesh;

double distanceOf(const Mesh& mesh, std::uint32_t a, std::uint32_t b)
{
    const SPoint& from = mesh.GetVertex(a);
    const SPoint& to = mesh.GetVertex(b);
    return std::sqrt((to.x - from.x) * (to.x - from.x) + (to.y - from.y) * (to.y - from.y)
        + (to.z - from.z) * (to.z - from.z));
}

/// The distances from a vertex, by lowering them along all sides until none can be lowered.
std::vector<double> measureDistances(const Mesh& mesh, std::uint32_t start)
{
    std::vector<double> distances(mesh.GetVertexCount(), std::numeric_limits<double>::infinity());
    distances[start] = 0.0;
    for (bool isDone = false; !isDone;) {
        isDone = true;
        for (std::uint32_t i = 0; i < mesh.GetFaceCount(); ++i) {
            const std::span<const std::uint32_t> face = mesh.GetFace(i);
            for (std::size_t k = 0; k < face.size(); ++k) {
                const std::uint32_t a = face[k];
                const std::uint32_t b = face[(k + 1) % face.size()];
                const double length = distanceOf(mesh, a, b);
                for (const auto& [from, to] : { std::pair(a, b), std::pair(b, a) }) {
                    if (distances[from] + length < distances[to]) {
                        distances[to] = distances[from] + length;
                        isDone = false;
                    }
                }
            }
        }
    }
    return distances;
}

class PathTest : public testing::Test
{
protected:
    void writeMesh(const std::string& text) const
    {
        std::ofstream(m_folder.GetPath("a.off"), std::ios::binary) << text;
    }
    EExitCode find(const VertexName& from, const VertexName& to)
    {
        m_options.from = from;
        m_options.to = to;
        m_console.output.clear();
        m_console.error.clear();
        return FindPath(m_console, m_mesh, m_options);
    }
    std::string name(std::string_view file) const { return (m_folder / file).ToUtf8(); }

    const TemporaryFolder m_folder;
    const std::string m_mesh = name("a.off");
    SPathOptions m_options;
    FakeConsole m_console;
};

TEST_F(PathTest, TheShortestPathsOfAMeshAreThoseOfATextbook)
{
    for (const Mesh& mesh : { MakeTerrain(25), MakeTorus(17), MakeSphere(6) }) {
        writeMesh(WriteMeshText(mesh));
        const std::vector<double> distances = measureDistances(mesh, 3);
        for (const std::uint32_t end :
            { 3u, mesh.GetVertexCount() / 2, mesh.GetVertexCount() - 1 }) {
            ASSERT_EQ(find(3u, end), eEC_Done) << m_console.error;
            std::istringstream words(m_console.output.substr(m_console.output.find("length")));
            std::string word;
            double length = -1.0;
            std::size_t count = 0;
            words >> word >> length >> word >> count >> word;
            EXPECT_NEAR(length, distances[end], 1e-5 * distances[end]);
            double sum = 0.0;
            std::uint32_t vertex = 0;
            std::uint32_t last = 3;
            std::size_t walked = 0;
            while (words >> vertex) {
                sum += distanceOf(mesh, last, vertex);
                last = vertex;
                ++walked;
            }
            EXPECT_EQ(last, end);
            EXPECT_EQ(walked, count);
            EXPECT_NEAR(sum, length, 1e-5 * length);
        }
    }
}

TEST_F(PathTest, WhatIsFoundIsWritten)
{
    // Two squares side by side, and a triangle of its own. One side is there twice.
    writeMesh("OFF\n9 3 0\n0 0 0\n1 0 0\n2 0.5 0\n0 0.9 0\n1 1 0\n2 1.5 0\n8 8 8\n9 8 8\n8 9 8\n"
              "4 0 1 4 3\n4 1 2 5 4\n3 6 7 8\n");
    m_options.pathFile = name("p.obj");
    m_options.graphFile = name("g.dot");
    m_options.pictureFile = name("p.png");
    m_options.picture.size = { 300, 200 };
    ASSERT_EQ(find(SPoint{ -5.0, 0.0, 0.0 }, 5u), eEC_Done) << m_console.error;
    EXPECT_EQ(m_folder.ReadAll("p.obj"), "v 0 0 0\nv 0 0.9 0\nv 1 1 0\nv 2 1.5 0\nl 1 2 3 4\n");
    EXPECT_TRUE(m_console.output.find("\n  path                 0 3 4 5\n") != std::string::npos)
        << m_console.output;
    const std::string graph = m_folder.ReadAll("g.dot");
    EXPECT_EQ(std::count(graph.begin(), graph.end(), '\n'), 2 + 7 + 3);
    EXPECT_EQ(graph.find("graph G {\r\n0 -- "), 0u);
    EXPECT_EQ(m_folder.ReadAll("p.png").substr(1, 3), "PNG");

    ASSERT_EQ(find(4u, 4u), eEC_Done);
    EXPECT_EQ(m_folder.ReadAll("p.obj"), "v 1 1 0\np 1\n");
    EXPECT_TRUE(m_console.output.find("  length               0\n") != std::string::npos);
}

TEST_F(PathTest, WhereThereIsNoPathNothingIsWritten)
{
    writeMesh("OFF\n6 2 0\n0 0 0\n1 0 0\n0 1 0\n5 0 0\n6 0 0\n5 1 0\n3 0 1 2\n3 3 4 5\n");
    m_options.pathFile = name("p.obj");
    EXPECT_EQ(find(0u, 4u), eEC_Failed);
    EXPECT_EQ(m_console.error, m_mesh + ": no path leads from vertex 0 to vertex 4\n");
    EXPECT_EQ(find(0u, 6u), eEC_Failed);
    EXPECT_EQ(m_console.error, m_mesh + ": has no vertex 6; its vertices are 0 to 5\n");
    m_console.interrupt.Set();
    EXPECT_EQ(find(0u, 1u), eEC_Interrupted);
    m_console.interrupt.Reset();
    writeMesh("OFF\n0 0 0\n");
    EXPECT_EQ(find(SPoint(), 0u), eEC_Failed);
    EXPECT_EQ(m_console.error, m_mesh + ": has no vertices\n");
    writeMesh(WriteMeshText(MakeTerrain(40)));
    m_options.graphFile = name("g.dot");
    EXPECT_EQ(find(0u, 1u), eEC_Failed);
    EXPECT_EQ(
        m_console.error, m_mesh + ": has 1681 vertices; a graph is written of at most 1000\n");
    EXPECT_EQ(m_folder.CountFiles(), 1);
}

TEST_F(PathTest, CoordinatesOfAnySizeGiveLengths)
{
    m_options.pictureFile = name("p.png");
    for (const std::string exponent : { "e+300", "e-300", "e-323" }) {
        writeMesh("OFF\n3 1 0\n0 0 0\n5" + exponent + " 0 0\n0 1" + exponent + " 0\n3 0 1 2\n");
        ASSERT_EQ(find(0u, 1u), eEC_Done) << m_console.error;
        EXPECT_TRUE(
            m_console.output.find("  length               5" + exponent) != std::string::npos)
            << m_console.output;
    }
    writeMesh("OFF\n3 1 0\n2 2 2\n2 2 2\n2 2 2\n3 0 1 2\n"); // all in one place
    ASSERT_EQ(find(0u, 2u), eEC_Done) << m_console.error;
    writeMesh("OFF\n3 1 0\n0 0 0\n5e-324 0 0\n0 5e-324 0\n3 0 1 2\n");
    ASSERT_EQ(find(0u, SPoint{ 1e308, 0, 0 }), eEC_Done) << m_console.error;
    EXPECT_TRUE(m_console.output.find("  length               5e-324\n") != std::string::npos)
        << m_console.output;
}

TEST(VertexNameTest, OfPointsThatAreFarAwayTheNearestVertexIsFoundToo)
{
    for (const double size : { 5e-324, 1.0, 1.79e308 }) {
        Mesh mesh;
        for (const auto& [x, y] :
            { std::pair(0.0, 0.0), { 1.0, 0.0 }, { 0.0, 1.0 }, { -1.0, 0.0 }, { 0.0, 1.0 } }) {
            mesh.AddVertex({ x * size, y * size, 0.0 });
        }
        for (const double distance : { size, 3 * size, 1e9 * size, 1e17 * size, 1e308 }) {
            if (std::isfinite(distance)) {
                EXPECT_EQ(FindVertex(mesh, SPoint{ distance, 0, 0 }), 1u) << size << distance;
                EXPECT_EQ(FindVertex(mesh, SPoint{ 0, distance, 0 }), 2u) << size << distance;
                EXPECT_EQ(FindVertex(mesh, SPoint{ -distance, 0, 0 }), 3u) << size << distance;
            }
        }
        EXPECT_EQ(FindVertex(mesh, SPoint{ 0, 0, 1e308 }), 0u) << size;
    }
}

} // namespace
