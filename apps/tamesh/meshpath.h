#pragma once

#include "groundwork/tustreamwriteascii.h"
#include "tamesh/coloring.h"
#include "tamesh/console.h"
#include "tamesh/meshgraph.h"
#include "tamesh/vertexname.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tamesh {

/// A shortest path along the edges of a mesh.
struct SMeshPath
{
    std::uint32_t from = 0;
    std::uint32_t to = 0;
    double length = 0.0; // in the mesh
    std::vector<std::uint32_t> vertices; // from the first to the last
};

// Searches in meshes. `name` is what the user knows the mesh by; `console` is told how far it is,
// and can interrupt it.
//
// Failure: MeshFailure for what is not in the mesh; Interrupted; what the library throws.

/// The number of the vertex that the user means.
std::uint32_t FindNamedVertex(
    IConsole& console, const Mesh& mesh, const VertexName& vertex, const std::string& name);

/// Throws MeshFailure, too, where no path leads there.
SMeshPath FindMeshPath(IConsole& console, const std::string& name, MeshGraph& graph,
    std::uint32_t from, std::uint32_t to);

/// The distances of all vertices from one, in units of the graph; TaGraphNode::GetInitialWeight for
/// those that no path leads to.
std::vector<float> FindDistances(
    IConsole& console, const std::string& name, MeshGraph& graph, std::uint32_t from);

/// Colours by such distances; `unit` is that of the graph.
SColoring ColorByDistance(
    const std::string& name, std::uint32_t from, std::vector<float> distances, double unit);

/// Lines for people and scripts; `digits` as in SViewOptions.
std::string FormatMeshPath(const std::string& name, const SMeshPath& path, int digits);

/// As a polyline in the OBJ format, or a point where it has one vertex.
void WriteMeshPath(TuStreamWriteASCII& stream, const Mesh& mesh, const SMeshPath& path);

} // namespace tamesh
