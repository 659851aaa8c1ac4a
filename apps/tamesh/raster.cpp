#include "tamesh/raster.h"

#include <cmath>
#include <limits>

namespace tamesh {

namespace {

    std::int64_t divideDown(std::int64_t dividend, std::int64_t divisor)
    {
        const std::int64_t quotient = dividend / divisor;
        return quotient - (dividend % divisor < 0 ? 1 : 0);
    }

} // namespace

Raster::Raster(const SSize& pixels, TaColor background)
    : m_size{ pixels.width * kSamplesPerPixel, pixels.height * kSamplesPerPixel }
    , m_samples(static_cast<std::size_t>(m_size.width) * static_cast<std::size_t>(m_size.height),
          SSample{ -std::numeric_limits<float>::infinity(), background })
{
}

bool Raster::isDrawable(const SPoint& point)
{
    constexpr double kFarthest = 1 << 20; // products of two such numbers, in parts, fit
    return std::abs(point.x) <= kFarthest && std::abs(point.y) <= kFarthest
        && std::isfinite(point.z);
}

Raster::SFixedPoint Raster::round(const SPoint& point)
{
    return { static_cast<std::int64_t>(std::floor(point.x * kParts + 0.5)),
        static_cast<std::int64_t>(std::floor(point.y * kParts + 0.5)) };
}

bool Raster::IsNarrow(const std::array<SPoint, 3>& corners)
{
    const auto& [a, b, c] = corners;
    const double doubleArea = (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
    const auto [left, right] = std::minmax({ a.x, b.x, c.x });
    const auto [top, bottom] = std::minmax({ a.y, b.y, c.y });
    return !(std::abs(doubleArea) > std::max(right - left, bottom - top));
}

bool Raster::isEmpty(std::int64_t x, std::int64_t y) const
{
    return x < 0 || x >= m_size.width || y < 0 || y >= m_size.height
        || std::isinf(sampleAt(x, y).depth);
}

void Raster::cut(SRun& run, std::int64_t begin, std::int64_t value, std::int64_t slope)
{
    if (slope > 0) {
        run.begin = std::max(run.begin, begin - divideDown(value, slope));
    } else if (slope < 0) {
        run.end = std::min(run.end, begin + divideDown(value, -slope) + 1);
    } else if (value < 0) {
        run.end = run.begin;
    }
}

Raster::SRun Raster::samplesBetween(std::int64_t lower, std::int64_t upper, int size)
{
    const std::int64_t first = divideDown(lower - kParts / 2 + kParts - 1, kParts);
    const std::int64_t last = divideDown(upper - kParts / 2, kParts);
    return { std::clamp<std::int64_t>(first, 0, size),
        std::clamp<std::int64_t>(last + 1, 0, size) };
}

template <class Take> void Raster::forEachAround(const SPoint& center, double reach, Take&& take)
{
    if (!isDrawable(center)) {
        return;
    }
    const SFixedPoint middle = round(center);
    const std::int64_t way = round({ reach, 0.0, 0.0 }).x;
    const SRun columns = samplesBetween(middle.x - way, middle.x + way, m_size.width);
    const SRun rows = samplesBetween(middle.y - way, middle.y + way, m_size.height);
    for (std::int64_t y = rows.begin; y < rows.end; ++y) {
        for (std::int64_t x = columns.begin; x < columns.end; ++x) {
            const std::int64_t dx = middleOf(x) - middle.x;
            const std::int64_t dy = middleOf(y) - middle.y;
            take(sampleAt(x, y), dx * dx + dy * dy <= way * way);
        }
    }
}

void Raster::FillDisc(const SPoint& center, double radius, TaColor color)
{
    const auto depth = static_cast<float>(center.z);
    forEachAround(center, radius, [&](SSample& sample, bool isInside) {
        if (isInside && depth > sample.depth) {
            sample = { depth, color };
        }
    });
}

void Raster::StampDisc(const SPoint& center, double radius, TaColor color)
{
    forEachAround(center, radius,
        [&](SSample& sample, bool isInside) { sample.color = isInside ? color : sample.color; });
}

void Raster::StampSquare(const SPoint& center, double halfSide, TaColor color)
{
    forEachAround(center, halfSide, [&](SSample& sample, bool) { sample.color = color; });
}

bool Raster::IsVisible(const SPoint& point, double tolerance) const
{
    if (!isDrawable(point)) {
        return false;
    }
    const auto x = static_cast<std::int64_t>(std::floor(point.x));
    const auto y = static_cast<std::int64_t>(std::floor(point.y));
    return x >= 0 && x < m_size.width && y >= 0 && y < m_size.height
        && static_cast<double>(sampleAt(x, y).depth) <= point.z + tolerance;
}

Image Raster::MakeImage() const
{
    constexpr int kSamples = kSamplesPerPixel * kSamplesPerPixel;
    Image image({ m_size.width / kSamplesPerPixel, m_size.height / kSamplesPerPixel }, TaColor());
    for (int y = 0; y < image.GetSize().height; ++y) {
        for (int x = 0; x < image.GetSize().width; ++x) {
            std::uint32_t word = 0xFFu;
            for (const unsigned int shift : { 16u, 8u, 0u }) {
                std::uint32_t sum = kSamples / 2;
                for (int i = 0; i < kSamples; ++i) {
                    const SSample& sample = sampleAt(x * kSamplesPerPixel + i % kSamplesPerPixel,
                        y * kSamplesPerPixel + i / kSamplesPerPixel);
                    sum += sample.color.GetDword() >> shift & 0xFFu;
                }
                word = word << 8 | sum / kSamples;
            }
            image.SetPixel(x, y, TaColor::FromDword(word));
        }
    }
    return image;
}

} // namespace tamesh
