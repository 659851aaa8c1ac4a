#include "tamesh/session/documenthandler.h"

#include "tamesh/guard.h"
#include "tamesh/meshfiles.h"
#include "tamesh/meshpacking.h"
#include "tamesh/resultvalues.h"
#include "tamesh/session/meshtarget.h"
#include "tamesh/session/tracerecorder.h"
#include "tamesh/treelines.h"

namespace tamesh {

namespace {

    /// Meshes are saved packed: bit for bit, unless the user has said otherwise. One that has lost
    /// its geometry is saved without.
    void packUnlessDone(const SJob& job, const MeshTarget& target)
    {
        const TuSmartPointer<TaMeshData> data = target.FindMeshData();
        if (!data.IsNull() && data->GetPacked() == nullptr) {
            PackMeshData(job.console, target.GetName(), *data, { SPackOptions::eF_Lossless });
        }
    }

} // namespace

DocumentHandler::DocumentHandler(const SSessionParts& session, const TraceRecorder& trace)
    : CommandHandler(u"Document", session, { eCI_Save, eCI_Close, eCI_Tree })
    , m_trace(trace)
{
}

void DocumentHandler::carryOut(const SJob& job)
{
    if (job.command.id == eCI_Save) {
        save(job);
    } else if (job.command.id == eCI_Close) {
        close(job);
    } else {
        showTree(job);
    }
}

void DocumentHandler::save(const SJob& job)
{
    MeshTarget target(getTree(), job);
    target.Store(SPartNames::kSettings, [&](NewPart& part) {
        TaParameterSet settings;
        settings.SetParameter(u"digits", job.settings.digits);
        settings.SetParameter(u"tree-depth", job.settings.treeDepth);
        part.AddValue<TaParameterNode, TaParameterData>(
            SPartNames::kParameters, std::move(settings));
    });
    target.Store(SPartNames::kTrace, [&](NewPart& part) {
        part.AddValue<TaTraceNode, TaTraceData>(SPartNames::kData, m_trace.GetHistory());
    });
    // Nothing may change between what is written and the mark that all of it is.
    target.WriteAll();
    packUnlessDone(job, target);
    NameFailures(job.command.output,
        [&] { WriteDocumentFile(job.console, job.command.output, *target.GetNode()); });
    target.GetNode()->SetModified(false, true);
    WriteResult(job.console, target.GetName() + ": saved in " + job.command.output + "\n");
}

void DocumentHandler::close(const SJob& job)
{
    MeshTarget target(getTree(), job);
    target.WriteAll();
    const bool isModified = target.GetNode()->IsModified(true);
    TaDataHandleLockOnly<1> handle(getManager(), target.GetNode());
    if (!getManager().RemoveNode(handle)) {
        throw TuException(TU_HERE);
    }
    getTree().Release(target.GetName());
    WriteResult(
        job.console, target.GetName() + ": closed" + (isModified ? ", not saved" : "") + "\n");
}

void DocumentHandler::showTree(const SJob& job)
{
    TaDataManager& manager = getManager();
    if (job.command.mesh.empty()) {
        TreeLocks locks(manager, job.console);
        locks.Read(manager.GetRootNode());
        locks.Acquire("session");
        WriteResult(job.console, FormatTree(*manager.GetRootNode(), job.settings.treeDepth));
        return;
    }
    MeshTarget target(getTree(), job);
    target.ReadAll();
    WriteResult(job.console, FormatTree(*target.GetNode(), job.settings.treeDepth));
}

} // namespace tamesh
