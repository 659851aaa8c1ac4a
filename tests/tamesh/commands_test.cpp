#include "tamesh/commands.h"

#include "support/temporaryfolder.h"
#include "tabase/tadatanodes.h"
#include "tabase/tafilesystem.h"
#include "tamesh/documentbytes.h"
#include "tamesh/fakeconsole.h"
#include "tamesh/meshgenerator.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace tamesh;

class CommandsTest : public testing::Test
{
protected:
    std::string name(std::string_view file) const { return (m_folder / file).ToUtf8(); }

    const TemporaryFolder m_folder;
    const std::string m_mesh = name("a.off");
    const std::string m_document = name("a.tadoc");
    FakeConsole m_console;
};

TEST_F(CommandsTest, AnInterruptEndsWhateverIsDoneAndWritesNothing)
{
    ASSERT_EQ(MakeMesh(m_console, eS_Sphere, 30, m_mesh), eEC_Done);
    ASSERT_EQ(PackMesh(m_console, m_mesh, m_document), eEC_Done);
    m_console.interrupt.Set();
    EXPECT_EQ(ShowMeshes(m_console, { m_mesh, m_mesh }), eEC_Interrupted);
    EXPECT_EQ(m_console.error, m_mesh + ": interrupted\n"); // the second is not begun
    EXPECT_EQ(ShowDocuments(m_console, { m_document }), eEC_Interrupted);
    const std::string other = name("b.tadoc");
    EXPECT_EQ(PackMesh(m_console, m_mesh, other), eEC_Interrupted);
    EXPECT_EQ(MakeMesh(m_console, eS_Terrain, 50, name("c.off")), eEC_Interrupted);
    EXPECT_EQ(PictureMesh(m_console, m_mesh, eC_Height, name("a.png")), eEC_Interrupted);
    EXPECT_EQ(m_console.output, "");
    EXPECT_EQ(m_folder.CountFiles(), 2);
}

TEST_F(CommandsTest, ANameThatIsNoTextIsNotTakenForAnother)
{
    ASSERT_EQ(MakeMesh(m_console, eS_Sphere, 3, m_mesh), eEC_Done);
    const std::string report = ": the name is not valid UTF-8\n";
    EXPECT_EQ(PackMesh(m_console, m_mesh, name("") + "\xFF.tadoc"), eEC_Failed);
    EXPECT_EQ(m_console.error, name("") + "\xFF.tadoc" + report);
    EXPECT_EQ(ShowMeshes(m_console, { "\xFF.off" }), eEC_Failed);
    EXPECT_TRUE(m_console.error.ends_with("\n\xFF.off" + report)) << m_console.error;
    EXPECT_EQ(m_folder.CountFiles(), 1);
}

#if !defined(_WIN32)
TEST_F(CommandsTest, ARecordingStaysInItsFolderWhateverItsMeshIsCalled)
{
    std::filesystem::create_directories(m_folder.GetPath("recordings/TaMeshStatistics"));
    TaFileSystem::SetSpecialDirectory(TaFileSystem::eSD_UnitTests, m_folder / "recordings");
    const std::string mesh = name("..\\..\\a.off");
    ASSERT_EQ(MakeMesh(m_console, eS_Sphere, 3, mesh), eEC_Done);
    EXPECT_EQ(ShowMeshes(m_console, { mesh }, { .isRecorded = true }), eEC_Done);
    TaFileSystem::SetSpecialDirectory(TaFileSystem::eSD_UnitTests, u"");
    EXPECT_FALSE(std::filesystem::exists(m_folder.GetPath("a.dat")));
    EXPECT_TRUE(
        std::filesystem::exists(m_folder.GetPath("recordings/TaMeshStatistics/.._.._a.dat")));
}
#endif

TEST_F(CommandsTest, WhatADamagedDocumentHoldsReachesNoTerminalUnchanged)
{
    ASSERT_EQ(MakeMesh(m_console, eS_Sphere, 3, m_mesh), eEC_Done);
    ASSERT_EQ(PackMesh(m_console, m_mesh, m_document), eEC_Done);
    const std::string payload = BytesOf([&](auto& stream) {
        stream << CString(u"a") << 0u << 1u; // a part with one node
        stream << 0u << CString(u"b") << static_cast<unsigned char>(4);
        stream << CString(u"\x1B[2J" + std::u16string(1000, u'x')); // its class
    });
    m_folder.WriteAll("a.tadoc", BytesOf([&](auto& stream) {
        DocumentWriter document;
        document.AddStored(u"a", AsBytes(payload));
        document.Write(stream);
    }));
    EXPECT_EQ(ShowDocuments(m_console, { m_document }), eEC_Failed);
    EXPECT_TRUE(m_console.error.starts_with(m_document + ": TuException at ")) << m_console.error;
    EXPECT_NE(m_console.error.find("?[2Jxxx"), m_console.error.npos) << m_console.error;
    EXPECT_EQ(m_console.error.find('\x1B'), m_console.error.npos);
    EXPECT_LT(m_console.error.size(), 500u);
}

TEST_F(CommandsTest, AHostileTreeIsShownHarmlesslyOrNotAtAll)
{
    Document document(MakeSphere(1));
    TuSmartPointer<TaNode> parent = document.GetTree().FindChild(u"Mesh");
    const auto add = [&](const TuSmartPointer<TaNode>& node) {
        EXPECT_TRUE(document.GetTree().InsertNode(node, parent));
    };
    const auto show = [&] {
        m_folder.WriteAll("a.tadoc", BytesOf([&](auto& stream) { document.Save(stream); }));
        m_console.output.clear();
        EXPECT_EQ(ShowDocuments(m_console, { m_document }), eEC_Done);
        return m_console.output;
    };
    add(TuMake<TaDataNodeBool>(u"\u009B2J", TuMake<TuBool>(true), true, true));
    EXPECT_NE(show().find("|-- ?2J (TaDataNodeBool) = true"), std::string::npos);

    for (int level = 0; level < 45; ++level) {
        const auto node = TuMake<TaDataNodeBool>(u"n", TuMake<TuBool>(true), true, true);
        add(node);
        parent = node;
    }
    EXPECT_TRUE(show().ends_with("\n  (the data tree is too deep to be shown)\n"));
}

TEST_F(CommandsTest, EveryLongStepSaysHowFarItIs)
{
    m_console.pace = 1000;
    const auto expectSteps = [this](EExitCode code, const char* first, const char* second) {
        EXPECT_EQ(code, eEC_Done);
        for (const char* step : { first, second }) {
            EXPECT_NE(m_console.error.find(step), std::string::npos) << m_console.error;
        }
        m_console.error.clear();
    };
    expectSteps(MakeMesh(m_console, eS_Terrain, 200, m_mesh), "making", "writing");
    expectSteps(ShowMeshes(m_console, { m_mesh }), "reading", "analysing");
    for (const EColoring coloring : { eC_Height, eC_Curvature, eC_Component }) {
        expectSteps(
            PictureMesh(m_console, m_mesh, coloring, name("a.png"), { .size = { 200, 150 } }),
            "colouring", "drawing");
    }
    expectSteps(PackMesh(m_console, m_mesh, m_document), "reading", "writing");
    expectSteps(ShowDocuments(m_console, { m_document }), "reading", "analysing");
}

} // namespace
