#include "tamesh/meshpicture.h"

#include "tamesh/picturebar.h"
#include "tamesh/picturetext.h"
#include "tamesh/vectors.h"
#include "tamesh/vertexnormals.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace tamesh {

namespace {

    constexpr TaColor kPaper = TaColor::FromDword(0xFFFFFFFFu);
    constexpr TaColor kInk = TaColor::FromDword(0xFF202020u);
    constexpr TaColor kNoValue = TaColor::FromDword(0xFFB0B0B0u);

    // In pixels, at text scale 1.
    constexpr int kMargin = 10;
    constexpr int kTitleHeight = 20;
    constexpr int kBarWidth = 12;
    constexpr int kBarSpace = 90; // with its numbers

    // In samples, at text scale 1.
    constexpr double kPathRadius = 2.5;
    constexpr double kPathRim = 1.0;
    constexpr double kHiddenRadius = 1.0;
    constexpr int kDashLength = 8;
    constexpr double kMarkRadius = 7.0;

    /// How bright a side is that has this direction, which points to the viewer. No side is dark:
    /// its colour is to be told from others.
    double findBrightness(const SPoint& normal)
    {
        constexpr double kLeast = 0.55;
        static const SPoint light = Normalise({ -0.4, -0.6, 1.0 });
        return kLeast + (1.0 - kLeast) * std::max(0.0, Dot(normal, light));
    }

    TaColor darken(TaColor color, double brightness)
    {
        const auto factor = static_cast<std::uint32_t>(brightness * 256.0);
        std::uint32_t word = 0xFFu;
        for (const unsigned int shift : { 16u, 8u, 0u }) {
            word = word << 8 | (color.GetDword() >> shift & 0xFFu) * factor >> 8;
        }
        return TaColor::FromDword(word);
    }

} // namespace

MeshPicture::MeshPicture(
    const Mesh& mesh, const SColoring& coloring, const SPictureOptions& options, Progress* progress)
    : m_mesh(mesh)
    , m_coloring(coloring)
    , m_options(options)
    , m_textScale(std::max(1, std::min(options.size.width / 500, options.size.height / 320)))
    , m_progress(progress)
    , m_steps(progress)
    , m_positions(View(options.toViewer, options.up).Project(mesh, getFrame(), m_steps))
    , m_raster(options.size, kPaper)
{
}

std::uint64_t MeshPicture::CountSteps(const Mesh& mesh)
{
    return 3 * std::uint64_t{ mesh.GetVertexCount() } + 3 * std::uint64_t{ mesh.GetFaceCount() };
}

SFrame MeshPicture::getFrame() const
{
    const int margin = kMargin * m_textScale;
    const int top = margin + kTitleHeight * m_textScale;
    const auto toSamples
        = [](int pixels) { return static_cast<double>(pixels * Raster::kSamplesPerPixel); };
    return { toSamples(margin), toSamples(top),
        toSamples(m_options.size.width - 2 * margin - kBarSpace * m_textScale),
        toSamples(m_options.size.height - top - margin) };
}

float MeshPicture::valueOf(std::uint32_t vertex) const
{
    const float value = m_coloring.values[vertex];
    return value == std::numeric_limits<float>::max() ? std::numeric_limits<float>::quiet_NaN()
                                                      : value;
}

TaColor MeshPicture::colorOf(float value) const
{
    return std::isnan(value) ? kNoValue : m_coloring.table->GetColorValue(value);
}

void MeshPicture::DrawMesh()
{
    const std::vector<SPoint> normals = FindVertexNormals(m_mesh, m_positions, m_steps);
    for (const EPass pass : { eP_Fill, eP_Trace }) {
        for (std::uint32_t i = 0; i < m_mesh.GetFaceCount(); ++i) {
            drawFace(i, normals, pass);
            m_steps.Advance();
        }
    }
    drawIsolatedVertices();
}

void MeshPicture::drawFace(std::uint32_t face, std::span<const SPoint> normals, EPass pass)
{
    constexpr double kSmooth = 0.85; // the cosine of the angle up to which sides look like one
    constexpr std::int64_t kSamplesPerPoll = 1 << 20; // few faces may cover much

    ForEachTriangle(m_mesh.GetFace(face), [&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        const std::array<std::uint32_t, 3> vertices{ a, b, c };
        const std::array<SPoint, 3> corners{ m_positions[a], m_positions[b], m_positions[c] };
        if (pass == eP_Trace && !Raster::IsNarrow(corners)) {
            return;
        }
        SPoint normal = Normalise(Cross(corners[1] - corners[0], corners[2] - corners[0]));
        normal = normal.z < 0.0 ? normal * -1.0 : normal;
        std::array<double, 3> values{};
        std::array<double, 3> lights{};
        for (std::size_t i = 0; i < 3; ++i) {
            values[i] = static_cast<double>(valueOf(vertices[i]));
            const SPoint& smooth = normals[vertices[i]];
            const double cosine = Dot(smooth, normal);
            lights[i] = findBrightness(std::abs(cosine) < kSmooth ? normal
                    : cosine < 0.0                                ? smooth * -1.0
                                                                  : smooth);
        }
        const auto colorAt = [&](double i, double j, double k) {
            const auto mix = [=](const std::array<double, 3>& numbers) {
                return i * numbers[0] + j * numbers[1] + k * numbers[2];
            };
            return darken(colorOf(static_cast<float>(mix(values))), mix(lights));
        };
        m_unpolledSamples += pass == eP_Fill ? m_raster.FillTriangle(corners, colorAt)
                                             : m_raster.TraceTriangle(corners, colorAt);
        if (m_unpolledSamples > kSamplesPerPoll && m_progress != nullptr) {
            m_unpolledSamples = 0;
            m_progress->CheckInterrupt();
        }
    });
}

void MeshPicture::drawIsolatedVertices()
{
    std::vector<bool> used(m_mesh.GetVertexCount());
    for (const std::uint32_t corner : m_mesh.GetCorners()) {
        used[corner] = true;
    }
    const double radius = kPathRadius * m_textScale;
    for (std::uint32_t i = 0; i < m_mesh.GetVertexCount(); ++i) {
        if (!used[i]) {
            m_raster.FillDisc(m_positions[i], radius, colorOf(valueOf(i)));
        }
        m_steps.Advance();
    }
}

template <class Take>
void MeshPicture::walk(std::span<const std::uint32_t> vertices, Take&& take) const
{
    constexpr std::uint64_t kPointsPerPoll = 512; // each may be stamped over many samples
    std::uint64_t points = 0;
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        const SPoint& to = m_positions[vertices[i]];
        const SPoint way = i == 0 ? SPoint() : to - m_positions[vertices[i - 1]];
        const int steps = static_cast<int>(std::max(std::abs(way.x), std::abs(way.y))) + 1;
        for (int step = steps - 1; step >= 0; --step) {
            take(to - way * (static_cast<double>(step) / steps));
            if (++points % kPointsPerPoll == 0 && m_progress != nullptr) {
                m_progress->CheckInterrupt();
            }
        }
    }
}

void MeshPicture::DrawPath(std::span<const std::uint32_t> vertices)
{
    if (vertices.empty()) {
        return;
    }
    // The path lies in the surface, which near a sample may be this much nearer, in samples.
    constexpr double kTolerance = 4.0;
    const double scale = m_textScale;
    const int dashLength = kDashLength * m_textScale;
    std::int64_t step = 0;
    walk(vertices, [&](const SPoint& point) {
        const bool isInk = step++ / dashLength % 2 == 0; // one of the two is seen on any colour
        m_raster.StampDisc(point, kHiddenRadius * scale, isInk ? kInk : kPaper);
    });
    for (const auto& [radius, color] :
        { std::pair(kPathRadius + kPathRim, kPaper), std::pair(kPathRadius, kInk) }) {
        walk(vertices, [&, radius = radius, color = color](const SPoint& point) {
            if (m_raster.IsVisible(point, kTolerance)) {
                m_raster.StampDisc(point, radius * scale, color);
            }
        });
    }
    const SPoint& start = m_positions[vertices.front()];
    const SPoint& end = m_positions[vertices.back()];
    m_raster.StampDisc(start, kMarkRadius * scale, kInk);
    m_raster.StampDisc(start, (kMarkRadius - kPathRadius) * scale, kPaper);
    m_raster.StampSquare(end, kMarkRadius * scale, kInk);
    m_raster.StampSquare(end, (kMarkRadius - kPathRadius) * scale, kPaper);
}

Image MeshPicture::MakeImage() const
{
    Image image = m_raster.MakeImage();
    const int scale = m_textScale;
    const int margin = kMargin * scale;
    PaintText(image, margin, margin, scale, m_coloring.title, kInk);
    const int top = margin + kTitleHeight * scale;
    PaintColorBar(image,
        { m_options.size.width - kBarSpace * scale, top, kBarWidth * scale,
            m_options.size.height - top - 2 * margin, scale },
        m_coloring);
    return image;
}

} // namespace tamesh
