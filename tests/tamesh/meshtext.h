#pragma once

#include "groundwork/tustreamwriteasciistring.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tamesh/meshreader.h"
#include "tamesh/offwriter.h"

#include <string>

/// Reads a mesh from memory, as if it were a file of this name.
inline tamesh::Mesh ReadMeshText(const std::string& name, const std::string& content)
{
    TaStreamReadBinaryBuffer stream(content.data(), content.size());
    return tamesh::ReadMesh({ name, stream, content.size() });
}

/// As OFF.
inline std::string WriteMeshText(const tamesh::Mesh& mesh)
{
    TuStreamWriteASCIIStringT<CStringA> text;
    tamesh::WriteOFF(text, mesh);
    return std::string(text.GetText().GetView());
}
