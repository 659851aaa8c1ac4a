#include "support/bufferbytes.h"
#include "tabase/tacolortables.h"
#include "tamesh/coloring.h"
#include "tamesh/meshgenerator.h"
#include "tamesh/meshpicture.h"
#include "tamesh/pngwriter.h"

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#include <gtest/gtest.h>
#include <stb/stb_image.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <string>

namespace {

using namespace tamesh;

constexpr TaColor kWhite;
constexpr TaColor kRed = TaColor::FromDword(0xFFFF0000u);
constexpr TaColor kBlue = TaColor::FromDword(0xFF0000FFu);

/// The brightest channel tells the colour of a side, whatever the light.
char hueOf(TaColor color)
{
    const std::uint32_t word = color.GetDword();
    const std::uint32_t red = word >> 16 & 0xFFu;
    const std::uint32_t blue = word & 0xFFu;
    return color == kWhite ? '.' : red > blue ? 'r' : red < blue ? 'b' : 'g';
}

/// A horizontal square with corners at +-1.
void addSquare(Mesh& mesh, double height)
{
    const std::uint32_t first = mesh.GetVertexCount();
    for (const auto& [x, y] :
        { std::pair(-1.0, -1.0), { 1.0, -1.0 }, { 1.0, 1.0 }, { -1.0, 1.0 } }) {
        mesh.AddVertex({ x, y, height });
    }
    mesh.AddFace({ first, first + 1, first + 2, first + 3 });
}

/// Values below 0.5 are red, above blue.
SColoring makeColoring(std::vector<float> values)
{
    SColoring coloring{ "test", std::move(values), TuMake<TaColorTable>(2u), 0.0, 1.0, {} };
    coloring.table->SetEntryColor(0, kRed);
    coloring.table->SetEntryColor(1, kBlue);
    return coloring;
}

constexpr SSize kSize{ 290, 240 }; // of which the mesh has 180 x 200, around (100, 130)

Image takePicture(const Mesh& mesh, const SColoring& coloring, const SPoint& toViewer,
    const std::vector<std::uint32_t>& path = {})
{
    MeshPicture picture(mesh, coloring, { kSize, toViewer });
    picture.DrawMesh();
    picture.DrawPath(path);
    return picture.MakeImage();
}

int countPixels(const Image& image, const std::function<bool(int, int, TaColor)>& isCounted)
{
    int count = 0;
    for (int y = 0; y < image.GetSize().height; ++y) {
        for (int x = 0; x < image.GetSize().width; ++x) {
            count += isCounted(x, y, image.GetPixel(x, y));
        }
    }
    return count;
}

bool isInFrame(int x, int y) { return x < kSize.width - 90 && y >= 30; }

TEST(RasterTest, TheNearerHidesTheFartherInAnyOrder)
{
    const std::array<SPoint, 3> near{ SPoint{ 0, 0, 5 }, { 20, 0, 5 }, { 0, 20, 5 } };
    const std::array<SPoint, 3> far{ SPoint{ 0, 0, 1 }, { 20, 0, 1 }, { 0, 20, 9 } };
    const auto red = [](double, double, double) { return kRed; };
    const auto blue = [](double, double, double) { return kBlue; };
    Raster raster({ 20, 20 }, kWhite);
    raster.FillTriangle(near, red);
    raster.FillTriangle(far, blue);
    Raster other({ 20, 20 }, kWhite);
    other.FillTriangle(far, blue);
    other.FillTriangle(near, red);
    for (const Raster* each : { &raster, &other }) {
        const Image image = each->MakeImage();
        EXPECT_EQ(image.GetPixel(2, 1), kRed);
        EXPECT_EQ(image.GetPixel(1, 7), kBlue); // the farther one leans forward there
        EXPECT_EQ(image.GetPixel(9, 9), kWhite);
        EXPECT_TRUE(each->IsVisible({ 2, 2, 5 }, 0.1));
        EXPECT_FALSE(each->IsVisible({ 2, 2, 4 }, 0.1));
    }
}

TEST(RasterTest, NeighboursLeaveNoGapAndNarrowTrianglesStillShow)
{
    const auto blue = [](double, double, double) { return kBlue; };
    Raster fan({ 50, 50 }, kWhite);
    const SPoint middle{ 47.3, 51.9, 0 };
    const std::array<SPoint, 5> corners{ SPoint{ 0, 0, 0 }, { 99.9, 0.3, 0 }, { 100, 33.3, 0 },
        { 100, 100, 0 }, { 0, 100, 0 } };
    for (std::size_t i = 0; i < corners.size(); ++i) {
        fan.FillTriangle({ middle, corners[(i + 1) % corners.size()], corners[i] }, blue);
    }
    const Image image = fan.MakeImage();
    EXPECT_EQ(countPixels(image,
                  [](int x, int y, TaColor color) {
                      return x > 0 && x < 49 && y > 0 && y < 49 && color != kBlue;
                  }),
        0);

    Raster thin({ 50, 50 }, kWhite);
    const std::array<SPoint, 3> triangle{ SPoint{ 10.1, 50.1, 0 }, { 90.1, 50.1, 0 },
        { 20, 50.2, 0 } };
    EXPECT_TRUE(Raster::IsNarrow(triangle));
    thin.FillTriangle(triangle, blue);
    thin.TraceTriangle(triangle, blue);
    const double infinity = std::numeric_limits<double>::infinity();
    thin.FillTriangle({ SPoint{ 0, 0, infinity }, { 1e300, 0, 0 }, { 0, std::nan(""), 0 } }, blue);
    thin.FillTriangle({ SPoint{ -1e5, -1e5, -1 }, { 1e5, -1e5, -1 }, { 0, -10, -1 } }, blue);
    EXPECT_EQ(countPixels(thin.MakeImage(),
                  [](int x, int y, TaColor color) {
                      return x >= 5 && x < 45 && y == 25 && color != kWhite;
                  }),
        40);
}

TEST(PictureTest, WhatIsSeenDependsOnTheDirection)
{
    Mesh mesh;
    addSquare(mesh, 0.0);
    addSquare(mesh, 1.0);
    const SColoring coloring = makeColoring({ 0, 0, 0, 0, 1, 1, 1, 1 });
    const auto seen = [&](const SPoint& toViewer, int x, int y) {
        return hueOf(takePicture(mesh, coloring, toViewer).GetPixel(x, y));
    };
    EXPECT_EQ(seen({ 0, 0, 1 }, 100, 130), 'b');
    EXPECT_EQ(seen({ 0, 0, -1e300 }, 100, 130), 'r');
    EXPECT_EQ(seen({ 0, -1, 0.1 }, 100, 175), 'r'); // almost from the side: one above the other
    EXPECT_EQ(seen({ 0, -1, 0.1 }, 100, 85), 'b');
    EXPECT_EQ(seen({ 0, -1, 0.1 }, 100, 130), '.');
}

TEST(PictureTest, WhatHasNoValueIsGrey)
{
    Mesh mesh;
    addSquare(mesh, 0.0);
    for (const float value : { std::numeric_limits<float>::max(), std::nanf("") }) {
        const Image image
            = takePicture(mesh, makeColoring({ value, value, value, value }), { 0, 0, 1 });
        EXPECT_EQ(hueOf(image.GetPixel(100, 130)), 'g');
    }
}

TEST(PictureTest, APathIsThickInFrontOfTheMeshAndThinBehind)
{
    Mesh mesh;
    addSquare(mesh, 0.0);
    mesh.AddVertex({ -0.8, 0.3, 0.0 });
    mesh.AddVertex({ 0.8, 0.3, 0.0 });
    const SColoring coloring = makeColoring(std::vector<float>(6, 1.0f));
    /// In a column of pixels that the path crosses, seen from above or below.
    const auto countPath = [&](double z) {
        const Image without = takePicture(mesh, coloring, { 0, 0, z });
        return countPixels(
            takePicture(mesh, coloring, { 0, 0, z }, { 4, 5 }), [&](int x, int y, TaColor color) {
                return x == 100 && color != without.GetPixel(x, y);
            });
    };
    EXPECT_GE(countPath(1), 3);
    EXPECT_EQ(countPath(1), countPath(-1)); // in the surface it is seen from both sides
    TuArray<SPoint> vertices;
    for (std::uint32_t i = 0; i < 6; ++i) {
        const SPoint& point = mesh.GetVertex(i);
        vertices.Add({ point.x, point.y, i < 4 ? 0.0 : -0.5 });
    }
    mesh.SetVertices(std::move(vertices));
    EXPECT_GE(countPath(1), 1);
    EXPECT_LT(countPath(1), countPath(-1));
}

TEST(PictureTest, TheBarShowsTheTableAndItsNumbers)
{
    Mesh mesh;
    addSquare(mesh, 0.0);
    SColoring coloring = makeColoring({ 0, 0, 1, 1 });
    const Image image = takePicture(mesh, coloring, { 0, 0, 1 });
    const int left = kSize.width - 90;
    EXPECT_EQ(image.GetPixel(left + 5, 31), kBlue);
    EXPECT_EQ(image.GetPixel(left + 5, 30 + 190 - 1), kRed);
    const auto hasTick = [&](const Image& picture, int y) {
        return hueOf(picture.GetPixel(left + 12 + 2, y)) == 'g';
    };
    EXPECT_TRUE(hasTick(image, 30 + 114)); // 0.4
    EXPECT_FALSE(hasTick(image, 30 + 100));
    coloring.upper = 1e300;
    EXPECT_TRUE(hasTick(takePicture(mesh, coloring, { 0, 0, 1 }), 30));
    coloring.names = { "a", "b" };
    EXPECT_TRUE(hasTick(takePicture(mesh, coloring, { 0, 0, 1 }), 30 + 143));
}

TEST(PictureTest, WhateverTheMeshThereIsAPicture)
{
    const auto expectSomething = [](const Mesh& mesh, const char* what) {
        for (const SColoring& coloring :
            { ColorByHeight(mesh, eA_Z), ColorByCurvature(mesh), ColorByComponent(mesh) }) {
            for (const SPoint& toViewer : { SPoint{ 1, -2, 1.5 }, { 1, 0, 0 }, { 0, 0, 1 } }) {
                const Image image = takePicture(mesh, coloring, toViewer);
                EXPECT_GT(countPixels(image,
                              [](int x, int y, TaColor color) {
                                  return isInFrame(x, y) && color != kWhite;
                              }),
                    3)
                    << what << coloring.title;
            }
        }
    };
    Mesh point;
    point.AddVertex({ 1, 2, 3 });
    expectSomething(point, "a point: ");
    Mesh collapsed;
    collapsed.AddVertex({ -1e300, 0, 1e300 });
    collapsed.AddFace({ 0, 0, 0, 0 });
    expectSomething(collapsed, "a face without area: ");
    for (const double scale : { 1.79e308, 1.0, 5e-324 }) {
        Mesh mesh;
        addSquare(mesh, 0.0);
        TuArray<SPoint> vertices;
        for (std::uint32_t i = 0; i < 4; ++i) {
            const SPoint& vertex = mesh.GetVertex(i);
            vertices.Add({ vertex.x * scale, vertex.y * scale, 0.0 });
        }
        mesh.SetVertices(vertices);
        expectSomething(mesh, "a square, some of it seen edge-on: ");
    }
}

TEST(ColoringTest, TheMeanCurvatureOfAScaledBallIsTheReciprocalOfItsRadius)
{
    Mesh mesh = MakeSphere(40);
    const double radius = FindBounds(mesh).upper.x * 1000;
    TuArray<SPoint> vertices;
    for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
        const SPoint& point = mesh.GetVertex(i);
        vertices.Add({ point.x * 1000, point.y * 1000, point.z * 1000 });
    }
    mesh.SetVertices(std::move(vertices));
    const SColoring coloring = ColorByCurvature(mesh);
    EXPECT_NEAR(coloring.upper * radius, 1.0, 0.02);
    EXPECT_EQ(coloring.lower, -coloring.upper);
    EXPECT_GT(*std::ranges::min_element(coloring.values), 0.95f);
}

TEST(ColoringTest, BordersHaveNoCurvature)
{
    const SColoring coloring = ColorByCurvature(MakeTerrain(8));
    EXPECT_EQ(
        std::ranges::count_if(coloring.values, [](float value) { return std::isnan(value); }), 32);
}

TEST(ColoringTest, ComponentsHaveColoursOfTheirOwnTheLargestFirst)
{
    Mesh mesh;
    mesh.AddVertex({ 0, 0, 0 });
    addSquare(mesh, 0.0);
    const SColoring two = ColorByComponent(mesh);
    EXPECT_EQ(two.names, (std::vector<std::string>{ "1", "4" }));
    EXPECT_EQ(two.values, (std::vector<float>{ 0.5f, 1.5f, 1.5f, 1.5f, 1.5f }));
    for (int i = 0; i < 8; ++i) {
        mesh.AddVertex({ 0, 0, 1 });
    }
    const SColoring many = ColorByComponent(mesh);
    EXPECT_EQ(many.names.size(), 8u);
    EXPECT_EQ(many.names.front(), "others");
    EXPECT_EQ(many.names.back(), "4");
    EXPECT_EQ(many.values.back(), 0.5f);
}

TEST(ColoringTest, HeightsKeepTheirDigitsFarAboveZero)
{
    Mesh mesh;
    for (const double height : { 1e12, 1e12 + 1, 1e12 + 4 }) {
        mesh.AddVertex({ height, 0, 0 });
    }
    EXPECT_EQ(ColorByHeight(mesh, eA_X).values, (std::vector<float>{ 0.0f, 0.25f, 1.0f }));
}

TEST(PNGTest, KeepsEveryPixel)
{
    const Mesh mesh = MakeTorus(30);
    const Image image = takePicture(mesh, ColorByHeight(mesh, eA_Z), { 1, -2, 1.5 });
    const std::string file = BytesOf([&](auto& stream) { WritePNG(stream, image); });
    int width = 0;
    int height = 0;
    int channels = 0;
    const std::unique_ptr<stbi_uc, decltype(&stbi_image_free)> pixels(
        stbi_load_from_memory(reinterpret_cast<const stbi_uc*>(file.data()),
            static_cast<int>(file.size()), &width, &height, &channels, 0),
        &stbi_image_free);
    ASSERT_NE(pixels, nullptr);
    ASSERT_EQ((SSize{ width, height }), kSize);
    ASSERT_EQ(channels, 3);
    std::uint32_t checksum = 0;
    EXPECT_EQ(countPixels(image,
                  [&](int x, int y, TaColor color) {
                      const stbi_uc* const bytes = pixels.get() + (y * width + x) * channels;
                      const std::uint32_t word = 0xFF000000u
                          | static_cast<std::uint32_t>(bytes[0]) << 16
                          | static_cast<std::uint32_t>(bytes[1]) << 8 | bytes[2];
                      checksum = checksum * 31 + word;
                      return word != color.GetDword();
                  }),
        0);
    // The same on every system and processor: nothing that is drawn depends on the C library.
    EXPECT_EQ(checksum, 2043531221u);
}

} // namespace
