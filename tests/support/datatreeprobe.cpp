#include "support/datatreeprobe.h"

#include <map>
#include <sstream>

namespace {

struct SLocks
{
    std::uint64_t read = 0;
    std::uint64_t write = 0;
};
using LocksOfThreads = std::map<unsigned int, SLocks>;

} // namespace

class TaDataTreeProbe::Check
{
public:
    std::string Run(const TaDataManager& manager)
    {
        const TuCriticalSectionAuto guard(manager.m_lock);
        checkBooks(manager);
        checkTree(*manager.m_root, &manager);
        return m_fault;
    }
    std::string Run(const TaNode& top)
    {
        checkTree(top, nullptr);
        return m_fault;
    }

private:
    template <class... Words> void expect(bool holds, const Words&... words)
    {
        if (!holds && m_fault.empty()) {
            std::ostringstream text;
            (text << ... << words);
            m_fault = text.str();
        }
    }

    void checkBooks(const TaDataManager& manager) TU_NO_THREAD_SAFETY_ANALYSIS
    {
        unsigned int locks = 0;
        unsigned int writes = 0;
        manager.m_grantedHandles.ForEach([&](unsigned int threadId, TaDataHandleBase& handle) {
            const bool write = handle.GetAccessRights() == TaDataHandleBase::eAR_Write;
            expect(handle.IsAccessGranted() && handle.m_isHolding && handle.m_manager == &manager
                    && handle.m_threadId == threadId,
                "a granted handle has no access, or another thread");
            ++locks;
            writes += write ? 1 : 0;
            if (handle.m_isCounted) {
                SLocks& direct = m_direct[handle.getNode()][threadId];
                ++(write ? direct.write : direct.read);
            }
            return true;
        });
        expect(manager.m_lockCount == locks && manager.m_writeLockCount == writes,
            "the totals of the manager are wrong");
        manager.m_pendingRequests.ForEach([&](unsigned int threadId, TaDataHandleBase& handle) {
            expect(
                !handle.IsAccessGranted() && !handle.m_isHolding && handle.m_threadId == threadId,
                "a request has access, or another thread");
            return true;
        });
    }

    void checkTree(const TaNode& top, const TaDataManager* manager)
    {
        std::map<const TaNode*, LocksOfThreads> all; // what must lie on each node of the path
        for (const TaNode* node = &top; node != nullptr; node = node->getNext(top)) {
            const TaNode* const parent = node == &top ? nullptr : node->getParentNode();
            LocksOfThreads locks = parent != nullptr ? all[parent] : LocksOfThreads();
            for (const auto& [threadId, direct] : m_direct[node]) {
                locks[threadId].read += direct.read;
                locks[threadId].write += direct.write;
            }
            checkNode(*node, locks, manager);
            if (node->HasChildren()) {
                all[node] = std::move(locks);
            }
        }
    }

    void checkNode(const TaNode& node, const LocksOfThreads& locks,
        const TaDataManager* manager) TU_NO_THREAD_SAFETY_ANALYSIS
    {
        const std::string name = node.GetName().ToUtf8();
        SLocks total;
        std::size_t threads = 0;
        node.m_threadCounts.ForEach([&](unsigned int threadId, SReadWriteCount count) {
            const auto found = locks.find(threadId);
            const SLocks wanted = found != locks.end() ? found->second : SLocks();
            expect(count.read == wanted.read && count.write == wanted.write, name, ": thread ",
                threadId, " has ", count.read, " read and ", count.write, " write locks, not ",
                wanted.read, " and ", wanted.write);
            expect(!count.IsZero(), name, ": an entry of a thread without locks");
            total.read += count.read;
            total.write += count.write;
            ++threads;
        });
        expect(threads == locks.size(), name, ": ", threads, " threads have locks, not ",
            locks.size());
        expect(total.read == node.m_readCount && total.write == node.m_writeCount, name,
            ": the totals are not the sums over the threads");
        expect(node.isReadLocked() == (node.m_readCount != 0)
                && node.isWriteLocked() == (node.m_writeCount != 0)
                && node.isLocked() == (node.m_readCount + node.m_writeCount != 0),
            name, ": it does not tell its locks");
        expect(node.m_unlockedEvent.IsSet() == (node.m_readCount + node.m_writeCount == 0), name,
            ": the event does not tell whether the node is free");
        expect(node.m_dataManager.load() == manager, name, ": the wrong manager");
        expect(!node.m_isVisited, name, ": a walk has left its mark");
        for (auto place = node.m_children.begin(); place != node.m_children.end(); ++place) {
            const TaNode& child = *place->node;
            expect(child.getParentNode() == &node && child.GetParent() == &node, name,
                ": a child does not know its parent");
            expect(TuList<TaNode::SChildData>::const_iterator(child.m_place) == place, name,
                ": a child does not know its place");
        }
    }

    std::map<const TaNode*, LocksOfThreads> m_direct; // taken on the very node
    std::string m_fault;
};

std::string TaDataTreeProbe::FindFault(const TaDataManager& manager)
{
    return Check().Run(manager);
}

std::string TaDataTreeProbe::FindFault(const TaNode& top) { return Check().Run(top); }

unsigned int TaDataTreeProbe::GetPendingCount(const TaDataManager& manager, unsigned int threadId)
{
    const TuCriticalSectionAuto guard(manager.m_lock);
    return manager.m_pendingRequests.GetCount(threadId);
}

std::size_t TaDataTreeProbe::GetWaitingThreads(const TaDataManager& manager)
{
    const TuCriticalSectionAuto guard(manager.m_lock);
    return manager.m_waiting.GetCount();
}
