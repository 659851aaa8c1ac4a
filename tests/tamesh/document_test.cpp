#include "tamesh/document.h"

#include "groundwork/tulittleendian.h"
#include "support/allocationlimit.h"
#include "support/expectfailure.h"
#include "support/temporaryfolder.h"
#include "tabase/tadatanodes.h"
#include "tabase/tamessagetrace.h"
#include "tabase/tauniqueid.h"
#include "tamesh/documentbytes.h"
#include "tamesh/meshgenerator.h"
#include "tamesh/meshtext.h"
#include "tamesh/meshtree.h"
#include "tamesh/resultvalues.h"
#include "tamesh/tatracedata.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <string>
#include <utility>

namespace {

using namespace tamesh;

// Where things lie in the payload of "Geometry".
constexpr std::size_t kTreeVersion = 20;
constexpr std::size_t kValueClass = 73;
constexpr std::size_t kDataVersion = 93;
constexpr std::size_t kRecordVersion = 98;
constexpr std::size_t kVertexCount = 102;
constexpr std::size_t kFaceCount = 106;
constexpr std::size_t kVertices = 110;
constexpr std::size_t kVertexSize = 24;

template <class Exception> std::string expectRefused(const std::string& bytes)
{
    Document document;
    return ExpectFailure<Exception>([&] { LoadFromBytes(document, bytes); });
}

template <class Number>
std::string withNumber(const std::string& bytes, std::size_t place, Number number)
{
    return WithPayload(bytes, u"Geometry", [&](std::string& payload) {
        TuStoreLittleEndian(reinterpret_cast<unsigned char*>(payload.data()) + place, number);
    });
}

TuSmartPointer<TaNode> insert(
    TaDataManager& tree, const TuSmartPointer<TaNode>& node, const TuSmartPointer<TaNode>& parent)
{
    EXPECT_TRUE(tree.InsertNode(node, parent));
    return node;
}

TuSmartPointer<TaNode> makeText()
{
    return TuMake<TaDataNodeString>(u"Text", TuMake<TuString>(u"ä€\U0001F642"), true, true);
}

TEST(DocumentTest, ReadsAllVersionsAndWritesTheBytesOfTheLatest)
{
    const std::string golden = ReadFile(TA_TEST_DATA_FOLDER "/tamesh_document_2.tadoc");
    for (const char version : { '0', '1', '2' }) {
        SCOPED_TRACE(version);
        Document document;
        LoadFromBytes(document,
            ReadFile(TA_TEST_DATA_FOLDER "/tamesh_document_" + std::string(1, version) + ".tadoc"));
        EXPECT_EQ(document.GetProgram().ToUtf8(), version == '2' ? "tamesh 0.1.0" : "");
        EXPECT_FALSE(document.GetTree().GetRootNode()->IsModified(true));
        EXPECT_EQ(WriteMeshText(document.GetMesh()),
            "OFF\n5 2 0\n0 0 0\n1.5 0 0\n0 -2 0\n0.1 1e+300 -0\n5e-324 3 4\n3 0 1 2\n4 4 3 1 0\n");
        if (document.GetTree().FindChild(u"Mesh")->FindChild(u"Name").IsNull()) {
            NameMesh(document.GetTree(), "folder/golden.v1.off", TaUniqueID(platform::Uuid{ 1 }));
        }
        EXPECT_EQ(SaveToBytes(document), golden);
    }
}

/// A document with one of each result. docs/format.md has led another program to the same values.
Document makeResults(const SMessageHistory& history)
{
    Document document;
    const auto part = TuMake<TaNode>(u"Results", true, true);
    insert(document.GetTree(), part, document.GetTree().GetRootNode());
    const auto add = [&](const auto& node) { insert(document.GetTree(), node, part); };
    std::vector<std::uint32_t> numbers(70'000); // more than a block
    std::iota(numbers.begin(), numbers.end(), 5u);
    SColoring coloring;
    coloring.title = "title";
    coloring.lower = -1.5;
    coloring.upper = 2.5;
    coloring.names = { "a", "b" };
    coloring.table = TuMake<TaColorTable>(2ul, 0.25F, 0.75F);
    coloring.table->SetUnderflowColor(TaColor::FromDword(0x01020304u));
    coloring.table->SetOverflowColor(TaColor::FromDword(0x05060708u));
    coloring.table->SetEntryColor(0, TaColor::FromDword(0x090A0B0Cu));
    coloring.table->SetEntryColor(1, TaColor::FromDword(0x0D0E0F10u));
    coloring.values = { 0.5F, -0.0F, 1e-40F };
    TaParameterSet parameters;
    parameters.SetParameter(u"to", 7);
    parameters.SetParameter(u"by", u"height");
    add(TuMake<TaPathNode>(
        u"Path", TuMake<TaPathData>(SMeshPath{ 3, 9, 1.25, { 3, 4, 9 } }), true, true));
    add(TuMake<TaNumbersNode>(u"Numbers", TuMake<TaNumbersData>(numbers), true, true));
    add(TuMake<TaDistanceNode>(u"Distance",
        TuMake<TaDistanceData>(
            3u, 0.5, std::vector{ 0.0F, 1.5F, std::numeric_limits<float>::max() }),
        true, true));
    add(TuMake<TaColoringNode>(u"Colours", TuMake<TaColoringData>(coloring), true, true));
    add(TuMake<TaParameterNode>(u"Parameters", TuMake<TaParameterData>(parameters), true, true));
    add(TuMake<TaTraceNode>(u"Trace", TuMake<TaTraceData>(history), true, true));
    return document;
}

TEST(DocumentTest, ResultsAreReadAndWrittenAsTheBytesOfTheirFirstVersion)
{
    SMessageHistory history;
    history.texts = { "Command", "Export" };
    history.steps = { { 1'000'000'000'000, SMessageTrace::eS_Dropped, true, 7, 8, 0, 1 } };
    history.commands = { { 7, "info" } };
    const std::string golden = ReadFile(TA_TEST_DATA_FOLDER "/tamesh_results_2.tadoc");
    EXPECT_TRUE(SaveToBytes(makeResults(history)) == golden);
    Document document;
    LoadFromBytes(document, golden);
    EXPECT_TRUE(SaveToBytes(document) == golden);
    for (int i = 0; i < 3; ++i) { // steps that make no sense
        SMessageHistory wrong = history;
        wrong.steps[0].step = i == 0 ? SMessageTrace::eS_Dropped + 1 : SMessageTrace::eS_Queued;
        wrong.steps[0].messageClass = i == 1 ? 2 : 0;
        wrong.steps[0].handler = i == 2 ? 2 : 0;
        expectRefused<TuExceptionStream>(SaveToBytes(makeResults(wrong)));
    }
    const std::string hostile = WithPayload(golden, u"Results", [](std::string& payload) {
        const std::string count("\2\0\0\0\0\0\x80\x3E", 8); // of colours, and their range
        payload.replace(payload.find(count), 4, "\xFF\xFF\xFF\xFF");
    });
    const AllocationLimit limit(1'000'000);
    expectRefused<TuExceptionStream>(hostile);
    EXPECT_LT(limit.GetLargest(), std::size_t{ 1 } << 20);
}

TEST(DocumentTest, HoldsAnyPartsOfAnyTreeAndHandsThemOver)
{
    TaDataManager session;
    const auto top = insert(session, TuMake<TaNode>(u"a mesh", true, true), session.GetRootNode());
    const auto part = insert(session, TuMake<TaNode>(u"Figures", true, true), top);
    const auto node = insert(session, TuMake<TaNode>(u"Deeper", true, true), part);
    insert(session, makeText(), node);
    insert(session, TuMake<TaNode>(u"Empty", true, true), top); // nothing in it is stored
    const auto save = [&] { return BytesOf([&](auto& stream) { WriteDocument(stream, *top); }); };
    const std::string bytes = save();

    Document document;
    LoadFromBytes(document, bytes);
    EXPECT_FALSE(document.HasMesh());
    EXPECT_EQ(document.GetMesh().GetVertexCount(), 0u);
    EXPECT_EQ(document.GetPacked(), nullptr);
    EXPECT_EQ(document.GetProgram().ToUtf8(), "tamesh " TAMESH_VERSION);
    EXPECT_EQ(document.GetTree().GetRootNode()->ToString().ToUtf8(),
        "Root (TaNode)\n |-- Figures (TaNode)\n     |-- Deeper (TaNode)\n"
        "         |-- Text (TaDataNodeString) = ä€\U0001F642\n");
    EXPECT_EQ(BytesOf([&](auto& stream) { document.Save(stream); }), bytes);

    TaDataManager other;
    for (const auto& taken : document.TakeParts()) {
        insert(other, taken, other.GetRootNode());
    }
    EXPECT_EQ(BytesOf([&](auto& stream) { WriteDocument(stream, *other.GetRootNode()); }), bytes);
    EXPECT_FALSE(document.GetTree().GetRootNode()->HasChildren());
    LoadFromBytes(document, BytesOf([&](auto& stream) { document.Save(stream); }));
    EXPECT_FALSE(document.GetTree().GetRootNode()->HasChildren());

    insert(session, makeText(), top); // a value is no part, and must not be left out unseen
    EXPECT_THROW(save(), TuException);
}

TEST(DocumentTest, WhatIsNotLoadedLeavesTheDocumentAsItWas)
{
    Document document(MakeTorus(3));
    const std::string former = SaveToBytes(document);
    const std::string large = SaveToBytes(Document(MakeSphere(60))); // more than a block
    EXPECT_THROW(LoadFromBytes(document, large.substr(0, large.size() - 1)), TuExceptionStream);
    EXPECT_EQ(SaveToBytes(document), former);
    LoadFromBytes(document, large);
    EXPECT_TRUE(SaveToBytes(document) == large);
}

TEST(DocumentTest, RefusesForeignFilesLaterVersionsAndUnsoundMeshes)
{
    const Mesh sphere = MakeSphere(1);
    const std::string bytes = SaveToBytes(Document(sphere));
    expectRefused<TuExceptionWrongFileVersion>("OFF\n3 1 0\n0 0 0\n");
    expectRefused<TuExceptionWrongFileVersion>(bytes.substr(0, 8) + '\3' + bytes.substr(9));
    for (const std::size_t place : { kTreeVersion, kDataVersion, kRecordVersion }) {
        const std::string report
            = expectRefused<TuExceptionWrongFileVersion>(withNumber(bytes, place, 2u));
        EXPECT_NE(report.find(": chunk 2 (Geometry): "), report.npos) << report;
    }
    expectRefused<TuException>(withNumber(bytes, kValueClass, 'X'));
    expectRefused<TuExceptionStream>(
        WithPayload(bytes, u"Geometry", [](std::string& payload) { payload += '\0'; }));

    // Counts that claim more than arrives take no memory for it.
    const std::size_t faceSizes = kVertices + sphere.GetVertexCount() * kVertexSize;
    const std::size_t corners = faceSizes + sphere.GetFaceCount() * sizeof(std::uint32_t);
    const std::pair<std::size_t, std::uint32_t> wrongNumbers[] = { { kVertexCount, ~0u },
        { kVertexCount, 5u }, { kFaceCount, ~0u }, { kFaceCount, 0u }, { faceSizes, ~0u },
        { faceSizes, 0x7FFFFFFFu }, { corners, sphere.GetVertexCount() } };
    for (const auto& [place, number] : wrongNumbers) {
        Document document; // which record finds the fault depends on the number
        EXPECT_THROW(LoadFromBytes(document, withNumber(bytes, place, number)), TuException)
            << place;
    }
    // As many corners as before.
    expectRefused<TuExceptionStream>(
        withNumber(withNumber(bytes, faceSizes, 2u), faceSizes + sizeof(std::uint32_t), 4u));
    for (const double number : { std::nan(""), -std::numeric_limits<double>::infinity() }) {
        expectRefused<TuExceptionStream>(withNumber(bytes, kVertices, number));
    }
}

} // namespace
