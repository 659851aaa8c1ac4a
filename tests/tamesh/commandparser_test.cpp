#include "tamesh/session/commandparser.h"

#include "support/expectfailure.h"
#include "support/temporaryfolder.h"
#include "tamesh/meshfailure.h"
#include "tamesh/session/script.h"
#include "tamesh/session/sessiontree.h"
#include "tamesh/session/shell.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace tamesh;
using Words = std::vector<std::string>;

std::vector<Words> split(const std::string& line)
{
    std::vector<Words> commands;
    for (const SCommandWords& command : SplitCommandLine(line)) {
        commands.push_back(command.words);
    }
    return commands;
}

std::string whyNot(const std::string& line)
{
    try {
        ParseCommandLine(line);
    } catch (const CommandError& error) {
        return error.what();
    }
    return "nothing is wrong";
}

SCommand parse(const std::string& line) { return ParseCommandLine(line).at(0); }

TEST(CommandWordsTest, QuotesCommentsAndEndsOfCommandsSplitALine)
{
    EXPECT_EQ(split(" \t\r"), std::vector<Words>());
    EXPECT_EQ(split("a b;c  d ;"), (std::vector<Words>{ { "a", "b" }, { "c", "d" } }));
    EXPECT_EQ(split("a;b&c # d;e"), (std::vector<Words>{ { "a" }, { "b" }, { "c" } }));
    EXPECT_EQ(split("a#b;#c"), (std::vector<Words>{ { "a#b" } }));
    EXPECT_EQ(split(R"("a ;&#" x" y"z "" C:\new\"dir \"\\")"),
        (std::vector<Words>{ { "a ;&#", "x yz", "", "C:\\new\\dir \"\\" } }));

    const std::vector<SCommandWords> commands = SplitCommandLine(" a  \"b c\" & d ;e");
    EXPECT_EQ(commands[0].text, "a  \"b c\"");
    EXPECT_TRUE(commands[0].isBackground);
    EXPECT_EQ(commands[1].text, "d");
    EXPECT_FALSE(commands[1].isBackground);
    EXPECT_FALSE(commands[2].isBackground);
}

TEST(CommandWordsTest, AQuotationWithoutEndAndAnEndWithoutCommandAreErrors)
{
    EXPECT_EQ(whyNot("open \"a b"), "a quotation mark is missing at the end of \"\"a b\"");
    EXPECT_EQ(whyNot("open \"a\\\""), "a quotation mark is missing at the end of \"\"a\\\"\"");
    EXPECT_EQ(whyNot(";"), "there is no command before ';'");
    EXPECT_EQ(whyNot("locks & ;"), "there is no command before ';'");
    EXPECT_EQ(whyNot("&"), "there is no command before '&'");
}

TEST(CommandParserTest, EachOptionOfACommandIsTaken)
{
    const SCommand open = parse("open \"a b.off\" --as x");
    EXPECT_EQ(open.id, eCI_Open);
    EXPECT_EQ(open.input, "a b.off");
    EXPECT_EQ(open.name, "x");
    EXPECT_EQ(open.text, "open \"a b.off\" --as x");

    const SCommand path = parse("path m --from 3 --to -1,2,3.5 -o p.obj &");
    EXPECT_EQ(path.id, eCI_Path);
    EXPECT_EQ(path.mesh, "m");
    EXPECT_EQ(path.from, VertexName(3u));
    EXPECT_EQ(path.to, VertexName(SPoint{ -1.0, 2.0, 3.5 }));
    EXPECT_EQ(path.output, "p.obj");
    EXPECT_TRUE(path.isBackground);

    EXPECT_EQ(parse("distance --from 7").from, VertexName(7u));
    EXPECT_EQ(parse("colour --by curvature").colours, eMC_Curvature);
    const SCommand picture
        = parse("picture m -o p.png --by distance --path --size 300x200 --view 1,0,0 --up y");
    EXPECT_EQ(picture.colours, eMC_Distance);
    EXPECT_TRUE(picture.withPath);
    EXPECT_EQ(picture.picture.size.width, 300u);
    EXPECT_EQ(picture.picture.toViewer.x, 1.0);
    EXPECT_EQ(picture.picture.up, eA_Y);
    EXPECT_EQ(parse("picture -o p.png").colours, eMC_Stored);
    EXPECT_FALSE(parse("picture -o p.png").withPath);
    EXPECT_EQ(parse("pack").packing.form, SPackOptions::eF_Lossless);
    EXPECT_EQ(parse("pack --bits 9").packing.form, SPackOptions::eF_Quantized);
    EXPECT_EQ(parse("pack --bits 9").packing.bits, 9u);
    EXPECT_EQ(
        parse("settings digits=3 tree-depth=").assignments, (Words{ "digits=3", "tree-depth=" }));
}

TEST(CommandParserTest, WhatIsWrongWithACommandIsSaid)
{
    EXPECT_EQ(whyNot("fly"), "there is no command \"fly\"; 'help' shows all");
    EXPECT_EQ(whyNot("\"\""), "there is no command \"\"; 'help' shows all");
    EXPECT_EQ(whyNot("help fly"), "there is no command \"fly\"; 'help' shows all");
    for (const char* line : { "open", "open a b", "path --from 1", "path --from 1 --to 1,2",
             "path --from -1 --to 2", "path --from 1 --to 2 -o p.png", "distance", "colour",
             "colour --by stored", "picture", "picture -o p.obj", "picture -o p.png --size 1x1",
             "pack --bits 25", "pack --bits 8 --lossless", "save", "save -o a.off", "close a b",
             "locks a", "info --fast" }) {
        EXPECT_TRUE(whyNot(line).starts_with(split(line)[0][0] + ": "))
            << line << ": " << whyNot(line);
    }
}

TEST(CommandParserTest, HelpExplainsEveryCommand)
{
    const SCommand all = parse("help");
    EXPECT_EQ(all.id, eCI_Help);
    for (const std::string& name : GetCommandNames()) {
        EXPECT_NE(("\n" + all.help).find("\n  " + name + " "), all.help.npos) << name;
        const SCommand one = parse("help " + name);
        EXPECT_EQ(one.id, eCI_Help);
        EXPECT_NE(one.help.find("Usage: " + name), one.help.npos) << one.help;
        EXPECT_EQ(parse(name + " --help").help, one.help);
    }
}

TEST(ScriptTest, CommandsKnowTheirLinesAndTheFirstErrorIsReportedWithIts)
{
    const std::vector<SScriptCommand> commands
        = ParseScript("\xEF\xBB\xBF# a script\r\n\r\ninfo; tree\r\nlocks &", "s");
    ASSERT_EQ(commands.size(), 3u);
    EXPECT_EQ(commands[0].line, 3u);
    EXPECT_EQ(commands[1].line, 3u);
    EXPECT_EQ(commands[1].command.id, eCI_Tree);
    EXPECT_EQ(commands[2].line, 4u);
    EXPECT_TRUE(commands[2].command.isBackground);
    EXPECT_TRUE(ParseScript("", "s").empty());
    try {
        ParseScript("info\n\nfly\nswim\n", "s");
        ADD_FAILURE();
    } catch (const MeshFailure& failure) {
        EXPECT_EQ(failure.GetReport(), "s:3: there is no command \"fly\"; 'help' shows all");
    }
}

TEST(SessionTreeTest, NamesDifferInTheTreeToo)
{
    SessionTree tree;
    EXPECT_EQ(tree.Reserve(""), "mesh");
    EXPECT_EQ(tree.Reserve("mesh"), "mesh-2");
    const std::string name = tree.Reserve("a\xFF"); // which is no text
    EXPECT_EQ(name, CString::FromUtf8(name).ToUtf8());
    EXPECT_EQ(tree.Reserve("a\xFE"), name + "-2");
    tree.Release(name);
    EXPECT_EQ(tree.Reserve("a\xFE"), name);
}

TEST(ShellTest, ALineIsCompletedByCommandsMeshesAndFiles)
{
    const TemporaryFolder folder;
    folder.WriteAll("torus.off", "");
    std::string place = (folder / "x").ToUtf8();
    place.pop_back();
    place.back() = '/';
    SessionTree tree;
    EXPECT_EQ(tree.Reserve("torus"), "torus");
    tree.Announce("torus");
    EXPECT_EQ(tree.Reserve("toroid"), "toroid"); // is not open yet
    EXPECT_EQ(CompleteLine(tree, "s"), (Words{ "save", "settings" }));
    EXPECT_EQ(CompleteLine(tree, "info torus; pa"), (Words{ "pack", "path" }));
    EXPECT_EQ(CompleteLine(tree, "info tor"), Words{ "torus" });
    EXPECT_EQ(CompleteLine(tree, "open " + place + "to"), Words{ place + "torus.off" });
}

} // namespace
