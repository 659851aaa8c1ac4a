#pragma once

#include "tabase/tadatamanager.h"

#include <string>

/// Looks at what the data tree keeps to itself: counters, events, links and the manager's books.
class TaDataTreeProbe
{
public:
    /// The first thing that does not agree with the rest, in words; empty where all is well. Nobody
    /// changes the tree or its locks meanwhile.
    static std::string FindFault(const TaDataManager& manager);
    /// The same for a tree that has no manager: nobody holds a lock.
    static std::string FindFault(const TaNode& top);

    static std::uint32_t GetReadCount(const TaNode& node)
    {
        const TuCriticalSectionAuto guard(node.m_countLock);
        return node.m_readCount;
    }
    static std::uint32_t GetWriteCount(const TaNode& node)
    {
        const TuCriticalSectionAuto guard(node.m_countLock);
        return node.m_writeCount;
    }
    static SReadWriteCount GetCount(const TaNode& node, unsigned int threadId)
    {
        const TuCriticalSectionAuto guard(node.m_countLock);
        return node.m_threadCounts.Get(threadId);
    }
    /// A step of building that only the library takes, for trees that no manager has seen.
    static void AddChild(const TuSmartPointer<TaNode>& parent, const TuSmartPointer<TaNode>& child)
    {
        child->setParent(parent.Get());
        parent->addChild(child);
    }
    static void CreateData(TaNode& node, const String& className) { node.CreateData(className); }
    static unsigned int GetPendingCount(const TaDataManager& manager, unsigned int threadId);
    static std::size_t GetWaitingThreads(const TaDataManager& manager);

private:
    class Check;
};
