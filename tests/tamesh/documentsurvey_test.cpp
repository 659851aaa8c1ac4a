#include "tamesh/documentsurvey.h"

#include "support/temporaryfolder.h"
#include "tamesh/documentbytes.h"
#include "tamesh/meshgenerator.h"
#include "tamesh/rangechecksums.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace tamesh;

using Parts = std::vector<std::pair<std::string, std::string>>; // names and payloads

/// A part with one value of the class, whose bytes may be any.
std::string makePayload(const CString& name, const CString& className, const std::string& value)
{
    return BytesOf([&](auto& stream) {
        stream << name << 0u << 1u; // version, count of nodes
        stream << 0u << CString(u"Value") << static_cast<unsigned char>(7);
        stream << CString(u"TaDataNodeString") << className;
        stream.WriteBuffer(value.data(), value.size());
        stream << 0u;
    });
}

std::string write(const Parts& parts)
{
    return BytesOf([&](auto& stream) {
        DocumentWriter writer;
        for (const auto& [name, payload] : parts) {
            writer.AddStored(CString::FromUtf8(name), AsBytes(payload));
        }
        writer.Write(stream);
    });
}

Parts getRescued(const DocumentSurvey& survey)
{
    Parts parts;
    for (const auto& item : survey.GetItems()) {
        if (item.IsRescued()) {
            parts.emplace_back(
                item.name.ToUtf8(), std::string(item.payload.begin(), item.payload.end()));
        }
    }
    return parts;
}

/// Names of what is not sound, "?" for bytes of no chunk.
std::string listFaults(const DocumentSurvey& survey)
{
    std::string faults;
    for (const auto& item : survey.GetItems()) {
        if (item.state != DocumentSurvey::eS_Sound) {
            faults += item.state == DocumentSurvey::eS_Foreign ? "?" : item.name.ToUtf8();
            faults += ' ';
        }
    }
    return faults;
}

class DocumentSurveyTest : public testing::Test
{
protected:
    DocumentSurveyTest()
    {
        const std::string mesh
            = BytesOf([](auto& stream) { Document(MakeSphere(1)).Save(stream); });
        m_parts = getRescued(DocumentSurvey(AsBytes(mesh)));
        const std::string text
            = BytesOf([](auto& stream) { stream << 0u << CString(std::u16string(100, u'x')); });
        m_parts.emplace_back("Figures", makePayload(u"Figures", u"TuString", text));
        m_bytes = write(m_parts);
        // The frames, with the start as the first.
        m_frames.push_back(m_bytes.substr(0, kDocumentStartSize));
        const DocumentSurvey survey(AsBytes(m_bytes));
        for (const auto& item : survey.GetItems()) {
            m_frames.push_back(m_bytes.substr(
                static_cast<std::size_t>(item.offset), static_cast<std::size_t>(item.size)));
        }
    }

    std::string join(const std::vector<std::size_t>& frames) const
    {
        std::string bytes;
        for (const std::size_t frame : frames) {
            bytes += m_frames[frame];
        }
        return bytes;
    }

    /// Nobody takes it for sound; what is salvaged is a sound document of parts as they were.
    void expectDamaged(const std::string& bytes, std::size_t fewest)
    {
        Document document;
        EXPECT_THROW(LoadFromBytes(document, bytes), TuException);
        const DocumentSurvey survey(AsBytes(bytes));
        EXPECT_FALSE(survey.IsSound());
        const Parts rescued = getRescued(survey);
        EXPECT_GE(rescued.size(), fewest);
        for (const auto& part : rescued) {
            EXPECT_NE(std::ranges::find(m_parts, part), m_parts.end()) << part.first;
        }
        EXPECT_EQ(survey.IsAnythingLeft(), !rescued.empty());
        const std::string salvaged = BytesOf([&](auto& stream) { WriteSalvaged(stream, survey); });
        EXPECT_TRUE(salvaged == write(rescued));
    }

    Parts m_parts;
    std::string m_bytes;
    std::vector<std::string> m_frames;
};

TEST(RangeChecksumsTest, AnyRangeHasTheChecksumOfItsBytes)
{
    std::string bytes(2 * 4096, '\0'); // blocks of the class, and none left over
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * i % 251);
    }
    const RangeChecksums checksums(AsBytes(bytes));
    const std::size_t places[] = { 0, 1, 4095, 4096, 4097, 8191, 8192 };
    for (const std::size_t begin : places) {
        for (const std::size_t end : places) {
            if (begin <= end) {
                EXPECT_EQ(checksums.Get(17, begin, end - begin),
                    AddToChecksum(17, bytes.data() + begin, end - begin))
                    << begin << " to " << end;
            }
        }
    }
}

TEST_F(DocumentSurveyTest, EveryFlippedBitIsNoticedAndCostsOnePartAtMost)
{
    ASSERT_GT(m_bytes.size(), 2000u);
    std::string damaged = m_bytes;
    std::map<std::string, int> costs;
    for (std::size_t place = 0; place < m_bytes.size() && !HasFailure(); ++place) {
        for (int bit = 0; bit < 8; ++bit) {
            SCOPED_TRACE(testing::Message() << "bit " << bit << " of byte " << place);
            damaged[place] = static_cast<char>(m_bytes[place] ^ (1 << bit));
            expectDamaged(damaged, m_parts.size() - 1);
            ++costs[listFaults(DocumentSurvey(AsBytes(damaged)))];
        }
        damaged[place] = m_bytes[place];
    }
    // It is named, and the place is that of the frame: nothing of a neighbour is lost.
    std::map<std::string, int> expected;
    const char* const names[] = { "", "head ", "Mesh ", "Geometry ", "Figures ", "end " };
    for (std::size_t i = 0; i < m_frames.size(); ++i) {
        expected[names[i]] = static_cast<int>(m_frames[i].size()) * 8;
    }
    EXPECT_EQ(costs, expected);
}

TEST_F(DocumentSurveyTest, CutShiftedOrLongerItLosesOnlyThePartsThatAreHit)
{
    std::vector<std::size_t> begins;
    std::vector<std::size_t> ends; // of the parts
    std::size_t end = m_frames[0].size() + m_frames[1].size();
    for (std::size_t i = 2; i < 5; ++i) {
        begins.push_back(end);
        ends.push_back(end += m_frames[i].size());
    }
    for (std::size_t place = 0; place < m_bytes.size() && !HasFailure(); ++place) {
        SCOPED_TRACE(place);
        const auto whole = static_cast<std::size_t>(
            std::ranges::count_if(ends, [&](std::size_t other) { return other <= place; }));
        expectDamaged(m_bytes.substr(0, place), whole);
        if (place != 0) {
            const auto before = static_cast<std::size_t>(
                std::ranges::count_if(begins, [&](std::size_t other) { return other < place; }));
            expectDamaged(m_bytes.substr(place), m_parts.size() - before);
        }
        expectDamaged(
            m_bytes.substr(0, place) + '\x8A' + m_bytes.substr(place), m_parts.size() - 1);
    }
    expectDamaged(m_bytes + '\0', m_parts.size());
    // Where both lists of the parts are lost, nobody knows whether these were all.
    const std::string middle = join({ 2, 3 });
    EXPECT_FALSE(DocumentSurvey(AsBytes(middle)).IsPartsKnown());
    expectDamaged(middle, 2);
    EXPECT_EQ(listFaults(DocumentSurvey(AsBytes(join({ 0, 1, 3, 4 })))), "Mesh end ");
}

TEST_F(DocumentSurveyTest, ChunksInAnotherOrderTwiceOrFromElsewhereAreNoticed)
{
    const std::vector<std::size_t> orders[] = { { 0, 1, 3, 2, 4, 5 }, { 0, 1, 2, 2, 3, 4, 5 },
        { 0, 1, 2, 3, 4, 5, 5 }, { 0, 1, 2, 3, 4, 5, 2 }, { 0, 2, 1, 3, 4, 5 },
        { 0, 0, 1, 2, 3, 4, 5 }, { 1, 2, 3, 4, 5 } };
    for (const auto& order : orders) {
        SCOPED_TRACE(testing::PrintToString(order));
        expectDamaged(join(order), m_parts.size());
    }
    // The payload of one frame in another of the same length.
    const std::size_t place = kFrameHeaderSize;
    const Parts twins{ { "A", makePayload(u"A", u"", "") }, { "B", makePayload(u"B", u"", "") } };
    std::string bytes = write(twins);
    const std::size_t size = twins[0].second.size() + kFrameOverhead;
    const std::size_t a = bytes.find(twins[0].second) - place;
    std::swap_ranges(bytes.begin() + static_cast<std::ptrdiff_t>(a + place),
        bytes.begin() + static_cast<std::ptrdiff_t>(a + size),
        bytes.begin() + static_cast<std::ptrdiff_t>(a + size + place));
    EXPECT_EQ(listFaults(DocumentSurvey(AsBytes(bytes))), "A B ");

    // A part of another document, with all checksums right, in the place of ours.
    Parts others = m_parts;
    others[2].second[others[2].second.find('x')] = 'y'; // can be read as well
    const std::string other = write(others);
    const std::string start = join({ 0, 1, 2, 3 });
    bytes = start + other.substr(start.size(), m_frames[4].size()) + join({ 5 });
    Document document;
    EXPECT_THROW(LoadFromBytes(document, bytes), TuExceptionStream);
    EXPECT_FALSE(DocumentSurvey(AsBytes(bytes)).IsSound());
}

TEST_F(DocumentSurveyTest, WhatThisProgramCannotReadIsKeptByteForByte)
{
    m_parts.emplace_back("Later", makePayload(u"Later", u"TuLaterClass", "\x01\x02 any bytes"));
    const std::string bytes = write(m_parts);
    const DocumentSurvey survey(AsBytes(bytes));
    EXPECT_TRUE(survey.IsSound());
    EXPECT_EQ(listFaults(survey), "Later ");
    EXPECT_NE(survey.GetItems()[4].fault.find("\"TuLaterClass\", which is not known here"),
        std::string::npos);
    EXPECT_EQ(BytesOf([&](auto& stream) { WriteSalvaged(stream, survey); }), bytes);

    // What no program has written is no document's, whatever its checksum.
    m_parts.back().second
        = makePayload(u"Later", u"TuString", std::string(4, '\0') + "far too long");
    const std::string hostile = write(m_parts);
    const DocumentSurvey malformed(AsBytes(hostile));
    EXPECT_EQ(listFaults(malformed), "Later ");
    EXPECT_EQ(getRescued(malformed).size(), 3u);
}

TEST_F(DocumentSurveyTest, ADocumentInsideAPartIsNotTakenForTheDocument)
{
    m_parts.emplace_back("Inner", makePayload(u"Inner", u"TuLaterClass", m_bytes));
    std::string bytes = write(m_parts);
    const std::size_t place = bytes.find(m_bytes.substr(kDocumentStartSize), m_bytes.size() / 2);
    ASSERT_NE(place, std::string::npos);
    bytes[place + m_frames[1].size() + 50] ^= 1;
    EXPECT_EQ(listFaults(DocumentSurvey(AsBytes(bytes))), "Inner ");
}

TEST_F(DocumentSurveyTest, OldDocumentsAreConvertedWhereTheirOneChecksumIsRight)
{
    for (const char version : { '0', '1' }) {
        std::string bytes = ReadFile(
            TA_TEST_DATA_FOLDER "/tamesh_document_" + std::string(1, version) + ".tadoc");
        const DocumentSurvey survey(AsBytes(bytes));
        EXPECT_TRUE(survey.IsSound());
        Document document;
        LoadFromBytes(document, BytesOf([&](auto& stream) { WriteSalvaged(stream, survey); }));
        EXPECT_EQ(document.GetMesh().GetVertexCount(), 5u);

        bytes.back() ^= 1;
        const DocumentSurvey damaged(AsBytes(bytes));
        EXPECT_EQ(damaged.GetForm(), DocumentSurvey::eF_Old);
        EXPECT_FALSE(damaged.IsSound());
        EXPECT_FALSE(damaged.IsAnythingLeft());
    }
}

TEST_F(DocumentSurveyTest, WhatIsNoDocumentOrALaterOneIsToldApart)
{
    EXPECT_EQ(DocumentSurvey({}).GetForm(), DocumentSurvey::eF_None);
    EXPECT_EQ(DocumentSurvey(AsBytes("OFF\n3 1 0\n")).GetForm(), DocumentSurvey::eF_None);
    std::string later = m_frames[0] + "what is not known";
    later[kDocumentMarker.size()] = 3;
    EXPECT_EQ(DocumentSurvey(AsBytes(later)).GetForm(), DocumentSurvey::eF_Later);
}

} // namespace
