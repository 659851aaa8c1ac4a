#pragma once

#include "tamesh/mesh.h"

#include <string>

namespace tamesh {

class IConsole;

/// Whether the user names a place on the network: `http://…`, `https://…` or `tcp://…`.
bool IsNetworkName(const std::string& name);

/// Reads a text mesh through the library's text sources, by the format that the name tells.
///
/// Failure: MeshFailure with "NAME: what is wrong" where no text comes, or not all of it; what
///          ReadMesh throws; Interrupted when the console is.
Mesh ReadNetworkMesh(IConsole& console, const std::string& name);

} // namespace tamesh
