#include "tamesh/session/treelocks.h"

#include "tamesh/meshfailure.h"
#include "tamesh/progress.h"

#include <new>

namespace tamesh {

namespace {

    constexpr unsigned int kSliceMs = 100; // how long a user who interrupts may have to wait

} // namespace

TreeLocks::TreeLocks(TaDataManager& manager, IConsole& console)
    : m_manager(manager)
    , m_console(console)
{
}

void TreeLocks::Acquire(const std::string& name)
{
    constexpr std::uint64_t kPatience = 3000; // in milliseconds: of a user who knows no reason
    const std::uint64_t noticeTime = m_console.GetMilliseconds() + kPatience;
    for (bool isTold = false;;) {
        CheckInterrupt(m_console);
        switch (attempt(kSliceMs)) {
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
        if (!isTold && m_console.GetMilliseconds() >= noticeTime) {
            m_console.WriteError(name + ": waits for other commands; 'locks' shows which\n");
            isTold = true;
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
