#include "support/bufferbytes.h"
#include "tabase/tadatanodes.h"
#include "tamesh/document.h"
#include "tamesh/meshanalysis.h"
#include "tamesh/meshgenerator.h"
#include "tamesh/resultvalues.h"
#include "tamesh/session/newpart.h"
#include "tamesh/session/script.h"
#include "tamesh/session/shell.h"
#include "tamesh/sessionfixture.h"
#include "tamesh/tatracedata.h"

#include <algorithm>
#include <deque>
#include <functional>

namespace {

using namespace tamesh;

/// Two triangles with a common side, one far away, and a vertex on its own.
constexpr const char* kStrip
    = "OFF\n8 3 0\n0 0 0\n1 0 0\n0 2 0\n1 2 0\n5 5 1\n6 5 1\n5 6 1\n9 9 9\n"
      "3 0 1 2\n3 1 3 2\n3 4 5 6\n";

class SessionTest : public SessionFixture
{
protected:
    SessionTest()
    {
        m_folder.WriteAll("strip.off", kStrip);
        writeMesh("torus.off", MakeTorus(8));
    }

    TuVariant parameter(const std::string& mesh, const CString& part, const char16_t* name)
    {
        const auto data = find<TaParameterData>(mesh, part, u"Parameters");
        TuVariant value;
        EXPECT_TRUE(!data.IsNull() && data->GetParameters().GetParameter(name, value) != 0);
        return value;
    }
    bool isFileRefused(const std::string& line)
    {
        const std::string text = complaint(line);
        return text.starts_with("@no/")
            && text.find(": cannot create a temporary file beside it: ") != text.npos;
    }
    std::string bytesOf(const std::string& mesh)
    {
        return BytesOf([&](auto& stream) { WriteDocument(stream, *node(mesh)); });
    }
};

TEST_F(SessionTest, MeshesAreKnownByTheNamesUnderWhichTheyWereOpened)
{
    EXPECT_EQ(complaint("info"), "session: no mesh is open; 'open FILE' opens one\n");
    EXPECT_TRUE(
        complaint("open @missing.off --as strip").starts_with("@missing.off: cannot open: "));
    EXPECT_EQ(answer("open @strip.off"), "strip: 8 vertices, 3 faces, of @strip.off\n");
    EXPECT_EQ(answer("tree strip").substr(0, 16), " strip (TaNode)\n");
    EXPECT_FALSE(node("strip")->IsModified(true));
    EXPECT_EQ(answer("open @strip.off"), "strip-2: 8 vertices, 3 faces, of @strip.off\n");
    EXPECT_EQ(
        answer("open @torus.off --as \"a\nb\""), "a?b: 64 vertices, 64 faces, of @torus.off\n");
    EXPECT_EQ(complaint("info"), "session: say which mesh is meant: strip, strip-2, a?b\n");
    EXPECT_EQ(complaint("info torus"), "torus: no such mesh is open, but: strip, strip-2, a?b\n");
    EXPECT_EQ(answer("close strip"), "strip: closed\n");
    EXPECT_EQ(answer("open @strip.off"), "strip: 8 vertices, 3 faces, of @strip.off\n");
    EXPECT_EQ(
        m_session.GetTree().GetNames(), (std::vector<std::string>{ "strip-2", "a?b", "strip" }));
    EXPECT_EQ(manager().GetRootNode()->GetChildrenCount(), 3u);
    expectConsistent();
}

TEST_F(SessionTest, FiguresAndComponentsAreShownAndKept)
{
    answer("open @strip.off");
    EXPECT_EQ(answer("info"),
        take(m_console.output
            = "strip\n" + FormatFigures(AnalyseMesh(ReadMeshText("a.off", kStrip)))));
    const auto figure = [&](const char16_t* name) {
        return find<TuUInt64>("strip", u"Figures", name)->GetValue();
    };
    EXPECT_EQ(figure(u"Edges"), 8u);
    EXPECT_EQ(figure(u"Boundary edges"), 7u);
    EXPECT_EQ(figure(u"Components"), 3u);
    EXPECT_EQ(figure(u"Isolated vertices"), 1u);
    EXPECT_EQ(answer("components"),
        "strip (components)\n components 3\n vertices 4\n vertices 3\n vertices 1\n");
    EXPECT_EQ(find<TuUInt64>("strip", u"Components", u"Count")->GetValue(), 3u);
    EXPECT_EQ(find<TaNumbersData>("strip", u"Components")->GetNumbers(),
        (std::vector<std::uint32_t>{ 4, 3, 1 }));

    std::string many = "OFF\n12 0 0\n";
    for (int i = 0; i != 12; ++i) {
        many += "0 0 0\n";
    }
    m_folder.WriteAll("many.off", many);
    answer("open @many.off");
    EXPECT_TRUE(answer("components many").ends_with(" vertices 1\n smaller ones 2\n"));
    expectConsistent();
}

TEST_F(SessionTest, APathIsShownKeptAndWritten)
{
    answer("open @strip.off");
    EXPECT_EQ(answer("path --from 2 --to 1,0.1,0 -o @p.obj"),
        "strip (path)\n length 2.2360679358243942\n vertices 2\n path 2 1\n");
    EXPECT_EQ(m_folder.ReadAll("p.obj"), "v 0 2 0\nv 1 0 0\nl 1 2\n");
    const SMeshPath path = find<TaPathData>("strip", u"Path")->GetPath();
    EXPECT_EQ(path.from, 2u);
    EXPECT_EQ(path.to, 1u);
    EXPECT_EQ(path.vertices, (std::vector<std::uint32_t>{ 2, 1 }));
    EXPECT_EQ(find<TuFloat64>("strip", u"Path", u"Length")->GetValue(), path.length);
    EXPECT_EQ(parameter("strip", u"Path", u"from").ToInt(), 2);
    EXPECT_EQ(parameter("strip", u"Path", u"to").ToInt(), 1);
    EXPECT_TRUE(node("strip")->IsModified(true));

    EXPECT_EQ(
        complaint("path --from 2 --to 8"), "strip: has no vertex 8; its vertices are 0 to 7\n");
    EXPECT_EQ(
        complaint("path --from 2 --to 4"), "strip: no path leads from vertex 2 to vertex 4\n");
    EXPECT_TRUE(isFileRefused("path --from 0 --to 1 -o @no/p.obj"));
    EXPECT_EQ(find<TaPathData>("strip", u"Path")->GetPath().vertices, path.vertices);
    EXPECT_EQ(answer("path --from 0 --to 0"), "strip (path)\n length 0\n vertices 1\n path 0\n");
    EXPECT_EQ(find<TaPathData>("strip", u"Path")->GetPath().vertices.size(), 1u);
    EXPECT_EQ(getParts("strip").size(), 4u); // Mesh, Geometry, Graph, Path
    m_folder.WriteAll("empty.off", "OFF\n0 0 0\n");
    answer("open @empty.off");
    EXPECT_EQ(complaint("path empty --from 0 --to 0"), "empty: has no vertices\n");
    expectConsistent();
}

TEST_F(SessionTest, APartThatIsNotFinishedLeavesTheFormerOneInItsPlace)
{
    answer("open @strip.off; path --from 0 --to 1");
    const auto parts = getParts("strip");
    {
        const TaDataHandleLockOnly<1> handle(manager(), node("strip"));
        ASSERT_TRUE(manager().TryLock());
        NewPart part(manager(), node("strip"), SPartNames::kPath);
        part.AddValue<TaPathNode, TaPathData>(SPartNames::kData, SMeshPath());
        EXPECT_EQ(find<TaPathData>("strip", SPartNames::kPath)->GetPath().to, 1u);
    }
    EXPECT_EQ(getParts("strip"), parts);
    expectConsistent();
}

TEST_F(SessionTest, DistancesAreShownKeptAndColourTheMesh)
{
    answer("open @strip.off");
    EXPECT_EQ(complaint("colour --by distance"),
        "strip: has no distances; 'distance --from V' finds them\n");
    EXPECT_EQ(complaint("picture -o @a.png --by distance"),
        "strip: has no distances; 'distance --from V' finds them\n");
    EXPECT_EQ(answer("distance --from 1"),
        "strip (distance)\n from vertex 1\n vertices reached 4\n largest 2.2360679358243942\n");
    const auto data = find<TaDistanceData>("strip", u"Distance");
    EXPECT_EQ(data->GetFrom(), 1u);
    ASSERT_EQ(data->GetDistances().size(), 8u);
    EXPECT_NEAR(data->GetDistances()[3] * data->GetUnit(), 2.0, 1e-6);
    EXPECT_NEAR(find<TuFloat64>("strip", u"Distance", u"Largest")->GetValue(), 2.23606, 1e-5);
    EXPECT_EQ(parameter("strip", u"Distance", u"from").ToInt(), 1);

    EXPECT_EQ(answer("colour --by distance"), "strip: distance from vertex 1\n");
    const SColoring coloring = find<TaColoringData>("strip", u"Colours")->GetColoring();
    EXPECT_EQ(coloring.values, data->GetDistances());
    EXPECT_NEAR(coloring.upper, 2.23606, 1e-5);
    EXPECT_EQ(parameter("strip", u"Colours", u"by").ToString().ToUtf8(), "distance");
    answer("colour --by height --up y");
    EXPECT_EQ(find<TaColoringData>("strip", u"Colours")->GetColoring().upper, 9.0);
    EXPECT_EQ(parameter("strip", u"Colours", u"up").ToString().ToUtf8(), "y");
    EXPECT_EQ(getParts("strip").size(), 5u);
    expectConsistent();
}

TEST_F(SessionTest, APictureShowsTheColoursThatAreAskedForOrElseThoseThatAreKept)
{
    answer("open @torus.off");
    const auto draw = [&](const std::string& options) {
        EXPECT_EQ(
            answer("picture -o @a.png --size 200x150 " + options), "torus: drawn in @a.png\n");
        return m_folder.ReadAll("a.png");
    };
    const std::string height = draw("");
    EXPECT_EQ(
        height.substr(0, 24), std::string("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\xC8\0\0\0\x96", 24));
    EXPECT_TRUE(draw("--by height") == height);
    const std::string curvature = draw("--by curvature");
    EXPECT_FALSE(curvature == height);
    answer("colour --by curvature");
    EXPECT_TRUE(draw("") == curvature);
    EXPECT_TRUE(draw("--by height") == height);
    EXPECT_FALSE(draw("--view 1,0,0") == curvature);

    EXPECT_EQ(complaint("picture -o @b.png --path"),
        "torus: has no path; 'path --from V --to V' finds one\n");
    EXPECT_TRUE(isFileRefused("picture -o @no/b.png"));
    answer("path --from 0 --to 60");
    EXPECT_FALSE(draw("--path --by curvature") == curvature);
    EXPECT_EQ(parameter("torus", u"Picture", u"path").ToBool(), true);
    EXPECT_EQ(parameter("torus", u"Picture", u"by").ToString().ToUtf8(), "curvature");
    EXPECT_EQ(parameter("torus", u"Picture", u"width").ToInt64(), 200);
    EXPECT_EQ(find<TaColoringData>("torus", u"Picture")->GetColoring().values,
        find<TaColoringData>("torus", u"Colours")->GetColoring().values);
    m_folder.WriteAll("empty.off", "OFF\n0 0 0\n");
    answer("open @empty.off");
    EXPECT_EQ(complaint("picture empty -o @b.png"), "empty: has no vertices that could be shown\n");
    EXPECT_FALSE(std::filesystem::exists(m_folder.GetPath("b.png")));
    expectConsistent();
}

TEST_F(SessionTest, WhatIsSavedOpensAsTheSameParts)
{
    answer("open @torus.off");
    answer("info; components; path --from 3 --to 40; distance --from 5; colour --by curvature; "
           "picture -o @a.png --size 200x150 --by distance --path");
    EXPECT_TRUE(isFileRefused("save -o @no/a.tadoc"));
    EXPECT_TRUE(node("torus")->IsModified(true));
    EXPECT_EQ(answer("save -o @a.tadoc"), "torus: saved in @a.tadoc\n");
    EXPECT_FALSE(node("torus")->IsModified(true));
    EXPECT_EQ(answer("open @a.tadoc --as copy"), "copy: 64 vertices, 64 faces, of @a.tadoc\n");
    const std::string bytes = m_folder.ReadAll("a.tadoc");
    EXPECT_TRUE(bytesOf("torus") == bytes);
    EXPECT_TRUE(bytesOf("copy") == bytes);
    EXPECT_NE(find<TaMeshData>("copy", u"Geometry")->GetPacked(), nullptr);
    EXPECT_EQ(getParts("copy").size() + 1, getParts("torus").size()); // the graph is not stored

    const auto trace = find<TaTraceData>("copy", u"Trace")->GetHistory();
    const auto texts = [](const auto& command) { return command.text; };
    EXPECT_NE(
        std::ranges::find(trace.commands, "path --from 3 --to 40", texts), trace.commands.end());
    EXPECT_EQ(parameter("copy", u"Settings", u"digits").ToInt(), m_settings.GetDigits());

    // What was found before serves the copy, too.
    answer("picture torus -o @1.png --size 200x150 --by distance --path");
    answer("picture copy -o @2.png --size 200x150 --by distance --path");
    EXPECT_TRUE(m_folder.ReadAll("1.png").size() != 0);
    const std::string path = answer("path torus --from 1 --to 30");
    EXPECT_EQ(answer("path copy --from 1 --to 30").substr(4), path.substr(5));

    EXPECT_EQ(answer("pack torus --bits 4").substr(0, 15), "torus (packed)\n");
    EXPECT_TRUE(node("torus")->IsModified(true));
    answer("save torus -o @b.tadoc; open @b.tadoc --as small");
    const auto textOf = [&](const std::string& mesh) {
        return WriteMeshText(find<TaMeshData>(mesh, u"Geometry")->GetMesh());
    };
    EXPECT_NE(textOf("small"), m_folder.ReadAll("torus.off"));
    answer("pack torus; save torus -o @b.tadoc; open @b.tadoc --as exact");
    EXPECT_EQ(textOf("exact"), m_folder.ReadAll("torus.off"));
    expectConsistent();
}

TEST_F(SessionTest, AMeshThatIsClosedIsForgottenAndSaysWhetherItWasSaved)
{
    answer("open @torus.off; save -o @a.tadoc; open @strip.off");
    EXPECT_EQ(answer("close torus"), "torus: closed\n");
    EXPECT_TRUE(manager().FindChild(u"torus").IsNull());
    answer("components");
    EXPECT_EQ(answer("close"), "strip: closed, not saved\n");
    EXPECT_EQ(complaint("close"), "session: no mesh is open; 'open FILE' opens one\n");
    EXPECT_FALSE(manager().GetRootNode()->HasChildren());
    expectConsistent();
}

TEST_F(SessionTest, APartOfSomebodyElsesMayBeCalledGraph)
{
    Document document(MakeTorus(8));
    TaDataManager& tree = document.GetTree();
    const auto part = TuMake<TaNode>(u"Graph", true, true);
    ASSERT_TRUE(tree.InsertNode(part, tree.GetRootNode()));
    ASSERT_TRUE(
        tree.InsertNode(TuMake<TaDataNodeInt32>(u"Number", TuMake<TuInt32>(1), true, true), part));
    m_folder.WriteAll("graph.tadoc", BytesOf([&](auto& stream) { document.Save(stream); }));
    answer("open @graph.tadoc");
    const std::string path = answer("path --from 0 --to 9");
    EXPECT_EQ(answer("path --from 0 --to 9"), path);
    EXPECT_EQ(find<TuInt32>("graph", u"Graph", u"Number")->GetValue(), 1);
}

TEST_F(SessionTest, TreeLocksQueuesAndSettingsAreShown)
{
    answer("open @strip.off");
    const std::string tree = answer("tree");
    EXPECT_TRUE(
        tree.starts_with(" Root (TaNode), modified\n |-- strip (TaNode)\n |-- Mesh (TaNode)\n"))
        << tree;
    EXPECT_TRUE(answer("tree strip").starts_with(" strip (TaNode)\n |-- Mesh (TaNode)\n"));
    EXPECT_EQ(answer("locks"), " no part of the tree is locked\n");
    const std::string queues = answer("queues");
    for (const char* handler : { "Main", "Status", "Import", "Compute", "Export", "Document" }) {
        EXPECT_NE(queues.find(handler), queues.npos) << queues;
    }
    EXPECT_EQ(
        complaint("settings digits=18"), "settings: the setting digits is 0 to 17, not '18'\n");
    EXPECT_EQ(answer("settings digits=2 tree-depth=1").substr(0, 10), " digits 2 ");
    EXPECT_EQ(answer("tree"), " Root (TaNode), modified\n |-- strip (TaNode)\n");
    EXPECT_EQ(answer("path --from 2 --to 1").substr(0, 25), "strip (path)\n length 2.2\n");
    answer("settings digits= tree-depth=");
    EXPECT_NE(answer("help").find("\n distance Finds"), std::string::npos);
}

/// The lines of a user, and what happens while the user is asked for them.
class FakeLines final : public ILineSource
{
public:
    std::optional<std::string> ReadLine(const std::string&) override
    {
        if (lines.empty()) {
            return std::nullopt;
        }
        const SLine line = lines.front();
        lines.pop_front();
        if (line.before != nullptr) {
            line.before();
        }
        return line.text;
    }

    struct SLine
    {
        SLine(std::string line, std::function<void()> what = nullptr)
            : text(std::move(line))
            , before(std::move(what))
        {
        }

        std::string text;
        std::function<void()> before; // while the user is asked
    };
    std::deque<SLine> lines;
};

class RunTest : public SessionFolder
{
protected:
    RunTest()
    {
        m_folder.WriteAll("strip.off", kStrip);
        writeMesh("sphere.off", MakeSphere(40));
    }

    EExitCode run(const std::string& script, bool isKeptGoing = false)
    {
        m_folder.WriteAll("script", expand(script));
        return RunScript(m_console, m_settings,
            { (m_folder / "strip.off").ToUtf8(), (m_folder / "script").ToUtf8(), isKeptGoing });
    }
    EExitCode type(std::deque<FakeLines::SLine> lines)
    {
        FakeLines source;
        for (FakeLines::SLine& line : lines) {
            line.text = expand(line.text);
        }
        source.lines = std::move(lines);
        return RunShell(m_console, m_console.interrupt, m_settings, "", &source);
    }
};

TEST_F(RunTest, NothingIsDoneBeforeTheWholeScriptIsUnderstood)
{
    EXPECT_EQ(run("close\n\npath --from 1"), eEC_Failed);
    EXPECT_EQ(takeOutput(), "");
    EXPECT_EQ(takeErrors(), "@script:3: path: --to is required\n");
    EXPECT_EQ(
        RunScript(m_console, m_settings, { "a.off", (m_folder / "no").ToUtf8() }), eEC_Failed);
    EXPECT_TRUE(takeErrors().starts_with("@no: cannot open: "));
}

TEST_F(RunTest, AFailureEndsTheScriptUnlessItIsToGoOn)
{
    const std::string script = "info nothing\npath --from 0 --to 1\nquit\nclose";
    const std::string error = "nothing: no such mesh is open, but: strip\n";
    EXPECT_EQ(run(script), eEC_Failed);
    EXPECT_EQ(takeOutput(), "strip: 8 vertices, 3 faces, of @strip.off\n");
    EXPECT_EQ(takeErrors(), error + "@script:1: failed: info nothing\n");
    EXPECT_EQ(run("\n" + script, true), eEC_Failed);
    EXPECT_TRUE(takeOutput().ends_with(" path 0 1\n"));
    EXPECT_EQ(takeErrors(), error + "@script:2: failed: info nothing\n");
    // One in the background is noticed at the latest at the end.
    EXPECT_EQ(run("info nothing &\nlocks"), eEC_Failed);
    EXPECT_EQ(takeErrors(), error);
    EXPECT_EQ(run("info nothing &\nwait\nclose"), eEC_Failed);
    EXPECT_EQ(takeOutput().find("closed"), std::string::npos);
    EXPECT_EQ(run("path --from 0 --to 1 &\ncomponents &\nhelp wait"), eEC_Done);
    EXPECT_NE(takeOutput().find(" path 0 1\n"), std::string::npos);
    m_console.isFull = true;
    takeErrors();
    EXPECT_EQ(run("close"), eEC_Failed);
    EXPECT_EQ(takeErrors(), "standard output: cannot be written\n");
}

TEST_F(RunTest, AnInterruptEndsAScriptAndAllThatGoesOn)
{
    m_console.interrupt.Set();
    EXPECT_EQ(run("locks"), eEC_Interrupted);
    EXPECT_EQ(takeOutput(), "");
    EXPECT_EQ(takeErrors(), "@strip.off: interrupted\n");
    m_console.interrupt.Reset();

    // It comes while the path is being looked for.
    EXPECT_EQ(run("open @sphere.off\nlocks"), eEC_Done);
    const unsigned int looks = m_console.looks;
    takeOutput();
    m_console.interruptAt = 2 * looks + 3;
    EXPECT_EQ(run("open @sphere.off\npath sphere --from 0 --to 6000\nclose strip", true),
        eEC_Interrupted);
    EXPECT_EQ(takeErrors(), "sphere: interrupted\n");
    EXPECT_EQ(takeOutput().find("closed"), std::string::npos);
    m_console.interrupt.Reset();

    m_console.interruptBy = "(components)"; // so it breaks none
    EXPECT_EQ(run("components\nclose"), eEC_Interrupted);
    EXPECT_EQ(takeOutput().find("closed"), std::string::npos);
}

TEST_F(RunTest, AShellGoesOnBehindFailuresAndTellsHowItsLastCommandEnded)
{
    EXPECT_EQ(type({ { "open @strip.off" }, { "fly" }, { "info no; path --from 0 --to 1" },
                  { "components &" } }),
        eEC_Done);
    EXPECT_EQ(takeErrors(),
        "there is no command \"fly\"; 'help' shows all\nno: no such mesh is open, but: strip\n");
    const std::string output = takeOutput();
    EXPECT_NE(output.find(" path 0 1\n"), output.npos);
    EXPECT_NE(output.find("(components)"), output.npos);
    EXPECT_EQ(type({ { "open @no.off" } }), eEC_Failed);
    EXPECT_EQ(type({ { "fly" } }), eEC_WrongUsage);
    EXPECT_EQ(type({ { "open @no.off; locks; quit" }, { "fly" } }), eEC_Done);
    EXPECT_EQ(type({ { "info &" } }), eEC_Failed);
    takeOutput();
    m_console.isFull = true;
    EXPECT_EQ(type({ { "help" }, { "help" } }), eEC_Failed);
    const std::string help = takeOutput();
    EXPECT_EQ(help.find("Ends the session"), help.rfind("Ends the session")); // once
}

TEST_F(RunTest, AnInterruptBreaksTheLineOfAShellWhichThenGoesOn)
{
    EXPECT_EQ(type({ { "open @sphere.off" },
                  { "path --from 0 --to 6000; close",
                      [&] { m_console.interruptAt = m_console.looks + 3; } },
                  { "tree", [&] { EXPECT_FALSE(m_console.interrupt.IsSet()); } },
                  { "path --from 0 --to 6000" } }),
        eEC_Done);
    EXPECT_EQ(takeErrors(), "path --from 0 --to 6000: interrupted\n");
    EXPECT_TRUE(takeOutput().find("(path)") != std::string::npos);
    // Between two commands it breaks neither, but the line all the same.
    m_console.interruptBy = "(components)";
    EXPECT_EQ(type({ { "open @strip.off" }, { "components; close; quit" } }), eEC_Interrupted);
    EXPECT_EQ(takeErrors(), "close: interrupted\n");
    EXPECT_TRUE(takeOutput().find("closed") == std::string::npos);
    // One that comes at the prompt breaks what goes on, and no more.
    EXPECT_EQ(type({ { "open @sphere.off" }, { "distance --from 0 &" },
                  { "close", [&] { m_console.interrupt.Set(); } } }),
        eEC_Done);
    EXPECT_TRUE(takeOutput().find("sphere: closed") != std::string::npos);
}

} // namespace
