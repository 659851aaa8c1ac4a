#include "support/bufferbytes.h"
#include "support/testrandom.h"
#include "tamesh/document.h"
#include "tamesh/meshgenerator.h"
#include "tamesh/sessionfixture.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>

namespace {

using namespace tamesh;

/// Random commands on four meshes. A small model knows which of them may fail, and how.
class SessionSoakTest : public SessionFixture
{
protected:
    struct SMesh
    {
        std::string name;
        std::string file;
        unsigned int vertices = 0;
        bool isOpen = false;
        bool isClosing = false; // by a command in the background
        // What the commands that have ended have left there.
        bool hasPath = false;
        bool hasDistance = false;
    };

    SessionSoakTest()
    {
        const Mesh shapes[] = { MakeTorus(16), MakeSphere(8), MakeTerrain(17), MakeTorus(20) };
        for (std::size_t i = 0; i != m_meshes.size(); ++i) {
            SMesh& mesh = m_meshes[i];
            mesh.name = "m" + std::to_string(i);
            mesh.file = "@" + mesh.name + ".off";
            mesh.vertices = shapes[i].GetVertexCount();
            writeMesh(mesh.name + ".off", shapes[i]);
        }
    }

    unsigned int pick(std::size_t count) { return static_cast<unsigned int>(m_random() % count); }
    std::string pickVertex(const SMesh& mesh) { return std::to_string(pick(mesh.vertices)); }
    std::string pickColours(const SMesh& mesh)
    {
        static constexpr std::array kColours{ "height", "curvature", "component", "distance" };
        return kColours.at(pick(mesh.hasDistance ? 4 : 3));
    }
    std::string makeCommand(SMesh& mesh);
    /// Waits for all that goes on, and looks whether it has ended as it may.
    void settle();
    void reopen(SMesh& mesh);
    static std::uint64_t getResidentBytes();

    std::mt19937_64 m_random = MakeTestRandom();
    std::array<SMesh, 4> m_meshes;
    unsigned int m_commands = 0;
};

std::string SessionSoakTest::makeCommand(SMesh& mesh)
{
    const std::string on = " " + mesh.name + " ";
    switch (pick(10)) {
    case 0:
        return "info" + on;
    case 1:
        return "components" + on;
    case 2:
    case 3:
        return "path" + on + "--from " + pickVertex(mesh) + " --to " + pickVertex(mesh);
    case 4:
        return "distance" + on + "--from " + pickVertex(mesh);
    case 5:
        return "colour" + on + "--by " + pickColours(mesh);
    case 6:
        return "picture" + on + "--size 200x150 -o @" + mesh.name + ".png --by " + pickColours(mesh)
            + (mesh.hasPath && pick(2) == 0 ? " --path" : "");
    case 7:
        return "pack" + on + (pick(2) == 0 ? "--lossless" : "--bits 20");
    case 8:
        return "save" + on + "-o @" + mesh.name + ".tadoc";
    default:
        static constexpr std::array kLooks{ "tree", "locks", "queues", "settings" };
        return kLooks.at(pick(kLooks.size()));
    }
}

void SessionSoakTest::settle()
{
    const bool mayFail = std::ranges::any_of(m_meshes, &SMesh::isClosing);
    const EExitCode code = m_session.Wait();
    EXPECT_TRUE(code == eEC_Done || (mayFail && code == eEC_Failed));
    std::istringstream errors(takeErrors());
    for (std::string line; std::getline(errors, line);) {
        const auto isOf = [&](const SMesh& mesh) {
            return mesh.isClosing
                && (line == mesh.name + ": has been closed meanwhile"
                    || line.starts_with(mesh.name + ": no such mesh is open, but: ")
                    || line == mesh.name + ": no mesh is open; 'open FILE' opens one");
        };
        EXPECT_TRUE(std::ranges::any_of(m_meshes, isOf)) << line;
    }
    takeOutput();
    for (SMesh& mesh : m_meshes) {
        if (std::exchange(mesh.isClosing, false)) {
            mesh.isOpen = false;
        }
        if (mesh.isOpen) {
            mesh.hasPath = !node(mesh.name)->FindChild(SPartNames::kPath).IsNull();
            mesh.hasDistance = !node(mesh.name)->FindChild(SPartNames::kDistance).IsNull();
        }
    }
    expectConsistent();
}

/// Saves a mesh, opens the document under another name, and compares.
void SessionSoakTest::reopen(SMesh& mesh)
{
    const auto bytesOf = [&](const std::string& name) {
        return BytesOf([&](auto& stream) { WriteDocument(stream, *node(name)); });
    };
    const auto both = [&](const std::string& before, const std::string& after) {
        const std::string first = answer(before + mesh.name + after);
        const std::string second = answer(before + "copy" + after);
        EXPECT_EQ(first.substr(mesh.name.size()), second.substr(4)) << before << after;
    };
    answer("pack " + mesh.name); // else the vertices of the copy are rounded
    answer("colour " + mesh.name + " --by " + pickColours(mesh)); // keeps its title, with the name
    answer("save " + mesh.name + " -o @copy.tadoc; open @copy.tadoc --as copy");
    const std::string bytes = m_folder.ReadAll("copy.tadoc");
    EXPECT_TRUE(bytesOf("copy") == bytes);
    EXPECT_TRUE(bytesOf(mesh.name) == bytes);
    const std::string view = " --size 200x150" + std::string(mesh.hasPath ? " --path" : "");
    answer("picture " + mesh.name + " -o @1.png" + view);
    answer("picture copy -o @2.png" + view);
    EXPECT_TRUE(m_folder.ReadAll("1.png") == m_folder.ReadAll("2.png"));
    both("path ", " --from " + pickVertex(mesh) + " --to " + pickVertex(mesh));
    both("info ", "");
    answer("close copy");
    m_commands += 10;
}

/// 0 where the system does not say.
std::uint64_t SessionSoakTest::getResidentBytes()
{
    std::uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return pages * 4096;
}

TEST_F(SessionSoakTest, RandomCommandsFailOnlyAsTheyMayAndDocumentsHoldWhatWasSaved)
{
    const char* const wish = std::getenv("TAMESH_SOAK_COMMANDS");
    const unsigned int count
        = wish != nullptr ? static_cast<unsigned int>(std::strtoul(wish, nullptr, 10)) : 500;
    SCOPED_TRACE("TABASE_TEST_SEED=" + std::to_string(GetTestSeed()));
    std::uint64_t early = 0;
    for (m_commands = 0; m_commands < count && !HasFailure(); ++m_commands) {
        SMesh& mesh = m_meshes.at(pick(m_meshes.size()));
        if (!mesh.isOpen || mesh.isClosing) {
            settle();
            if (!mesh.isOpen) {
                answer("open " + mesh.file + " --as " + mesh.name);
                mesh = { mesh.name, mesh.file, mesh.vertices, true };
            }
        }
        const unsigned int kind = pick(100);
        if (kind < 2) {
            mesh.isClosing = true;
            EXPECT_EQ(say("close " + mesh.name + " &"), eEC_Done);
        } else if (kind < 5) {
            settle();
            if (mesh.isOpen) {
                reopen(mesh);
            }
        } else {
            const std::string command = makeCommand(mesh);
            const bool isBackground = pick(3) != 0;
            const EExitCode code = say(command + (isBackground ? " &" : ""));
            EXPECT_EQ(code, eEC_Done) << command;
            if (pick(10) == 0) {
                settle();
            }
        }
        if (early == 0 && m_commands >= count / 4) {
            early = getResidentBytes();
        }
    }
    settle();
    std::cout << m_commands << " commands, seed " << GetTestSeed() << ", resident " << (early >> 10)
              << " KiB after a quarter, " << (getResidentBytes() >> 10) << " KiB at the end\n";
}

} // namespace
