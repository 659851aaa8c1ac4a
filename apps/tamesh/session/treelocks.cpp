#include "tamesh/session/treelocks.h"

#include "platform/platformclock.h"
#include "tamesh/meshfailure.h"
#include "tamesh/progress.h"

#include <algorithm>
#include <new>

namespace tamesh {

namespace {

    constexpr unsigned int kSliceMs = 100; // how long a user who interrupts may have to wait

} // namespace

TreeLocks::TreeLocks(TaDataManager& manager, const IConsole& console)
    : m_manager(manager)
    , m_console(console)
{
}

void TreeLocks::Acquire(const std::string& name)
{
    const std::uint64_t deadline = platform::GetDeadline(kPatienceMs);
    for (;;) {
        CheckInterrupt(m_console);
        const unsigned int left = platform::GetMillisecondsUntil(deadline);
        switch (attempt(std::min(left, kSliceMs))) {
        case TaDataManager::eLS_Granted:
            return;
        case TaDataManager::eLS_InvalidHandle:
            throw MeshFailure(TU_HERE, name, 0, "has been closed meanwhile");
        case TaDataManager::eLS_WaitFailed:
            throw MeshFailure(TU_HERE, name, 0, "the system does not let it wait for a lock");
        case TaDataManager::eLS_Exception:
            throw std::bad_alloc();
        default:
            break;
        }
        if (left == 0) {
            throw MeshFailure(TU_HERE, name, 0,
                "other commands have not given it free for " + std::to_string(kPatienceMs / 1000)
                    + " seconds; 'locks' shows which");
        }
    }
}

/// An attempt that fails drops its requests, so each begins with new handles.
TaDataManager::ELockStatus TreeLocks::attempt(unsigned int milliseconds)
{
    m_readHandles.clear();
    m_writeHandles.clear();
    for (const auto& node : m_toRead) {
        m_readHandles.emplace_back(m_manager, node);
    }
    for (const auto& node : m_toWrite) {
        m_writeHandles.emplace_back(m_manager, node);
    }
    TaDataManager::ELockStatus status = TaDataManager::eLS_NoRequests;
    m_manager.TryLockAndWait(milliseconds, status).MarkRead();
    return status;
}

void TreeLocks::Release()
{
    m_readHandles.clear();
    m_writeHandles.clear();
    m_toRead.clear();
    m_toWrite.clear();
}

} // namespace tamesh
