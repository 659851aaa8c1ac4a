#include "groundwork/tulittleendian.h"
#include "support/bufferbytes.h"
#include "support/temporaryfolder.h"
#include "support/testrandom.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tabase/tauniqueid.h"
#include "tamesh/commands.h"
#include "tamesh/coordinateform.h"
#include "tamesh/documentbytes.h"
#include "tamesh/fakeconsole.h"
#include "tamesh/meshgenerator.h"
#include "tamesh/meshtext.h"
#include "tamesh/meshtree.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace tamesh;

constexpr double kLargest = std::numeric_limits<double>::max();

Mesh unpack(const TaPackedMeshRecord& record) { return record.Unpack(nullptr); }

Mesh packAndUnpack(const Mesh& mesh, const CoordinateForm& form)
{
    const TaPackedMeshRecord record(mesh, form, nullptr);
    const std::string bytes = BytesOf([&](auto& stream) { record.Serialize(stream); });
    EXPECT_EQ(bytes.size(), record.GetStoredSize());
    TaStreamReadBinaryBuffer stream(bytes.data(), bytes.size());
    TaPackedMeshRecord read;
    read.Serialize(stream);
    EXPECT_EQ(stream.GetRemaining(), 0u);
    return unpack(read);
}

/// All kinds of faces and vertices: of no face, of faces that come later, twice in a face, polygons
/// after triangles.
Mesh makeAwkwardMesh(const std::vector<double>& coordinates)
{
    Mesh mesh;
    for (std::size_t i = 0; i + 2 < coordinates.size(); ++i) {
        mesh.AddVertex({ coordinates[i], coordinates[i + 1], coordinates[i + 2] });
    }
    const std::uint32_t n = mesh.GetVertexCount();
    mesh.AddFace({ n - 1, n - 2, n - 3 });
    mesh.AddFace({ n - 2, n - 3, 1 });
    mesh.AddFace({ 1, 1, 1 });
    mesh.AddFace({ 2, 1, 3, n - 1, 4 });
    mesh.AddFace({ 4, n - 1, 1 });
    mesh.AddFace({ n - 1, 4, 5 });
    return mesh;
}

std::vector<Mesh> makeMeshes()
{
    std::vector<Mesh> meshes{ Mesh(), MakeTerrain(20), MakeSphere(7), MakeTorus(9) };
    Mesh points;
    points.AddVertex({ 3.5, 0.0, -2.0 });
    points.AddVertex({ 3.5, 0.0, -2.0 }); // a box without extent
    meshes.push_back(points);
    meshes.push_back(
        makeAwkwardMesh({ 1.5, -0.0, 0.0, 0x1p-149, -0x1p127, 7.0, 0.25, 0x1p-140, 0x1p127 }));
    meshes.push_back(makeAwkwardMesh({ 0.1, -0.7, 1e-7, 123456.7, -0.0, 3e38, 9.5e-41, 0.3, 2.0 }));
    meshes.push_back(
        makeAwkwardMesh({ 5e-324, -kLargest / 4, 1e300, 0.1, -0.0, 1.0 / 3, 1e-320, 7.0, 0.5 }));
    return meshes;
}

TEST(PackedMeshTest, LosslessKeepsEveryBitInTheSmallestFormThatHoldsIt)
{
    const std::vector<Mesh> meshes = makeMeshes();
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        SCOPED_TRACE(i);
        const CoordinateForm form = CoordinateForm::MakeLossless(meshes[i]);
        if (i + 3 >= meshes.size()) { // floats, decimals, doubles
            EXPECT_EQ(form.GetKind(), i + 3 - meshes.size());
        }
        // The text tells all doubles from each other, and -0 from 0.
        EXPECT_EQ(WriteMeshText(packAndUnpack(meshes[i], form)), WriteMeshText(meshes[i]));
    }
}

/// The measured error is compared with a bound that is computed here from the step alone.
void expectWithinHalfStep(const Mesh& mesh, unsigned int bits)
{
    const CoordinateForm form = CoordinateForm::MakeQuantized(mesh, bits);
    const Mesh restored = packAndUnpack(mesh, form);
    ASSERT_EQ(restored.GetVertexCount(), mesh.GetVertexCount());
    if (mesh.GetVertexCount() == 0) {
        return;
    }
    const auto [lower, upper] = FindBounds(mesh);
    const double side = std::max({ upper.x - lower.x, upper.y - lower.y, upper.z - lower.z });
    const double step = side / (std::ldexp(1.0, static_cast<int>(bits)) - 1.0);
    const double farthest = std::max({ -lower.x, -lower.y, -lower.z, upper.x, upper.y, upper.z });
    const double bound = form.GetLargestError({ lower, upper });
    if (side != 0.0) {
        EXPECT_NEAR(form.GetStep(), step, 0.0001 * step);
        EXPECT_LE(bound, 0.50005 * step + side * 0x1p-24 + std::abs(farthest) * 0x1p-52);
    }
    for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
        for (const auto axis : { &SPoint::x, &SPoint::y, &SPoint::z }) {
            ASSERT_LE(std::abs(restored.GetVertex(i).*axis - mesh.GetVertex(i).*axis), bound)
                << "vertex " << i;
        }
    }
}

TEST(PackedMeshTest, QuantizedCoordinatesMoveByHalfAStepAtMost)
{
    std::mt19937 random(GetTestSeed());
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    std::vector<Mesh> meshes = makeMeshes();
    for (const double scale : { 1e-320, 1e-30, 1.0, 12345.678, 1e300, kLargest / 2 }) {
        for (const double shift : { 0.0, 1e6 * scale }) {
            std::vector<double> coordinates(100);
            for (double& coordinate : coordinates) {
                coordinate = std::min(value(random) * scale + shift, kLargest / 2);
            }
            meshes.push_back(makeAwkwardMesh(coordinates));
        }
    }
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        for (const unsigned int bits : { 1u, 2u, 11u, 16u, 23u, 24u }) {
            SCOPED_TRACE(testing::Message() << "mesh " << i << ", bits " << bits);
            expectWithinHalfStep(meshes[i], bits);
        }
    }

    const Mesh tooLarge = makeAwkwardMesh({ kLargest, -kLargest, 0.0, 1.0, 2.0, 3.0, 4.0, 5.0 });
    EXPECT_THROW(CoordinateForm::MakeQuantized(tooLarge, 16), std::range_error);
}

TEST(PackedMeshTest, TheDocumentHasTheSameBytesEverywhere)
{
    Mesh mesh = MakeSphere(2);
    mesh.AddVertex({ 0.3, -0.7, 0.1 });
    mesh.AddFace({ 0, 1, 2, mesh.GetVertexCount() - 1 });
    const std::pair<std::string, CoordinateForm> forms[] = {
        { TA_TEST_DATA_FOLDER "/tamesh_lossless_", CoordinateForm::MakeLossless(mesh) },
        { TA_TEST_DATA_FOLDER "/tamesh_quantized_", CoordinateForm::MakeQuantized(mesh, 13) }
    };
    for (const auto& [name, form] : forms) {
        SCOPED_TRACE(name);
        Document document(mesh);
        NameMesh(document.GetTree(), "folder/golden.off", TaUniqueID(platform::Uuid{ 1 }));
        document.Pack(form);
        const std::string bytes = SaveToBytes(document);
        for (const char* version : { "1", "2" }) {
            const std::string golden = ReadFile(name + version + ".tadoc");
            EXPECT_TRUE(*version == '1' || bytes == golden);
            Document restored;
            LoadFromBytes(restored, golden);
            EXPECT_EQ(SaveToBytes(restored), bytes);
        }
    }
}

/// Of several blocks of vertices and faces, and more edges than are remembered.
Mesh makeGrid()
{
    constexpr std::uint32_t kSide = 260;
    Mesh mesh;
    for (std::uint32_t i = 0; i < kSide * kSide; ++i) {
        mesh.AddVertex({ 1.0 * (i % kSide), 1.0 * (i / kSide), i * i % 97 * 0.25 });
    }
    for (std::uint32_t begin = 0; begin < kSide * (kSide - 1); begin += kSide) {
        const bool isOfQuads = begin / kSide % 5 == 0;
        for (std::uint32_t i = begin; i + 1 < begin + kSide; ++i) {
            if (isOfQuads) {
                mesh.AddFace({ i, i + 1, i + kSide + 1, i + kSide });
            } else { // its last corner lies across an edge of the row before
                mesh.AddFace({ i, i + 1, i + kSide });
            }
        }
        for (std::uint32_t i = begin; !isOfQuads && i + 1 < begin + kSide; ++i) {
            mesh.AddFace({ i + 1, i + kSide + 1, i + kSide });
        }
    }
    return mesh;
}

TEST(PackedMeshTest, LargeMeshesAndDoublesHaveTheSameBytesEverywhere)
{
    const Mesh grid = makeGrid();
    const Mesh doubles = makeAwkwardMesh({ kLargest, -kLargest, 0.1, 1.0, 2.0, 3.0, kLargest, 5.0,
        1.0 / 3, -kLargest, kLargest, 7.0, -5e-324, -0.0, 1e300, kLargest, -kLargest, 1.0 });
    const struct
    {
        const Mesh& mesh;
        CoordinateForm form;
        std::uint32_t checksum; // CRC-32
    } kRecords[] = { { grid, CoordinateForm::MakeLossless(grid), 0x9B75A0C1 },
        { grid, CoordinateForm::MakeQuantized(grid, 11), 0xD0D7889B },
        { doubles, CoordinateForm::MakeLossless(doubles), 0x53BC358E } };
    for (const auto& [mesh, form, checksum] : kRecords) {
        const TaPackedMeshRecord record(mesh, form, nullptr);
        const std::string bytes = BytesOf([&](auto& stream) { record.Serialize(stream); });
        EXPECT_EQ(crc32(0, reinterpret_cast<const unsigned char*>(bytes.data()),
                      static_cast<unsigned int>(bytes.size())),
            checksum);
        if (form.GetStep() == 0.0) {
            EXPECT_EQ(WriteMeshText(unpack(record)), WriteMeshText(mesh));
        }
    }
}

/// The record alone, where no checksum stands in the way.
TEST(PackedMeshTest, DamagedOrCutItIsRefusedOrASoundMesh)
{
    const Mesh mesh = MakeSphere(2);
    for (const CoordinateForm& form :
        { CoordinateForm::MakeLossless(mesh), CoordinateForm::MakeQuantized(mesh, 10) }) {
        const TaPackedMeshRecord record(mesh, form, nullptr);
        const std::string bytes = BytesOf([&](auto& stream) { record.Serialize(stream); });
        const auto read = [&](const std::string& damaged) {
            TaStreamReadBinaryBuffer stream(damaged.data(), damaged.size());
            TaPackedMeshRecord other;
            other.Serialize(stream);
            const Mesh found = unpack(other);
            for (const std::uint32_t corner : found.GetCorners()) {
                ASSERT_LT(corner, found.GetVertexCount());
            }
            for (std::uint32_t i = 0; i < found.GetVertexCount(); ++i) {
                const SPoint& point = found.GetVertex(i);
                ASSERT_TRUE(
                    std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z));
            }
        };
        for (std::size_t place = 0; place < bytes.size(); ++place) {
            SCOPED_TRACE(place);
            EXPECT_THROW(read(bytes.substr(0, place)), TuExceptionStream);
            for (int bit = 0; bit < 8; ++bit) {
                std::string damaged = bytes;
                damaged[place] = static_cast<char>(damaged[place] ^ (1 << bit));
                try {
                    read(damaged);
                } catch (const TuException&) {
                    continue;
                }
            }
        }
        const auto expectRefused = [&](std::size_t place, std::uint32_t claim) {
            std::string damaged = bytes;
            TuStoreLittleEndian(reinterpret_cast<unsigned char*>(damaged.data()) + place, claim);
            EXPECT_THROW(read(damaged), TuExceptionStream) << claim << " at " << place;
        };
        for (const std::size_t count : { 12u, 16u }) { // of vertices, of faces
            for (const std::uint32_t claim : { 70'000u, 0xFFFFFFFEu, 0xFFFFFFFFu }) {
                expectRefused(count, claim);
            }
        }
        if (form.GetKind() == CoordinateForm::eK_Quantized) {
            expectRefused(45, 1101); // the exponent
            expectRefused(45, 0x80000000);
            expectRefused(49, std::bit_cast<std::uint32_t>(0.2505f)); // half of the box
        }
        std::string longer = bytes + 'x';
        TuStoreLittleEndian<std::uint64_t>(
            reinterpret_cast<unsigned char*>(longer.data()) + 4, bytes.size() - 11);
        EXPECT_THROW(read(longer), TuExceptionStream);
    }
    Mesh line;
    line.AddVertex({});
    line.AddFace({ 0, 0 });
    EXPECT_THROW(packAndUnpack(line, CoordinateForm::MakeLossless(line)), TuExceptionStream);
}

TEST(PackedMeshTest, PackShowsSizesAndErrorAndUnpackGivesTheMeshBack)
{
    const TemporaryFolder folder;
    const auto name = [&](std::string_view file) { return (folder / file).ToUtf8(); };
    FakeConsole console;
    console.pace = 1000;
    ASSERT_EQ(MakeMesh(console, eS_Sphere, 90, name("a.off")), eEC_Done);
    const std::string original = folder.ReadAll("a.off");

    ASSERT_EQ(
        PackMesh(console, name("a.off"), name("a.tadoc"), { SPackOptions::eF_Lossless }), eEC_Done);
    for (const char* line : { "\n  raw  ", "\n  zlib  ", "\n  lossless  ",
             "\n  quantized, 16 bits ", "  none: all bits are the same\n" }) {
        EXPECT_NE(console.output.find(line), std::string::npos) << console.output;
    }
    EXPECT_NE(console.error.find("comparing"), std::string::npos) << console.error;
    ASSERT_EQ(UnpackDocument(console, name("a.tadoc"), name("b.off")), eEC_Done);
    EXPECT_EQ(folder.ReadAll("b.off"), original);

    console.output.clear();
    ASSERT_EQ(PackMesh(console, name("a.off"), name("q.tadoc"), { SPackOptions::eF_Quantized, 9 }),
        eEC_Done);
    EXPECT_NE(console.output.find("\n  quantized, 9 bits  "), std::string::npos) << console.output;
    EXPECT_NE(console.output.find(" of at most 0.00"), std::string::npos) << console.output;
    EXPECT_LT(folder.ReadAll("q.tadoc").size(), folder.ReadAll("a.tadoc").size());

    console.interrupt.Set();
    EXPECT_EQ(UnpackDocument(console, name("a.tadoc"), name("c.off")), eEC_Interrupted);
    EXPECT_EQ(PackMesh(console, name("a.off"), name("c.tadoc"), { SPackOptions::eF_Lossless }),
        eEC_Interrupted);
}

} // namespace
