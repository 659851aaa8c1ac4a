#include "tabase/tadatanodes.h"
#include "tabase/tamessagetrace.h"
#include "tamesh/document.h"
#include "tamesh/fakeconsole.h"
#include "tamesh/htmlreport.h"
#include "tamesh/messagespans.h"
#include "tamesh/resultvalues.h"
#include "tamesh/session/sessiontree.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using namespace tamesh;
using SStep = SMessageHistory::SStep;

constexpr const char* kHostile = "</title><script>alert(\"x\")</script>&'\x1B\xE2\x82";
constexpr const char* kHarmless
    = "&lt;/title&gt;&lt;script&gt;alert(&quot;x&quot;)&lt;/script&gt;&amp;&#39;?\xEF\xBF\xBD";

Mesh makeSquare()
{
    Mesh mesh;
    for (const SPoint& point : { SPoint{ 0, 0, 0 }, { 1, 0, 0 }, { 1, 1, 1 }, { 0, 1, 0 } }) {
        mesh.AddVertex(point);
    }
    mesh.AddFace({ 0, 1, 2, 3 });
    return mesh;
}

void insert(
    Document& document, const TuSmartPointer<TaNode>& node, const TuSmartPointer<TaNode>& parent)
{
    EXPECT_TRUE(document.GetTree().InsertNode(node, parent));
}

/// Adds values to a part of a document, which is made where it is not there.
class PartMaker
{
public:
    PartMaker(Document& document, const char16_t* name)
        : m_document(document)
        , m_part(TuMake<TaNode>(name, true, true))
    {
        insert(document, m_part, document.GetTree().GetRootNode());
    }
    template <class Node, class Value> PartMaker& Add(const char16_t* name, Value value)
    {
        insert(m_document, TuMake<Node>(name, TuMake<Value>(std::move(value)), true, true), m_part);
        return *this;
    }

private:
    Document& m_document;
    TuSmartPointer<TaNode> m_part;
};

SColoring makeColors(std::size_t vertices)
{
    SColoring coloring;
    coloring.title = kHostile;
    coloring.values.assign(vertices, 0.5F);
    coloring.table = TuMake<TaColorTable>(4ul);
    coloring.upper = 1.0;
    return coloring;
}

TaParameterSet makePictureOptions(int width)
{
    TaParameterSet options;
    options.SetParameter(u"width", width);
    options.SetParameter(u"height", 150);
    options.SetParameter(u"view-z", 1.0);
    options.SetParameter(u"path", true);
    return options;
}

SMessageHistory makeHistory()
{
    SMessageHistory history;
    history.texts = { "Command", "Export" };
    history.steps = { SStep{ 1000, SMessageTrace::eS_Queued, false, 7, 1, 0, 1 },
        SStep{ 2000, SMessageTrace::eS_Delivered, false, 7, 2, 0, 1 },
        SStep{ 5000, SMessageTrace::eS_Queued, true, 8, 2, 0, 1 },
        SStep{ 6000, SMessageTrace::eS_Dropped, true, 8, 2, 0, 1 } };
    history.commands = { { 7, kHostile } };
    return history;
}

std::string report(const Document& document)
{
    FakeConsole console;
    return MakeReport(console, kHostile, document).Get();
}

bool has(const std::string& page, const std::string& text)
{
    return page.find(text) != std::string::npos;
}

TEST(HtmlTextTest, OtherPeoplesTextIsNeverMarkup)
{
    EXPECT_EQ(HtmlText().Text(kHostile).Get(), kHarmless);
    EXPECT_EQ(HtmlText().Text("\xED\xA0\x80\x80<").Get().find('<'), std::string::npos);
    EXPECT_LT(HtmlText().Text(std::string(100000, '<')).Get().size(), 2000u);
}

TEST(HtmlTextTest, Base64IsPadded)
{
    const unsigned char bytes[] = { 'f', 'o', 'o', 0xFF };
    const std::span all(bytes);
    EXPECT_EQ(HtmlText().Base64(all.first(1)).Get(), "Zg==");
    EXPECT_EQ(HtmlText().Base64(all.first(2)).Get(), "Zm8=");
    EXPECT_EQ(HtmlText().Base64(all.first(3)).Get(), "Zm9v");
    EXPECT_EQ(HtmlText().Base64(all).Get(), "Zm9v/w==");
}

TEST(HtmlReportTest, PageShowsEveryPartOfADocument)
{
    Document document(makeSquare());
    PartMaker(document, SPartNames::kFigures).Add<TaDataNodeUInt64>(u"Edges", TuUInt64(4));
    PartMaker(document, SPartNames::kComponents)
        .Add<TaNumbersNode>(SPartNames::kData, TaNumbersData({ 4 }));
    PartMaker(document, SPartNames::kPath)
        .Add<TaPathNode>(SPartNames::kData, TaPathData({ 0, 2, 2.5, { 0, 1, 2 } }))
        .Add<TaDataNodeString>(u"<i>", TuString(CString::FromUtf8(kHostile)));
    PartMaker(document, SPartNames::kDistance)
        .Add<TaDistanceNode>(SPartNames::kData, TaDistanceData(0, 1.0, { 0, 1, 2, 1 }));
    PartMaker(document, SPartNames::kColours)
        .Add<TaColoringNode>(SPartNames::kData, TaColoringData(makeColors(4)));
    PartMaker(document, SPartNames::kPicture)
        .Add<TaParameterNode>(SPartNames::kParameters, TaParameterData(makePictureOptions(200)))
        .Add<TaColoringNode>(SPartNames::kData, TaColoringData(makeColors(4)));
    TaParameterSet settings;
    settings.AddGroup(u"group").SetParameter(u"digits", 6);
    PartMaker(document, SPartNames::kSettings)
        .Add<TaParameterNode>(SPartNames::kParameters, TaParameterData(settings));
    PartMaker(document, SPartNames::kTrace)
        .Add<TaTraceNode>(SPartNames::kData, TaTraceData(makeHistory()));

    const std::string page = report(document);
    for (const char* section : { "Picture", "Mesh", "Figures", "Components", "Path", "Distance",
             "Colours", "Drawing", "Settings", "Messages", "Tree" }) {
        EXPECT_TRUE(has(page, "<section id=\"" + std::string(section) + "\">")) << section;
    }
    for (const char* text :
        { "width=\"200\" height=\"150\" src=\"data:image/png;base64,iVBOR", "<td>0 1 2 </td>",
            ">group digits</th><td>6<", "<th scope=\"row\">&lt;i&gt;</th>", "class=\"bar\"" }) {
        EXPECT_TRUE(has(page, text)) << text;
    }
    EXPECT_TRUE(has(page, kHarmless));
    EXPECT_FALSE(has(page, "<script>alert"));
    EXPECT_FALSE(has(page, "class=\"note\""));
    EXPECT_EQ(page.find("http"), page.find("http-equiv"));
    EXPECT_EQ(page.rfind("http"), page.find("http-equiv"));
}

TEST(HtmlReportTest, WhatDoesNotFitTheMeshIsLeftOutWithANote)
{
    for (const bool hasMesh : { false, true }) {
        Document document = hasMesh ? Document(Mesh()) : Document();
        PartMaker(document, SPartNames::kPath)
            .Add<TaPathNode>(SPartNames::kData, TaPathData({ 0, 9, 1.0, { 0, 9 } }));
        const std::string page = report(document);
        EXPECT_TRUE(has(page, "left out: the path does not fit the mesh"));
        EXPECT_FALSE(has(page, "id=\"Picture\""));
        EXPECT_FALSE(has(page, "id=\"Messages\""));
    }

    Document document(makeSquare());
    SColoring endless = makeColors(4);
    endless.upper = std::numeric_limits<double>::infinity();
    PartMaker(document, SPartNames::kColours)
        .Add<TaColoringNode>(SPartNames::kData, TaColoringData(makeColors(3)));
    PartMaker(document, SPartNames::kPicture)
        .Add<TaParameterNode>(SPartNames::kParameters, TaParameterData(makePictureOptions(1 << 30)))
        .Add<TaColoringNode>(SPartNames::kData, TaColoringData(endless));
    const std::string page = report(document);
    for (const char* note : { "The stored options make no picture", "The path is left out",
             "The stored colours do not fit", "left out: they do not fit the mesh" }) {
        EXPECT_TRUE(has(page, note)) << note;
    }
    EXPECT_TRUE(has(page, "width=\"1200\" height=\"900\" src=\"data:"));

    Document another(makeSquare());
    TaParameterSet nowhere = makePictureOptions(200);
    nowhere.SetParameter(u"view-x", std::numeric_limits<double>::quiet_NaN());
    PartMaker(another, SPartNames::kPicture)
        .Add<TaParameterNode>(SPartNames::kParameters, TaParameterData(nowhere));
    PartMaker(another, SPartNames::kPath) // longer than any through four vertices
        .Add<TaPathNode>(SPartNames::kData, TaPathData({ 0, 1, 1.0, { 0, 1, 0, 1, 0, 1 } }));
    const std::string second = report(another);
    EXPECT_TRUE(has(second, "The stored options make no picture"));
    EXPECT_TRUE(has(second, "The path is left out"));
}

TEST(HtmlReportTest, LargeDocumentsMakePagesOfBoundedSize)
{
    Document document(makeSquare());
    PartMaker wide(document, SPartNames::kFigures);
    for (int i = 0; i < 10000; ++i) {
        wide.Add<TaDataNodeUInt64>(u"Edges", TuUInt64(4));
    }
    auto deep = TuMake<TaNode>(u"deep", true, true);
    insert(document, deep, document.GetTree().GetRootNode());
    for (int i = 0; i < 1000; ++i) {
        const auto below = TuMake<TaNode>(u"deep", true, true);
        insert(document, below, deep);
        deep = below;
    }
    SMessageHistory history = makeHistory();
    for (std::uint32_t i = 0; i < 20000; ++i) {
        // From the last time that there is to the first.
        const std::uint64_t time = std::numeric_limits<std::uint64_t>::max() / (i + 1);
        history.texts.push_back("handler " + std::to_string(i));
        history.steps.push_back({ time, SMessageTrace::eS_Queued, false, i, 0, 0, i });
    }
    PartMaker(document, SPartNames::kTrace)
        .Add<TaTraceNode>(SPartNames::kData, TaTraceData(history))
        .Add<TaNumbersNode>(
            u"numbers", TaNumbersData(std::vector<std::uint32_t>(std::size_t{ 1 } << 20)));
    for (int i = 0; i < 40; ++i) {
        PartMaker many(document, u"many");
        for (int j = 0; j < 100; ++j) {
            many.Add<TaDataNodeUInt64>(u"counted", TuUInt64(4));
        }
    }
    const std::string page = report(document);
    EXPECT_LT(page.size(), 2u << 20);
    std::size_t nodes = 0;
    for (std::size_t at = 0; (at = page.find("<b>", at)) != page.npos; ++at) {
        ++nodes;
    }
    EXPECT_LE(nodes, 3000u);
    for (const char* text : { "… 9800 more", "… 1 more", "… and more",
             "messages, of other handlers", "The trace goes on" }) {
        EXPECT_TRUE(has(page, text)) << text;
    }
}

TEST(MessageSpansTest, StepsBecomeTheWayOfAMessage)
{
    SMessageHistory history = makeHistory();
    history.texts.push_back("dispatcher");
    const std::uint8_t queued = SMessageTrace::eS_Queued;
    const std::uint8_t delivered = SMessageTrace::eS_Delivered;
    const std::uint8_t answered = SMessageTrace::eS_Answered;
    for (const SStep& step : {
             SStep{ 6500, answered, false, 7, 2, 0, 1 },
             // The dispatcher passes a message on, and does not answer it.
             SStep{ 6600, queued, false, 9, 1, 0, 2 }, SStep{ 6700, delivered, false, 9, 3, 0, 2 },
             SStep{ 6800, queued, false, 9, 3, 0, 1 },
             SStep{ 7000, delivered, false, 9, 2, 0, 1 }, // is not over
             SStep{ 8000, answered, true, 3, 2, 0, 1 }, // began before the trace
         }) {
        history.steps.push_back(step);
    }
    const std::vector<SMessageSpan> spans = FindMessageSpans(history, 100);
    ASSERT_EQ(spans.size(), 5u);
    EXPECT_EQ(spans[0].command, kHostile);
    EXPECT_EQ(spans[0].GetStart(), 1000u);
    EXPECT_EQ(spans[0].delivered, 2000u);
    EXPECT_EQ(spans[0].GetEnd(), 6500u);
    EXPECT_FALSE(spans[0].isDropped);
    EXPECT_TRUE(spans[1].isDropped);
    EXPECT_EQ(spans[1].GetEnd(), 6000u);
    EXPECT_TRUE(spans[2].isPassedOn);
    EXPECT_EQ(spans[2].GetEnd(), 6800u);
    EXPECT_EQ(spans[3].GetStart(), 6800u);
    EXPECT_FALSE(spans[3].ended);
    EXPECT_EQ(spans[3].GetEnd(), 8000u); // the end of the trace
    EXPECT_EQ(spans[4].GetStart(), 8000u);
    EXPECT_EQ(FindMessageSpans(history, 1).size(), 1u);
}

} // namespace
