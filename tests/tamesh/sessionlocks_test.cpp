#include "tamesh/meshgenerator.h"
#include "tamesh/resultvalues.h"
#include "tamesh/sessionfixture.h"

#include <algorithm>

namespace {

using namespace tamesh;

class SessionLocksTest : public SessionFixture
{
protected:
    SessionLocksTest()
    {
        writeMesh("a.off", MakeTorus(8));
        writeMesh("b.off", MakeTorus(8));
        answer("open @a.off; open @b.off");
    }

    /// As another command would hold it: on this thread.
    template <int Write>
    std::unique_ptr<TaDataHandleLockOnly<Write>> hold(const TuSmartPointer<TaNode>& node)
    {
        auto handle = std::make_unique<TaDataHandleLockOnly<Write>>(manager(), node);
        EXPECT_TRUE(manager().TryLock());
        return handle;
    }
    TuSmartPointer<TaNode> geometry(const std::string& mesh)
    {
        return node(mesh)->FindChild(SPartNames::kGeometry);
    }
    bool hasPart(const std::string& mesh, const CString& part)
    {
        return !node(mesh)->FindChild(part).IsNull();
    }
};

TEST_F(SessionLocksTest, CommandsOnOneMeshGoOnWhileThoseOnAnotherWait)
{
    auto held = hold<1>(geometry("a"));
    say("path a --from 0 --to 9 &");
    say("tree a &");
    ASSERT_TRUE(isAsking("asks to read Root/a/Geometry"));
    ASSERT_TRUE(isAsking("asks to read Root/a;"));
    EXPECT_EQ(say("picture b -o @b.png --size 200x150"), eEC_Done);
    EXPECT_EQ(say("locks"), eEC_Done);
    const std::string locks = takeOutput();
    EXPECT_NE(locks.find("b: drawn in @b.png\n"), locks.npos);
    EXPECT_NE(locks.find(" writes Root/a/Geometry"), locks.npos) << locks;
    EXPECT_FALSE(m_session.IsIdle());
    EXPECT_FALSE(hasPart("a", u"Path"));
    held.reset();
    EXPECT_EQ(m_session.Wait(), eEC_Done);
    EXPECT_TRUE(m_session.IsIdle());
    EXPECT_EQ(takeErrors(), "");
    EXPECT_TRUE(hasPart("a", u"Path"));
    expectConsistent();
}

TEST_F(SessionLocksTest, ASearchSharesTheGeometryButHasTheGraphForItself)
{
    answer("path a --from 0 --to 9");
    {
        const auto reading = hold<0>(geometry("a"));
        say("picture a -o @a.png --size 200x150 &");
        say("path a --from 0 --to 10 &");
        // Both have read what they need, and now ask to store what they have made of it.
        ASSERT_TRUE(isAsking("asks to write Root/a"));
    }
    EXPECT_EQ(m_session.Wait(), eEC_Done);
    takeOutput();
    {
        const auto searching = hold<1>(node("a")->FindChild(u"Graph"));
        say("path a --from 0 --to 11 &");
        ASSERT_TRUE(isAsking("asks to write Root/a/Graph"));
    }
    EXPECT_EQ(m_session.Wait(), eEC_Done);
    EXPECT_EQ(find<TaPathData>("a", u"Path")->GetPath().to, 11u);
    {
        const auto reading = hold<0>(geometry("a"));
        say("pack a &");
        ASSERT_TRUE(isAsking("asks to write Root/a/Geometry"));
    }
    EXPECT_EQ(m_session.Wait(), eEC_Done);
    expectConsistent();
}

TEST_F(SessionLocksTest, AnInterruptEndsCommandsThatWaitForLocks)
{
    auto held = hold<1>(geometry("a"));
    say("path a --from 0 --to 9 &");
    say("info b &"); // waits for its handler
    say("picture a -o @a.png &");
    ASSERT_TRUE(isAsking("asks to read Root/a;"));
    say("close a &");
    ASSERT_TRUE(isAsking("asks to write Root/a;"));
    m_console.interrupt.Set();
    EXPECT_EQ(m_session.Wait(), eEC_Interrupted);
    std::string errors = takeErrors();
    EXPECT_EQ(std::ranges::count(errors, '\n'), 4) << errors;
    for (const char* line : { "a: interrupted\n", "b: interrupted\n" }) {
        EXPECT_NE(errors.find(line), errors.npos) << errors;
    }
    EXPECT_EQ(takeOutput(), "");
    held.reset();
    expectConsistent();
    m_console.interrupt.Reset();
    EXPECT_EQ(m_session.Wait(), eEC_Done); // what was told is told once
    EXPECT_EQ(getParts("a").size(), 2u);
    answer("path a --from 0 --to 9; picture a -o @a.png --size 200x150");
}

TEST_F(SessionLocksTest, ACommandWhoseMeshIsClosedMeanwhileSaysSo)
{
    const auto close = [&](const std::string& mesh) {
        TaDataHandleLockOnly<1> handle(manager(), node(mesh));
        EXPECT_TRUE(manager().RemoveNode(handle));
        m_session.GetTree().Release(mesh);
    };
    {
        const auto held = hold<1>(node("a"));
        say("info a &");
        ASSERT_TRUE(isAsking("asks to read Root/a/Geometry"));
        close("a");
    }
    EXPECT_EQ(m_session.Wait(), eEC_Failed);
    EXPECT_EQ(takeErrors(), "a: has been closed meanwhile\n");
    {
        const auto held = hold<0>(geometry("b"));
        say("components b &"); // computes, and then has no place for what it found
        ASSERT_TRUE(isAsking("asks to write Root/b"));
        close("b");
    }
    EXPECT_EQ(m_session.Wait(), eEC_Failed);
    EXPECT_EQ(takeErrors(), "b: has been closed meanwhile\n");
    EXPECT_EQ(takeOutput(), "");
    expectConsistent();
}

TEST_F(SessionLocksTest, TheCodeOfACommandIsItsOwnWhateverEndsInTheBackground)
{
    auto held = hold<1>(geometry("a"));
    for (int i = 0; i != 50; ++i) {
        say("info nothing &");
        EXPECT_EQ(say("tree b"), eEC_Done);
        EXPECT_EQ(say("tree nothing"), eEC_Failed);
    }
    held.reset();
    EXPECT_EQ(m_session.Wait(), eEC_Failed);
    EXPECT_EQ(say("tree nothing"), eEC_Failed);
    EXPECT_EQ(m_session.Wait(), eEC_Done); // that was known
}

/// An interrupt at every look at the clock, which each step of the work takes.
TEST_F(SessionLocksTest, AnInterruptInTheMidstOfACommandLeavesAllAsItWas)
{
    writeMesh("big.off", MakeSphere(60));
    answer("open @big.off; path big --from 0 --to 4000");
    const auto before = getParts("big");
    for (const std::string line : { "info big", "components big", "colour big --by curvature",
             "path big --from 1 --to 4500 -o @out.obj", "distance big --from 1",
             "picture big --size 200x150 -o @out.png", "pack big", "save big -o @out.tadoc",
             "open @big.off --as more" }) {
        SCOPED_TRACE(line);
        const auto undo = [&] {
            if (m_session.GetTree().GetNames().back() == "more") {
                EXPECT_EQ(say("close more"), eEC_Done);
            }
        };
        const unsigned int begin = m_console.looks;
        ASSERT_EQ(say(line), eEC_Done);
        const unsigned int looks = m_console.looks - begin;
        undo();
        const std::ptrdiff_t files = m_folder.CountFiles();
        unsigned int broken = 0;
        for (unsigned int look = 1; look <= looks; look += 1 + looks / 20) {
            const auto parts = getParts("big");
            const unsigned int begun = m_console.looks;
            m_console.interruptAt = begun + look;
            const EExitCode code = say(line);
            m_console.interruptAt = 0;
            if (code == eEC_Interrupted) {
                ++broken;
                EXPECT_LE(m_console.looks - begun, look + 3) << looks; // at once
                EXPECT_EQ(m_session.GetTree().GetNames().size(), 3u);
                EXPECT_TRUE(line.starts_with("save") || getParts("big") == parts);
            }
            m_console.interrupt.Reset();
            EXPECT_LE(m_folder.CountFiles(), files);
            expectConsistent();
            undo();
        }
        EXPECT_GT(broken, 0u) << looks;
        takeOutput();
        takeErrors();
    }
    EXPECT_LT(before.size(), getParts("big").size());
}

} // namespace
