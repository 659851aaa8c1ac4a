#pragma once

#include "tamesh/mesh.h"

#include <cstdint>

namespace tamesh {

class Progress;

/// Meshes from nothing, the same to the last bit on every system: only operations that IEEE 754
/// rounds exactly are used, no functions of the C library. Coordinates are rounded to six decimals,
/// as in most files of scanned meshes.
///
/// Progress comes to the number of vertices and faces.
///
/// `resolution` is the number of steps along a side, around a ring, or along an edge.

/// Hills over a square of triangles: (n + 1)^2 vertices, 2 n^2 faces; n >= 1.
Mesh MakeTerrain(std::uint32_t resolution, Progress* progress = nullptr);

/// A closed ring of quadrilaterals: n^2 vertices and faces, Euler characteristic 0; n >= 3.
Mesh MakeTorus(std::uint32_t resolution, Progress* progress = nullptr);

/// A closed ball of triangles: 4 n^2 + 2 vertices, 8 n^2 faces, Euler characteristic 2; n >= 1.
Mesh MakeSphere(std::uint32_t resolution, Progress* progress = nullptr);

} // namespace tamesh
