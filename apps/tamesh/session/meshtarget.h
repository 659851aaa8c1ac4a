#pragma once

#include "tamesh/session/commandhandler.h"
#include "tamesh/session/newpart.h"

#include <memory>
#include <string>

namespace tamesh {

class MeshGraph;

/// The mesh that a command works on: what it reads, and where its result goes.
///
///     MeshTarget target(tree, job);
///     target.Read();
///     const Found found = compute(target.GetMesh());
///     target.Store(SPartNames::kPath, [&](NewPart& part) { part.Add(...); });
///
/// Threads: one.
/// Failure: MeshFailure for what is not there, or not any more; Interrupted.
class MeshTarget
{
public:
    MeshTarget(SessionTree& tree, const SJob& job);
    MeshTarget(const MeshTarget&) = delete;
    MeshTarget& operator=(const MeshTarget&) = delete;

    const std::string& GetName() const { return m_name; }
    const TuSmartPointer<TaNode>& GetNode() const { return m_node; }

    /// Locks the geometry, to read it.
    void Read();
    /// Locks the whole mesh, to read it.
    void ReadAll();
    /// Locks the geometry, to change how it is stored, and marks it as modified.
    void WriteGeometry();
    /// Locks the whole mesh, to change it.
    void WriteAll();
    /// Locks the geometry, to read it, and the graph of its edges, to write into it. Makes the
    /// graph where there is none yet.
    MeshGraph& ReadWithGraph();

    /// The mesh of a granted lock. Throws MeshFailure where there is no geometry.
    const Mesh& GetMesh() const;
    /// What carries it; null where there is none.
    TuSmartPointer<TaMeshData> FindMeshData() const;

    /// Gives the locks back, locks the whole mesh to write, and lets `fill` fill a new part, which
    /// takes the place of an older one. No lock is held afterwards.
    template <class Fill> void Store(const CString& part, Fill&& fill)
    {
        m_locks.Release();
        WriteAll();
        NewPart result(m_manager, m_node, part);
        fill(result);
        storeGraph();
        result.Finish();
        m_locks.Release();
    }

private:
    TuSmartPointer<TaNode> getGeometry() const;
    void storeGraph();

    const std::string m_name;
    TaDataManager& m_manager;
    IConsole& m_console;
    const TuSmartPointer<TaNode> m_node;
    TreeLocks m_locks;
    std::unique_ptr<MeshGraph> m_newGraph; // which is not in the tree yet
};

} // namespace tamesh
