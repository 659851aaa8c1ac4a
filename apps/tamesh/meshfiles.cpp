#include "tamesh/meshfiles.h"

#include "tamesh/document.h"
#include "tamesh/documentwriter.h"
#include "tamesh/files.h"
#include "tamesh/meshreader.h"
#include "tamesh/networkmesh.h"
#include "tamesh/offwriter.h"
#include "tamesh/progress.h"

namespace tamesh {

Mesh ReadMeshFile(IConsole& console, const std::string& name)
{
    if (IsNetworkName(name)) {
        return ReadNetworkMesh(console, name);
    }
    InputFile file(name);
    Progress progress(console, "reading " + name, file.GetSize());
    return ReadMesh({ name, file.GetStream(), file.GetSize(), &progress });
}

void WriteMeshFile(IConsole& console, const std::string& name, const Mesh& mesh)
{
    Progress progress(
        console, "writing " + name, std::uint64_t{ mesh.GetVertexCount() } + mesh.GetFaceCount());
    OutputFile file(name);
    OutputText text(file);
    WriteOFF(text, mesh, &progress);
    file.Commit();
}

void ReadDocumentFile(IConsole& console, const std::string& name, Document& document)
{
    InputFile file(name);
    Progress progress(console, "reading " + name, file.GetSize());
    document.Load(file.GetStream(), &progress);
}

void WriteDocumentFile(IConsole& console, const std::string& name, const Document& document)
{
    WriteDocumentFile(console, name, *document.GetTree().GetRootNode());
}

void WriteDocumentFile(IConsole& console, const std::string& name, const TaNode& top)
{
    DocumentWriter document;
    {
        const Progress measuring(console, "measuring " + name, 1);
        document.AddParts(top, &measuring);
    }
    WriteDocumentFile(console, name, document);
}

void WriteDocumentFile(IConsole& console, const std::string& name, const DocumentWriter& document)
{
    Progress progress(console, "writing " + name, document.GetSize());
    OutputFile file(name);
    document.Write(file.GetStream(), &progress);
    file.Commit();
}

} // namespace tamesh
