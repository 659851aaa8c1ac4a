#pragma once

#include "tamesh/mesh.h"

#include <cmath>

namespace tamesh {

// Points as vectors. Nothing here needs more of the C library than the square root, which is exact
// to the last bit on every system.

inline SPoint operator+(const SPoint& a, const SPoint& b)
{
    return { a.x + b.x, a.y + b.y, a.z + b.z };
}
inline SPoint operator-(const SPoint& a, const SPoint& b)
{
    return { a.x - b.x, a.y - b.y, a.z - b.z };
}
inline SPoint operator*(const SPoint& a, double factor)
{
    return { a.x * factor, a.y * factor, a.z * factor };
}
inline double Dot(const SPoint& a, const SPoint& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline SPoint Cross(const SPoint& a, const SPoint& b)
{
    return { a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x };
}
/// Of length 1; as it is where it has no length that can be computed.
inline SPoint Normalise(const SPoint& a)
{
    const double length = std::sqrt(Dot(a, a));
    return length > 0.0 && std::isfinite(length) ? a * (1.0 / length) : a;
}

} // namespace tamesh
