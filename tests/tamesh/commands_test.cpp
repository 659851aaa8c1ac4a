#include "tamesh/commands.h"

#include "support/temporaryfolder.h"
#include "tabase/tastreamwritebinarybuffer.h"
#include "tamesh/fakeconsole.h"

#include <gtest/gtest.h>

namespace {

using namespace tamesh;

const char* const kTetrahedron
    = "OFF\n4 4 6\n0 0 0\n1 0 0\n0 1 0\n0 0 1\n3 0 2 1\n3 0 1 3\n3 1 2 3\n3 2 0 3\n";

class CommandsTest : public testing::Test
{
protected:
    std::string name(std::string_view file) const { return m_folder.GetPath(file).string(); }

    TemporaryFolder m_folder;
    FakeConsole m_console;
};

TEST_F(CommandsTest, ADocumentShowsTheFiguresOfItsMesh)
{
    m_folder.WriteAll("a.off", kTetrahedron);
    EXPECT_EQ(ShowMeshes(m_console, { name("a.off") }), eEC_Done);
    const std::string figures = m_console.output.substr(m_console.output.find('\n'));
    EXPECT_NE(figures.find("Euler characteristic 2"), figures.npos);

    EXPECT_EQ(PackMesh(m_console, name("a.off"), name("a.tadoc")), eEC_Done);
    m_console.output.clear();
    EXPECT_EQ(ShowDocuments(m_console, { name("a.tadoc") }), eEC_Done);
    EXPECT_EQ(m_console.output, name("a.tadoc") + " (document)" + figures);
    EXPECT_EQ(m_console.error, "");
}

TEST_F(CommandsTest, ABadMeshLeavesTheOldDocumentAndNothingElse)
{
    m_folder.WriteAll("bad.off", "OFF\n1 1 0\n0 0 0\n3 0 0 1\n");
    m_folder.WriteAll("a.tadoc", "what was there before");
    EXPECT_EQ(PackMesh(m_console, name("bad.off"), name("a.tadoc")), eEC_Failed);
    EXPECT_EQ(m_folder.ReadAll("a.tadoc"), "what was there before");
    EXPECT_EQ(m_console.error,
        name("bad.off") + ":4: the face names vertex 1, but the 1 vertices count from 0\n");

    EXPECT_EQ(MakeMesh(m_console, eS_Torus, 5, name("no/folder.off")), eEC_Failed);
    const auto files = std::filesystem::directory_iterator(m_folder.GetPath(""));
    EXPECT_EQ(std::distance(begin(files), end(files)), 2);
}

TEST_F(CommandsTest, WhatCannotBeReadIsReportedByItsName)
{
    std::filesystem::create_directory(m_folder.GetPath("folder.off"));
    EXPECT_EQ(ShowMeshes(m_console, { name("folder.off") }), eEC_Failed);
    EXPECT_EQ(m_console.error, name("folder.off") + ": is a folder, not a file\n");

    m_console.error.clear();
    EXPECT_EQ(ShowDocuments(m_console, { name("missing.tadoc") }), eEC_Failed);
    EXPECT_TRUE(m_console.error.starts_with(name("missing.tadoc") + ": cannot open: "))
        << m_console.error;
}

TEST_F(CommandsTest, ANameThatIsNoTextIsNotTakenForAnother)
{
    m_folder.WriteAll("a.off", kTetrahedron);
    const std::string report = ": the name is not valid in the system's code page\n";
    EXPECT_EQ(PackMesh(m_console, name("a.off"), name("") + "\xFF.tadoc"), eEC_Failed);
    EXPECT_EQ(m_console.error, name("") + "\xFF.tadoc" + report);
    EXPECT_EQ(ShowMeshes(m_console, { "\xFF.off" }), eEC_Failed);
    EXPECT_TRUE(m_console.error.ends_with("\n\xFF.off" + report)) << m_console.error;
    const auto files = std::filesystem::directory_iterator(m_folder.GetPath(""));
    EXPECT_EQ(std::distance(begin(files), end(files)), 1);
}

TEST_F(CommandsTest, WhatADocumentSaysReachesNoTerminalUnchanged)
{
    m_folder.WriteAll("a.off", kTetrahedron);
    ASSERT_EQ(PackMesh(m_console, name("a.off"), name("a.tadoc")), eEC_Done);
    constexpr std::size_t kHeadSize = 16; // all before the name of the class
    TaStreamWriteBinaryBuffer document;
    document.WriteBuffer(m_folder.ReadAll("a.tadoc").data(), kHeadSize);
    document << CString(u"\x1B[2J" + std::u16string(1000, u'x'));
    m_folder.WriteAll(
        "b.tadoc", { reinterpret_cast<const char*>(document.GetData()), document.GetSize() });
    EXPECT_EQ(ShowDocuments(m_console, { name("b.tadoc") }), eEC_Failed);
    EXPECT_NE(m_console.error.find("?[2Jxxx"), m_console.error.npos) << m_console.error;
    EXPECT_EQ(m_console.error.find('\x1B'), m_console.error.npos);
    EXPECT_LT(m_console.error.size(), 500u);
}

TEST_F(CommandsTest, EveryLongStepSaysHowFarItIs)
{
    m_console.pace = 1000;
    const auto expectSteps = [this](std::initializer_list<const char*> steps) {
        for (const char* step : steps) {
            EXPECT_NE(m_console.error.find(step), std::string::npos) << step << " is missing in:\n"
                                                                     << m_console.error;
        }
        m_console.error.clear();
    };
    const std::string mesh = name("a.off");
    const std::string document = name("a.tadoc");
    EXPECT_EQ(MakeMesh(m_console, eS_Terrain, 200, mesh), eEC_Done);
    expectSteps({ "making", "writing" });
    EXPECT_EQ(ShowMeshes(m_console, { mesh }), eEC_Done);
    expectSteps({ "reading", "analysing" });
    EXPECT_EQ(PackMesh(m_console, mesh, document), eEC_Done);
    expectSteps({ "reading", "writing" });
    EXPECT_EQ(ShowDocuments(m_console, { document }), eEC_Done);
    expectSteps({ "reading", "analysing" });
}

} // namespace
