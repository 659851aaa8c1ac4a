#pragma once

#include "tamesh/mesh.h"

#include <string>

class TaDataManager;
class TaUniqueID;

namespace tamesh {

// What tamesh knows of a mesh, as nodes of a data tree below the node "Mesh". Each function asks
// for a write lock on what it changes, and waits for it.
//
// Failure: TuException where the tree has such a node already, or cannot be locked for a minute; a
// part of the description may stand by then.

/// "Vertices", "Faces" and "Corners", and, where there are vertices, "Bounds" with the smallest box
/// around them.
void DescribeMesh(TaDataManager& tree, const Mesh& mesh);

/// "Name", "Source file" (UTF-8) and "Identifier" of a mesh that has been described.
void NameMesh(TaDataManager& tree, const std::string& sourceFile, const TaUniqueID& identifier);

} // namespace tamesh
