#include "tabase/tathreadcounts.h"

// Windows exports the constants of a class where a source repeats them.
constexpr unsigned int TaThreadCounts::kBlockSize;
constexpr unsigned int TaThreadCounts::kBucketCount;

std::optional<unsigned int> TaThreadCounts::GetAnyThread() const
{
    std::optional<unsigned int> any;
    ForEach([&any](unsigned int threadId, SReadWriteCount) { any = threadId; });
    return any;
}

SReadWriteCount& TaThreadCounts::findOrMakeInMap(unsigned int threadId)
{
    if (const SReadWriteCount* count = find(threadId); count != nullptr) {
        return const_cast<SReadWriteCount&>(*count);
    }
    for (SThread& thread : m_first) {
        if (thread.count.IsZero()) {
            thread.id = threadId;
            return thread.count;
        }
    }
    if (m_others != nullptr) {
        return (*m_others)[threadId];
    }
    auto others = std::make_unique<Map>(kBlockSize, kBucketCount);
    SReadWriteCount& count = (*others)[threadId];
    m_others = std::move(others);
    return count;
}

void TaThreadCounts::removeFromMap(unsigned int threadId)
{
    m_others->RemoveKey(threadId);
    if (m_others->IsEmpty()) {
        m_others.reset();
    }
}
