#pragma once

#include "tamesh/console.h"
#include "tamesh/exitcode.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tamesh {

// What the program was asked to do, and what it answers with: its exit code. File names are UTF-8,
// as the user gave them.
//
// Failure: none is thrown. A file that cannot be read, understood or written is reported on the
//          console as "FILE:LINE: what is wrong", or without line, and makes the exit code 1; an
//          interrupt as "FILE: interrupted", with 130, and what comes after it is not begun.
//          Nothing is written then: an output file is replaced only once it is complete.

/// Shows the figures of meshes. One that cannot be read does not keep the others from being shown.
EExitCode ShowMeshes(IConsole& console, const std::vector<std::string>& meshFiles);

/// Shows the figures of the meshes in documents, in the same way.
EExitCode ShowDocuments(IConsole& console, const std::vector<std::string>& documentFiles);

/// Saves a mesh as a document.
EExitCode PackMesh(IConsole& console, const std::string& meshFile, const std::string& documentFile);

enum EShape
{
    eS_Terrain,
    eS_Torus,
    eS_Sphere,
};

constexpr std::uint32_t kLowestResolution = 3;
constexpr std::uint32_t kHighestResolution = 4000; // a sphere of 64 million vertices

/// Makes a mesh and saves it as an OFF file.
EExitCode MakeMesh(
    IConsole& console, EShape shape, std::uint32_t resolution, const std::string& meshFile);

} // namespace tamesh
