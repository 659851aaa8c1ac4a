#pragma once

#include "tamesh/console.h"
#include "tamesh/exitcode.h"
#include "tamesh/pictureoptions.h"
#include "tamesh/vertexname.h"

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

/// How figures are shown; see Settings.
struct SViewOptions
{
    int digits = 0;
    int treeDepth = 40;
    bool isRecorded = false; // the analysis, under the name of the file; see TaAlgorithm
};

/// Shows the figures of meshes. One that cannot be read does not keep the others from being shown.
EExitCode ShowMeshes(
    IConsole& console, const std::vector<std::string>& meshFiles, const SViewOptions& options = {});

/// Shows the figures of the meshes in documents, and their data trees, in the same way.
EExitCode ShowDocuments(IConsole& console, const std::vector<std::string>& documentFiles,
    const SViewOptions& options = {});

/// How PackMesh stores a mesh.
struct SPackOptions
{
    enum EForm
    {
        eF_Plain,
        eF_Lossless,
        eF_Quantized,
    };

    EForm form = eF_Plain;
    unsigned int bits = 16; // of a quantized coordinate, 1 to CoordinateForm::kMostBits
};

/// Saves a mesh as a document. Where it is packed, the document is read back and compared, and what
/// the forms take and by how much vertices have moved is shown.
EExitCode PackMesh(IConsole& console, const std::string& meshFile, const std::string& documentFile,
    const SPackOptions& options = {});

/// Saves the mesh in a document as an OFF file.
EExitCode UnpackDocument(
    IConsole& console, const std::string& documentFile, const std::string& meshFile);

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

/// What the colours of a picture say.
enum EColoring
{
    eC_Height,
    eC_Curvature,
    eC_Component,
};

/// Shows a mesh in a picture, which is saved as a PNG file.
EExitCode PictureMesh(IConsole& console, const std::string& meshFile, EColoring coloring,
    const std::string& pictureFile, const SPictureOptions& options = {});

/// What FindPath looks for, and where it leaves what it finds; an empty name for no file.
struct SPathOptions
{
    VertexName from;
    VertexName to;
    std::string pathFile; // the path as a polyline, OBJ
    std::string graphFile; // the graph in the DOT language, where the mesh has few vertices
    std::string pictureFile; // the mesh by distance from the start, with the path, PNG
    SPictureOptions picture;
    int digits = 0; // as SViewOptions
};

constexpr std::uint32_t kMostVerticesInDot = 1000;

/// Finds the shortest path along edges of the mesh between two of its vertices, and shows it.
EExitCode FindPath(IConsole& console, const std::string& meshFile, const SPathOptions& options);

} // namespace tamesh
