#pragma once

#include "tamesh/coloring.h"
#include "tamesh/commands.h"
#include "tamesh/image.h"

#include <cstdint>
#include <span>
#include <string>

namespace tamesh {

// Colours and pictures of meshes with a progress bar. `name` is what the user knows the mesh by.
//
// Failure: MeshFailure for a mesh without vertices; Interrupted.

/// The title begins with the name.
SColoring ColorMesh(
    IConsole& console, const std::string& name, const Mesh& mesh, EColoring kind, EAxis up);

/// With a path, where there is one.
Image DrawMesh(IConsole& console, const std::string& name, const Mesh& mesh,
    const SColoring& coloring, const SPictureOptions& options,
    std::span<const std::uint32_t> path = {});

/// As a PNG file. An interrupt leaves what was there before.
void WriteImageFile(IConsole& console, const std::string& fileName, const Image& image);

} // namespace tamesh
