#include "tamesh/documentcommands.h"

#include "groundwork/tuevent.h"
#include "support/childprocess.h"
#include "support/temporaryfolder.h"
#include "tamesh/commands.h"
#include "tamesh/documentbytes.h"
#include "tamesh/fakeconsole.h"
#include "tamesh/meshfiles.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace {

using namespace tamesh;

int pack(const std::vector<std::string>& files)
{
    StandardConsole console;
    return PackMesh(console, files.at(0), files.at(1));
}
const bool kIsAdded = AddChildRole("pack", pack);

class DocumentCommandsTest : public testing::Test
{
protected:
    std::string name(std::string_view file) const { return (m_folder / file).ToUtf8(); }

    const TemporaryFolder m_folder;
    FakeConsole m_console;
};

TEST_F(DocumentCommandsTest, APackKilledAtAnyMomentLeavesTheOldDocumentOrTheNew)
{
    // A process starts slowly in a test environment of Windows.
#if defined(_WIN32)
    constexpr int kRounds = 40;
#else
    constexpr int kRounds = 200;
#endif
    using Clock = std::chrono::steady_clock;
    const std::string document = name("a.tadoc");
    const std::string meshes[] = { name("a.off"), name("b.off") };
    ASSERT_EQ(MakeMesh(m_console, eS_Sphere, 60, meshes[0]), eEC_Done);
    ASSERT_EQ(MakeMesh(m_console, eS_Terrain, 140, meshes[1]), eEC_Done);
    const auto read = [&] {
        Document found;
        ReadDocumentFile(m_console, document, found);
        return found.GetMesh().GetVertexCount();
    };
    std::uint32_t counts[2] = {};
    Clock::duration duration{};
    for (const std::size_t i : { 0u, 1u, 0u }) { // the first is slower
        const auto start = Clock::now();
        ASSERT_EQ(ChildProcess("pack", { meshes[i], document }).Wait(), 0);
        duration = Clock::now() - start;
        counts[i] = read();
    }

    int newer = 0;
    std::uint32_t before = counts[0];
    for (int round = 0; round < kRounds; ++round) {
        SCOPED_TRACE(round);
        // At first it reads the mesh; how long all takes differs with what else is done.
        const auto moment = Clock::now() + duration * 2 / 5 + duration * (round + 1) / kRounds;
        ChildProcess child("pack", { meshes[(round + 1) % 2], document });
        const TuEvent never(true); // the moment is what is tested; no order of threads hangs on it
        while (Clock::now() < moment) {
            static_cast<void>(never.Wait(1));
        }
        child.Kill();
        const std::uint32_t after = read(); // throws for half a document
        ASSERT_TRUE(after == counts[0] || after == counts[1]) << after;
        newer += after != before;
        before = after;
    }
    RecordProperty("replaced", newer);
    RecordProperty("left_behind", static_cast<int>(m_folder.CountFiles()) - 3);
    // What was left beside the document by then is in nobody's way.
    EXPECT_LE(m_folder.CountFiles(), 3 + kRounds);
    EXPECT_EQ(ChildProcess("pack", { meshes[1], document }).Wait(), 0);
    EXPECT_EQ(read(), counts[1]);
}

TEST_F(DocumentCommandsTest, AnInterruptEndsThemAndWritesNothing)
{
    ASSERT_EQ(MakeMesh(m_console, eS_Sphere, 30, name("a.off")), eEC_Done);
    ASSERT_EQ(PackMesh(m_console, name("a.off"), name("a.tadoc")), eEC_Done);
    m_console.interrupt.Set();
    EXPECT_EQ(CheckDocuments(m_console, { name("a.tadoc"), name("a.tadoc") }), eEC_Interrupted);
    EXPECT_EQ(m_console.error, name("a.tadoc") + ": interrupted\n"); // the second is not begun
    EXPECT_EQ(SalvageDocument(m_console, name("a.tadoc"), name("b.tadoc")), eEC_Interrupted);
    EXPECT_EQ(m_console.output, "");
    EXPECT_EQ(m_folder.CountFiles(), 2);
}

TEST_F(DocumentCommandsTest, WhatIsLostIsNamedHarmlessly)
{
    const std::string payload = BytesOf([](auto& stream) { stream << CString(u"\x1B[2J") << 7u; });
    m_folder.WriteAll("a.tadoc", BytesOf([&](auto& stream) {
        DocumentWriter writer;
        writer.AddStored(u"\x1B[2J", AsBytes(payload)); // of a later version of trees
        writer.AddStored(u"\x1B[2J", AsBytes(payload).first(14)); // cut, but with a checksum
        writer.Write(stream);
    }));
    EXPECT_EQ(CheckDocuments(m_console, { name("a.tadoc") }), eEC_Failed);
    EXPECT_EQ(SalvageDocument(m_console, name("a.tadoc"), name("b.tadoc")), eEC_Failed);
    EXPECT_NE(m_console.output.find("  ?[2J                 46 bytes, lost: "), std::string::npos)
        << m_console.output;
    EXPECT_EQ(CheckDocuments(m_console, { name("b.tadoc") }), eEC_Failed);
    EXPECT_EQ(m_console.error,
        name("a.tadoc") + ": the document is damaged: ?[2J\n" + name("a.tadoc") + ": lost: ?[2J\n"
            + name("b.tadoc")
            + ": the document is sound, but this program cannot read all of it: ?[2J\n");
    EXPECT_EQ((m_console.output + m_console.error).find('\x1B'), std::string::npos);
}

} // namespace
