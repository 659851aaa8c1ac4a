#pragma once

#include "tabase/tastreamreadbinarybuffer.h"
#include "tamesh/meshreader.h"

#include <string>

/// Reads a mesh from memory, as if it were a file of this name.
inline tamesh::Mesh ReadMeshText(const std::string& name, const std::string& content)
{
    TaStreamReadBinaryBuffer stream(content.data(), content.size());
    return tamesh::ReadMesh({ name, stream, content.size() });
}
