#include "support/bufferbytes.h"
#include "tabase/tacolortables.h"
#include "tamesh/coloring.h"
#include "tamesh/meshgenerator.h"
#include "tamesh/meshpicture.h"
#include "tamesh/pngwriter.h"
#include "tamesh/vectors.h"

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#include <gtest/gtest.h>
#include <stb/stb_image.h>

#include <algorithm>
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

void scale(Mesh& mesh, double factor)
{
    TuArray<SPoint> vertices;
    for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
        vertices.Add(mesh.GetVertex(i) * factor);
    }
    mesh.SetVertices(std::move(vertices));
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

struct SBox
{
    int left = 0;
    int top = 0;
    int right = kSize.width;
    int bottom = kSize.height;
};

constexpr SBox kFrame{ 0, 30, kSize.width - 90, kSize.height }; // without title and bar

/// Pixels that differ from those of the other image, or from a colour.
int countDifferent(
    const Image& image, const SBox& box, const std::function<TaColor(int, int)>& expected)
{
    int count = 0;
    for (int y = box.top; y < box.bottom; ++y) {
        for (int x = box.left; x < box.right; ++x) {
            count += image.GetPixel(x, y) != expected(x, y);
        }
    }
    return count;
}
int countDifferent(const Image& image, const SBox& box, TaColor color)
{
    return countDifferent(image, box, [&](int, int) { return color; });
}

TaColor red(double, double, double) { return kRed; }
TaColor blue(double, double, double) { return kBlue; }

TEST(RasterTest, TheNearerHidesTheFartherInAnyOrder)
{
    const std::array<SPoint, 3> near{ SPoint{ 0, 0, 5 }, { 20, 0, 5 }, { 0, 20, 5 } };
    const std::array<SPoint, 3> far{ SPoint{ 0, 0, 1 }, { 20, 0, 1 }, { 0, 20, 9 } };
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
    Raster fan({ 50, 50 }, kWhite);
    const SPoint middle{ 47.3, 51.9, 0 };
    const std::array<SPoint, 5> corners{ SPoint{ 0, 0, 0 }, { 99.9, 0.3, 0 }, { 100, 33.3, 0 },
        { 100, 100, 0 }, { 0, 100, 0 } };
    for (std::size_t i = 0; i < corners.size(); ++i) {
        fan.FillTriangle({ middle, corners[(i + 1) % corners.size()], corners[i] }, blue);
    }
    EXPECT_EQ(countDifferent(fan.MakeImage(), { 1, 1, 49, 49 }, kBlue), 0);

    Raster thin({ 50, 50 }, kWhite);
    const std::array<SPoint, 3> triangle{ SPoint{ 10.1, 50.1, 0 }, { 90.1, 50.1, 0 },
        { 20, 50.2, 0 } };
    EXPECT_TRUE(Raster::IsNarrow(triangle));
    thin.FillTriangle(triangle, blue);
    thin.TraceTriangle(triangle, blue);
    const double infinity = std::numeric_limits<double>::infinity();
    thin.FillTriangle({ SPoint{ 0, 0, infinity }, { 1e300, 0, 0 }, { 0, std::nan(""), 0 } }, blue);
    thin.FillTriangle({ SPoint{ -1e5, -1e5, -1 }, { 1e5, -1e5, -1 }, { 0, -10, -1 } }, blue);
    EXPECT_EQ(countDifferent(thin.MakeImage(), { 5, 25, 45, 26 }, kWhite), 40);
}

TEST(PictureTest, WhatIsSeenDependsOnTheDirectionAndIsGreyWithoutAValue)
{
    Mesh mesh;
    addSquare(mesh, 0.0);
    addSquare(mesh, 1.0);
    SColoring coloring = makeColoring({ 0, 0, 0, 0, 1, 1, 1, 1 });
    const auto seen = [&](const SPoint& toViewer, int x, int y) {
        return hueOf(takePicture(mesh, coloring, toViewer).GetPixel(x, y));
    };
    EXPECT_EQ(seen({ 0, 0, 1 }, 100, 130), 'b');
    EXPECT_EQ(seen({ 0, 0, -1e300 }, 100, 130), 'r');
    EXPECT_EQ(seen({ 0, -1, 0.1 }, 100, 175), 'r'); // almost from the side: one above the other
    EXPECT_EQ(seen({ 0, -1, 0.1 }, 100, 85), 'b');
    EXPECT_EQ(seen({ 0, -1, 0.1 }, 100, 130), '.');

    for (const float none : { std::numeric_limits<float>::max(), std::nanf("") }) {
        coloring.values.back() = none;
        EXPECT_EQ(seen({ 0, 0, 1 }, 60, 90), 'g');
    }
}

TEST(PictureTest, APathIsThickInFrontOfTheMeshAndThinBehind)
{
    Mesh mesh;
    addSquare(mesh, 0.0);
    mesh.AddVertex({ -0.8, 0.3, 0.0 });
    mesh.AddVertex({ 0.8, 0.3, 0.0 });
    const SColoring coloring = makeColoring(std::vector<float>(8, 1.0f));
    std::vector<std::uint32_t> path{ 4, 5 };
    /// In a column of pixels that the path crosses, seen from above or below.
    const auto countPath = [&](double z) {
        const Image without = takePicture(mesh, coloring, { 0, 0, z });
        return countDifferent(takePicture(mesh, coloring, { 0, 0, z }, path),
            { 100, 30, 101, kSize.height }, [&](int x, int y) { return without.GetPixel(x, y); });
    };
    EXPECT_EQ(countPath(1), countPath(-1)); // in the surface it is seen from both sides
    mesh.AddVertex({ -0.8, 0.3, -0.5 });
    mesh.AddVertex({ 0.8, 0.3, -0.5 });
    path = { 6, 7 };
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
                EXPECT_GT(countDifferent(takePicture(mesh, coloring, toViewer), kFrame, kWhite), 3)
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
    for (const double factor : { 1.79e308, 1.0, 5e-324 }) {
        Mesh mesh;
        addSquare(mesh, 0.0);
        scale(mesh, factor);
        expectSomething(mesh, "a square, some of it seen edge-on: ");
    }
}

TEST(ColoringTest, TheMeanCurvatureOfABallIsTheReciprocalOfItsRadiusAndBordersHaveNone)
{
    Mesh mesh = MakeSphere(40);
    scale(mesh, 1000);
    const SColoring ball = ColorByCurvature(mesh);
    EXPECT_NEAR(ball.upper * FindBounds(mesh).upper.x, 1.0, 0.02);
    EXPECT_EQ(ball.lower, -ball.upper);
    EXPECT_GT(*std::ranges::min_element(ball.values), 0.95f);

    const SColoring terrain = ColorByCurvature(MakeTerrain(8));
    EXPECT_EQ(std::ranges::count_if(terrain.values, [](float x) { return std::isnan(x); }), 32);
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
    EXPECT_EQ(countDifferent(image, SBox(),
                  [&](int x, int y) {
                      const stbi_uc* const bytes = pixels.get() + (y * width + x) * channels;
                      const TaColor color(bytes[0], bytes[1], bytes[2], 255);
                      checksum = checksum * 31 + color.GetDword();
                      return color;
                  }),
        0);
    // The same on every system and processor: nothing that is drawn depends on the C library.
    EXPECT_EQ(checksum, 2043531221u);
}

} // namespace
