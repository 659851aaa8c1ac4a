#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

/// Floats to be coded, in rows of `rowLength`, and what their owner knows of them.
struct SFloats
{
    static constexpr std::uint32_t kCodes = 1U << 16;

    std::uint32_t rowLength = 0; // in points or samples
    std::vector<float> values; // of a point one after the other
    std::vector<float> lower; // the box, for each value of a point
    std::vector<float> upper;
    float scale = 0; // such that kCodes reach over its longest side

    void FindBox(std::size_t valuesOfPoint)
    {
        lower.assign(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(valuesOfPoint));
        upper = lower;
        for (std::size_t i = 0; i < values.size(); ++i) {
            const std::size_t axis = i % valuesOfPoint;
            lower[axis] = std::min(lower[axis], values[i]);
            upper[axis] = std::max(upper[axis], values[i]);
        }
        float longest = 0;
        for (std::size_t axis = 0; axis < valuesOfPoint; ++axis) {
            longest = std::max(longest, upper[axis] - lower[axis]);
        }
        scale = static_cast<float>(kCodes - 1) / longest;
    }
};

/// A triangle mesh as a scanner makes it: rows of points, with noise along the line of sight. The
/// three coordinates of a point stand together.
struct SMesh : SFloats
{
    std::vector<std::uint32_t> faces; // three points each
};

/// A cube of samples, x running fastest.
struct SField : SFloats
{
};

/// A torus with bumps, cut open along a row and a column, in millimetres. With half a million
/// points they are 0.2 to 0.6 mm apart; the noise is 10 µm.
inline SMesh makeMesh(std::uint32_t rowLength)
{
    constexpr double kMajor = 50;
    constexpr double kMinor = 20;
    constexpr double kNoise = 0.01;
    const double step = 2 * std::numbers::pi / rowLength;
    std::mt19937 random(1);
    std::normal_distribution<double> noise(0, kNoise);
    SMesh mesh;
    mesh.rowLength = rowLength;
    for (std::uint32_t row = 0; row < rowLength; ++row) {
        for (std::uint32_t column = 0; column < rowLength; ++column) {
            const double u = row * step;
            const double v = column * step;
            const double bumps
                = std::sin(7 * u) * std::cos(5 * v) + 0.3 * std::sin(31 * u + 17 * v);
            const double minor = kMinor + bumps + noise(random);
            const double distance = kMajor + minor * std::cos(v);
            for (const double coordinate :
                { distance * std::cos(u), distance * std::sin(u), minor * std::sin(v) }) {
                mesh.values.push_back(static_cast<float>(coordinate));
            }
        }
    }
    for (std::uint32_t row = 0; row + 1 < rowLength; ++row) {
        for (std::uint32_t column = 0; column + 1 < rowLength; ++column) {
            const std::uint32_t corner = row * rowLength + column;
            const std::uint32_t below = corner + rowLength;
            mesh.faces.insert(
                mesh.faces.end(), { corner, below, corner + 1, corner + 1, below, below + 1 });
        }
    }
    mesh.FindBox(3);
    return mesh;
}

/// A few waves and a blob.
inline SField makeField(std::uint32_t side)
{
    SField field;
    field.rowLength = side;
    const double step = 1.0 / side;
    for (std::uint32_t iz = 0; iz < side; ++iz) {
        for (std::uint32_t iy = 0; iy < side; ++iy) {
            for (std::uint32_t ix = 0; ix < side; ++ix) {
                const double x = ix * step;
                const double y = iy * step;
                const double z = iz * step;
                constexpr double kTurn = 2 * std::numbers::pi;
                const double distance2
                    = (x - 0.4) * (x - 0.4) + (y - 0.6) * (y - 0.6) + (z - 0.5) * (z - 0.5);
                field.values.push_back(static_cast<float>(std::sin(kTurn * (x + 2 * y + 0.5 * z))
                    + 0.5 * std::sin(kTurn * (2 * x - y + 1.5 * z))
                    + 0.7 * std::sin(kTurn * (0.5 * x + y - 2 * z))
                    + 2 * std::exp(-20 * distance2)));
            }
        }
    }
    field.FindBox(1);
    return field;
}
