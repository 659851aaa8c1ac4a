#pragma once

#include "tamesh/image.h"
#include "tamesh/mesh.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace tamesh {

/// Draws triangles so that the nearer hides the farther, by a depth for each sample; a pixel is the
/// mean of four samples.
///
/// Points have x and y in samples from the upper left corner, and z toward the viewer. Coordinates
/// are rounded to 1/256 of a sample and sides are then computed in whole numbers: triangles with a
/// common side leave no gap, and no sample depends on the processor.
class Raster
{
public:
    static constexpr int kSamplesPerPixel = 2; // along a side

    Raster(const SSize& pixels, TaColor background);

    /// `colorAt(a, b, c)` tells the colour from the shares of the corners, whose sum is 1. Returns
    /// how many samples were looked at.
    template <class ColorAt>
    std::int64_t FillTriangle(const std::array<SPoint, 3>& corners, ColorAt&& colorAt);
    /// Whether the triangle may lie between the samples, and so be lost.
    static bool IsNarrow(const std::array<SPoint, 3>& corners);
    /// Draws the sides as lines, but only where the samples beside them have seen nothing: what is
    /// seen edge-on is not invisible, and outlines stay as they are. After all is filled. Returns
    /// how many samples were looked at.
    template <class ColorAt>
    std::int64_t TraceTriangle(const std::array<SPoint, 3>& corners, ColorAt&& colorAt);
    /// A disc that faces the viewer. It hides and is hidden.
    void FillDisc(const SPoint& center, double radius, TaColor color);

    /// Whether nothing hides the point that lies more than `tolerance` nearer to the viewer. A
    /// point beside the picture is not visible.
    bool IsVisible(const SPoint& point, double tolerance) const;
    /// Paints over what is there.
    void StampDisc(const SPoint& center, double radius, TaColor color);
    void StampSquare(const SPoint& center, double halfSide, TaColor color);

    /// In samples.
    const SSize& GetSize() const { return m_size; }
    Image MakeImage() const;

private:
    struct SSample
    {
        float depth;
        TaColor color;
    };
    /// In parts of a sample.
    struct SFixedPoint
    {
        std::int64_t x;
        std::int64_t y;
    };
    /// Samples in a row, from `begin` to before `end`.
    struct SRun
    {
        std::int64_t begin;
        std::int64_t end;
    };

    static constexpr std::int64_t kParts = 256;

    static bool isDrawable(const SPoint& point);
    static SFixedPoint round(const SPoint& point);
    /// Twice the area of a, b, p; positive on one side of the line from a to b.
    static std::int64_t sideOf(const SFixedPoint& a, const SFixedPoint& b, const SFixedPoint& p)
    {
        return (b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x);
    }
    /// Cuts off the samples of the run where value + slope * (x - begin) is negative.
    static void cut(SRun& run, std::int64_t begin, std::int64_t value, std::int64_t slope);
    static std::int64_t middleOf(std::int64_t sample) { return sample * kParts + kParts / 2; }
    /// The samples whose middles lie between the two, both included, in a picture of `size`.
    static SRun samplesBetween(std::int64_t lower, std::int64_t upper, int size);

    template <class ColorAt>
    std::int64_t drawLine(const SPoint& from, const SPoint& to, ColorAt&& colorAt);
    /// Whether nothing is seen there, as beside the picture.
    bool isEmpty(std::int64_t x, std::int64_t y) const;
    /// Calls take(sample, isInDisc) for all samples of a square.
    template <class Take> void forEachAround(const SPoint& center, double reach, Take&& take);
    SSample& sampleAt(std::int64_t x, std::int64_t y) { return m_samples[indexOf(x, y)]; }
    const SSample& sampleAt(std::int64_t x, std::int64_t y) const
    {
        return m_samples[indexOf(x, y)];
    }
    std::size_t indexOf(std::int64_t x, std::int64_t y) const
    {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_size.width)
            + static_cast<std::size_t>(x);
    }

    SSize m_size;
    std::vector<SSample> m_samples;
};

template <class ColorAt>
std::int64_t Raster::FillTriangle(const std::array<SPoint, 3>& corners, ColorAt&& colorAt)
{
    const auto& [a, b, c] = corners;
    if (!isDrawable(a) || !isDrawable(b) || !isDrawable(c)) {
        return 0;
    }
    const std::array<SFixedPoint, 3> points{ round(a), round(b), round(c) };
    const std::int64_t area = sideOf(points[0], points[1], points[2]);
    const auto [left, right] = std::minmax({ points[0].x, points[1].x, points[2].x });
    const auto [top, bottom] = std::minmax({ points[0].y, points[1].y, points[2].y });
    if (area == 0) {
        return 1;
    }
    std::int64_t looked = 1;
    const std::int64_t sign = area > 0 ? 1 : -1;
    const double share = 1.0 / static_cast<double>(area * sign);
    const SRun columns = samplesBetween(left, right, m_size.width);
    const SRun rows = samplesBetween(top, bottom, m_size.height);
    for (std::int64_t y = rows.begin; y < rows.end; ++y) {
        const SFixedPoint first{ middleOf(columns.begin), middleOf(y) };
        std::array<std::int64_t, 3> sides{};
        std::array<std::int64_t, 3> slopes{};
        SRun run = columns;
        for (std::size_t i = 0; i < 3; ++i) {
            const SFixedPoint& from = points[(i + 1) % 3];
            const SFixedPoint& to = points[(i + 2) % 3];
            sides[i] = sideOf(from, to, first) * sign;
            slopes[i] = (from.y - to.y) * kParts * sign;
            cut(run, columns.begin, sides[i], slopes[i]);
        }
        for (std::int64_t x = run.begin; x < run.end; ++x) {
            const auto shareOf = [&](std::size_t i) {
                return static_cast<double>(sides[i] + slopes[i] * (x - columns.begin)) * share;
            };
            const double shareA = shareOf(0);
            const double shareB = shareOf(1);
            const double shareC = shareOf(2);
            const auto depth = static_cast<float>(shareA * a.z + shareB * b.z + shareC * c.z);
            SSample& sample = sampleAt(x, y);
            if (depth > sample.depth) {
                sample = { depth, colorAt(shareA, shareB, shareC) };
            }
        }
        looked += 1 + std::max<std::int64_t>(run.end - run.begin, 0);
    }
    return looked;
}

template <class ColorAt>
std::int64_t Raster::TraceTriangle(const std::array<SPoint, 3>& corners, ColorAt&& colorAt)
{
    const auto& [a, b, c] = corners;
    // One after the other: where they meet, the first one stays.
    std::int64_t samples
        = drawLine(a, b, [&](double from, double to) { return colorAt(from, to, 0.0); });
    samples += drawLine(b, c, [&](double from, double to) { return colorAt(0.0, from, to); });
    samples += drawLine(c, a, [&](double from, double to) { return colorAt(to, 0.0, from); });
    return samples;
}

template <class ColorAt>
std::int64_t Raster::drawLine(const SPoint& from, const SPoint& to, ColorAt&& colorAt)
{
    if (!isDrawable(from) || !isDrawable(to)) {
        return 0;
    }
    const SPoint way{ to.x - from.x, to.y - from.y, to.z - from.z };
    const bool isFlat = std::abs(way.x) >= std::abs(way.y);
    const int steps = static_cast<int>(std::max(std::abs(way.x), std::abs(way.y))) + 1;
    for (int i = 0; i <= steps; ++i) {
        const double share = static_cast<double>(i) / steps;
        const auto x = static_cast<std::int64_t>(std::floor(from.x + way.x * share));
        const auto y = static_cast<std::int64_t>(std::floor(from.y + way.y * share));
        const auto depth = static_cast<float>(from.z + way.z * share);
        if (x >= 0 && x < m_size.width && y >= 0 && y < m_size.height
            && isEmpty(isFlat ? x : x - 1, isFlat ? y - 1 : y)
            && isEmpty(isFlat ? x : x + 1, isFlat ? y + 1 : y) && depth > sampleAt(x, y).depth) {
            sampleAt(x, y) = { depth, colorAt(1.0 - share, share) };
        }
    }
    return steps;
}

} // namespace tamesh
