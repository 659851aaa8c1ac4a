#pragma once

#include "tamesh/mesh.h"

#include <string>

class TaNode;

namespace tamesh {

class Document;
class DocumentWriter;
class IConsole;

// Whole files that the user named, with a progress bar. Failures are those of InputFile,
// OutputFile, and what reads or writes their contents.

/// By the format that the name tells; of a file, or a text on the network (see ReadNetworkMesh).
Mesh ReadMeshFile(IConsole& console, const std::string& name);
/// As OFF.
void WriteMeshFile(IConsole& console, const std::string& name, const Mesh& mesh);

void ReadDocumentFile(IConsole& console, const std::string& name, Document& document);
void WriteDocumentFile(IConsole& console, const std::string& name, const Document& document);
/// With the children of `top` as the parts: see WriteDocument.
void WriteDocumentFile(IConsole& console, const std::string& name, const TaNode& top);
void WriteDocumentFile(IConsole& console, const std::string& name, const DocumentWriter& document);

} // namespace tamesh
