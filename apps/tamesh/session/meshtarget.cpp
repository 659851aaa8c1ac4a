#include "tamesh/session/meshtarget.h"

#include "tamesh/meshfailure.h"
#include "tamesh/progress.h"
#include "tamesh/session/tameshgraphnode.h"

#include <utility>

namespace tamesh {

MeshTarget::MeshTarget(SessionTree& tree, const SJob& job)
    : m_name(tree.FindName(job.command.mesh))
    , m_manager(tree.GetManager())
    , m_console(job.console)
    , m_node(tree.GetMesh(m_name))
    , m_locks(m_manager, job.console)
{
}

/// It stays the same node for as long as the mesh is open.
TuSmartPointer<TaNode> MeshTarget::getGeometry() const
{
    TuSmartPointer<TaNode> geometry = m_node->FindChild(SPartNames::kGeometry);
    if (geometry.IsNull()) {
        throw MeshFailure(TU_HERE, m_name, 0, "has no geometry: its document had lost it");
    }
    return geometry;
}

void MeshTarget::Read()
{
    m_locks.Read(getGeometry());
    m_locks.Acquire(m_name);
}

void MeshTarget::ReadAll()
{
    m_locks.Read(m_node);
    m_locks.Acquire(m_name);
}

void MeshTarget::WriteAll()
{
    m_locks.Write(m_node);
    m_locks.Acquire(m_name);
}

void MeshTarget::WriteGeometry()
{
    const TuSmartPointer<TaNode> geometry = getGeometry();
    m_locks.Write(geometry);
    m_locks.Acquire(m_name);
    geometry->SetModified(true, false);
}

MeshGraph& MeshTarget::ReadWithGraph()
{
    // A document of somebody else's may have a part of that name: then the graph is not kept.
    const TuSmartPointer<TaNode> node = m_node->FindChild(TaMeshGraphNode::kName);
    m_locks.Read(getGeometry());
    m_locks.Write(node); // none locks nothing
    m_locks.Acquire(m_name);
    if (auto* const found = dynamic_cast<TaMeshGraphNode*>(node.Get()); found != nullptr) {
        return found->GetGraph();
    }
    const Mesh& mesh = GetMesh();
    if (mesh.GetVertexCount() == 0) {
        throw MeshFailure(TU_HERE, m_name, 0, "has no vertices");
    }
    Progress progress(m_console, "connecting " + m_name, MeshGraph::CountSteps(mesh));
    m_newGraph = std::make_unique<MeshGraph>(mesh, &progress);
    return *m_newGraph;
}

TuSmartPointer<TaMeshData> MeshTarget::FindMeshData() const
{
    const TuSmartPointer<TaNode> geometry = m_node->FindChild(SPartNames::kGeometry);
    const TuSmartPointer<TaNode> data
        = geometry.IsNull() ? geometry : geometry->FindChild(SPartNames::kData);
    auto* const found = dynamic_cast<TaMeshNode*>(data.Get());
    return found != nullptr ? found->GetData() : TuSmartPointer<TaMeshData>();
}

const Mesh& MeshTarget::GetMesh() const
{
    const TuSmartPointer<TaMeshData> data = FindMeshData();
    if (data.IsNull()) {
        throw MeshFailure(TU_HERE, m_name, 0, "has no geometry: its document had lost it");
    }
    return data->GetMesh(); // the tree keeps it
}

void MeshTarget::storeGraph()
{
    if (m_newGraph == nullptr || !m_node->FindChild(TaMeshGraphNode::kName).IsNull()) {
        return;
    }
    if (!m_manager.InsertNode(TuMake<TaMeshGraphNode>(std::move(m_newGraph)), m_node)) {
        throw TuException(TU_HERE);
    }
}

} // namespace tamesh
