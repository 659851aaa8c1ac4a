#pragma once

#include "tabase/tadatahandlelockonly.h"
#include "tabase/tadatamanager.h"
#include "tamesh/console.h"

#include <string>
#include <vector>

namespace tamesh {

/// The locks that a command needs, taken together.
///
///     TreeLocks locks(manager, console);
///     locks.Read(geometry);
///     locks.Write(graph);
///     locks.Acquire(name);
///
/// It holds nothing while it waits, so no two commands wait for each other: each ends, and then the
/// next goes on. A user for whom that takes too long is told what it waits for, and interrupts it.
///
/// Ownership: gives the locks back when it goes; refers to manager and console, which outlive it.
/// Threads:   one.
class TreeLocks
{
public:
    TreeLocks(TaDataManager& manager, IConsole& console);
    TreeLocks(const TreeLocks&) = delete;
    TreeLocks& operator=(const TreeLocks&) = delete;

    void Read(TuSmartPointer<const TaNode> node) { m_toRead.push_back(std::move(node)); }
    void Write(TuSmartPointer<TaNode> node) { m_toWrite.push_back(std::move(node)); }
    /// `name` is what the user knows the nodes by. Throws Interrupted, and MeshFailure where a node
    /// is in the tree no more.
    void Acquire(const std::string& name);
    /// Gives all back, and forgets what was wanted.
    void Release();

private:
    TaDataManager::ELockStatus attempt(unsigned int milliseconds);

    TaDataManager& m_manager;
    IConsole& m_console;
    std::vector<TuSmartPointer<const TaNode>> m_toRead;
    std::vector<TuSmartPointer<TaNode>> m_toWrite;
    std::vector<TaDataHandleLockOnly<0>> m_readHandles;
    std::vector<TaDataHandleLockOnly<1>> m_writeHandles;
};

} // namespace tamesh
