#include "tamesh/document.h"

#include "support/bufferbytes.h"
#include "support/expectfailure.h"
#include "support/temporaryfolder.h"
#include "support/versionedrecord.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tabase/tauniqueid.h"
#include "tamesh/meshgenerator.h"
#include "tamesh/meshtext.h"
#include "tamesh/meshtree.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>

namespace {

using namespace tamesh;

// Where things lie in a document.
constexpr std::size_t kFormatVersion = 8;
constexpr std::size_t kChunkVersion = 12;
constexpr std::size_t kClassName = 20;
constexpr std::size_t kRecordVersion = 44;
constexpr std::size_t kVertexCount = 48;
constexpr std::size_t kFaceCount = 52;
constexpr std::size_t kVertices = 56;
constexpr std::size_t kVertexSize = 24;

std::string save(const Document& document)
{
    return BytesOf([&](auto& stream) { document.Save(stream); });
}

void load(Document& document, const std::string& bytes)
{
    TaStreamReadBinaryBuffer stream(bytes.data(), bytes.size());
    document.Load(stream);
}

template <class Exception> void expectRefused(const std::string& bytes)
{
    Document document;
    ExpectFailure<Exception>([&] { load(document, bytes); });
}

/// Puts the number in and makes the checksum right again, as an attacker would.
template <class Number> std::string withNumber(std::string bytes, std::size_t place, Number number)
{
    auto* data = reinterpret_cast<unsigned char*>(bytes.data());
    TuStoreLittleEndian(data + place, number);
    const std::size_t end = bytes.size() - sizeof(std::uint32_t);
    TuStoreLittleEndian(data + end, static_cast<std::uint32_t>(crc32_z(0, data, end)));
    return bytes;
}

TEST(DocumentTest, ReadsBothVersionsAndWritesTheBytesOfTheLater)
{
    const std::string golden = ReadFile(TA_TEST_DATA_FOLDER "/tamesh_document_1.tadoc");
    for (const char* name : { "/tamesh_document_0.tadoc", "/tamesh_document_1.tadoc" }) {
        SCOPED_TRACE(name);
        Document document;
        load(document, ReadFile(TA_TEST_DATA_FOLDER + std::string(name)));
        EXPECT_EQ(WriteMeshText(document.GetMesh()),
            "OFF\n5 2 0\n0 0 0\n1.5 0 0\n0 -2 0\n0.1 1e+300 -0\n5e-324 3 4\n3 0 1 2\n4 4 3 1 0\n");
        if (document.GetTree().FindChild(u"Mesh")->FindChild(u"Name").IsNull()) {
            NameMesh(document.GetTree(), "folder/golden.v1.off", TaUniqueID(platform::Uuid{ 1 }));
        }
        EXPECT_EQ(save(document), golden);
        EXPECT_EQ(document.GetSavedSize(), golden.size());
    }
}

TEST(DocumentTest, CutOrChangedAnywhereItIsRefusedAndTheMeshThatWasThereStays)
{
    Document document(MakeTorus(3));
    const std::string former = save(document);
    const std::string bytes = save(Document(MakeSphere(1)));
    for (std::size_t place = 0; place < bytes.size(); ++place) {
        SCOPED_TRACE(place);
        expectRefused<TuExceptionStream>(bytes.substr(0, place));
        for (int bit = 0; bit < 8; ++bit) {
            std::string damaged = bytes;
            damaged[place] = static_cast<char>(damaged[place] ^ (1 << bit));
            EXPECT_THROW(load(document, damaged), TuException) << bit;
        }
    }
    expectRefused<TuExceptionStream>(bytes + '\0');
    EXPECT_EQ(save(document), former);

    const std::string large = save(Document(MakeSphere(60))); // more than a block
    EXPECT_THROW(load(document, large.substr(0, large.size() - 1)), TuExceptionStream);
    EXPECT_EQ(save(document), former);
    load(document, large);
    EXPECT_TRUE(save(document) == large);
}

TEST(DocumentTest, RefusesForeignFilesLaterVersionsAndUnsoundMeshes)
{
    const Mesh sphere = MakeSphere(1);
    const std::string bytes = save(Document(sphere));
    expectRefused<TuExceptionWrongFileVersion>("OFF\n3 1 0\n0 0 0\n");
    for (const std::size_t place : { kFormatVersion, kChunkVersion, kRecordVersion }) {
        expectRefused<TuExceptionWrongFileVersion>(withNumber(bytes, place, 2u));
    }
    expectRefused<TuException>(withNumber(bytes, kClassName, 'X'));
    expectRefused<TuExceptionStream>(BytesOf([&](auto& stream) { // a class that is no mesh
        stream.WriteBuffer(bytes.data(), kChunkVersion);
        stream.WriteChunk(VersionedRecord());
        stream << 0u;
    }));

    // Counts that claim more than arrives take no memory for it.
    const std::size_t faceSizes = kVertices + sphere.GetVertexCount() * kVertexSize;
    const std::size_t corners = faceSizes + sphere.GetFaceCount() * sizeof(std::uint32_t);
    const std::pair<std::size_t, std::uint32_t> wrongNumbers[] = { { kVertexCount, ~0u },
        { kVertexCount, 5u }, { kFaceCount, ~0u }, { kFaceCount, 0u }, { faceSizes, ~0u },
        { faceSizes, 0x7FFFFFFFu }, { corners, sphere.GetVertexCount() } };
    for (const auto& [place, number] : wrongNumbers) {
        Document document; // which record finds the fault depends on the number
        EXPECT_THROW(load(document, withNumber(bytes, place, number)), TuException) << place;
    }
    // As many corners as before.
    expectRefused<TuExceptionStream>(
        withNumber(withNumber(bytes, faceSizes, 2u), faceSizes + sizeof(std::uint32_t), 4u));
    for (const double number : { std::nan(""), -std::numeric_limits<double>::infinity() }) {
        expectRefused<TuExceptionStream>(withNumber(bytes, kVertices, number));
    }
}

} // namespace
