#include "tabase/tahandlesofthreads.h"

#include <utility>

unsigned int TaHandlesOfThreads::GetCount(unsigned int threadId) const
{
    if (findSingle(threadId) != nullptr) {
        return 1;
    }
    const Handles* const handles = m_sets.Lookup(threadId);
    return handles != nullptr ? handles->GetCount() : 0;
}

TaDataHandleBase* TaHandlesOfThreads::GetFirst(unsigned int threadId) const
{
    TaDataHandleBase* first = nullptr;
    ForEachOf(threadId, [&first](TaDataHandleBase& handle) {
        first = &handle;
        return false;
    });
    return first;
}

void TaHandlesOfThreads::Add(unsigned int threadId, TaDataHandleBase& handle)
{
    if (SSingle* const single = findSingle(threadId)) {
        addToSet(threadId, *single->handle);
        try {
            addToSet(threadId, handle);
        } catch (...) {
            removeSet(threadId); // it stays a single
            throw;
        }
        single->handle = nullptr;
        return;
    }
    if (const Handles* const handles = m_sets.Lookup(threadId);
        handles == nullptr || handles->IsEmpty()) {
        for (SSingle& single : m_singles) {
            if (single.handle == nullptr) {
                single = { threadId, &handle };
                return;
            }
        }
    }
    addToSet(threadId, handle);
}

void TaHandlesOfThreads::addToSet(unsigned int threadId, TaDataHandleBase& handle)
{
    Handles& handles = m_sets[threadId];
    try {
        handles.Add(&handle);
    } catch (...) {
        if (handles.IsEmpty()) {
            noteEmpty(threadId);
        }
        throw;
    }
}

bool TaHandlesOfThreads::Remove(unsigned int threadId, TaDataHandleBase& handle) noexcept
{
    if (SSingle* const single = findSingle(threadId)) {
        if (single->handle != &handle) {
            return false;
        }
        single->handle = nullptr;
        return true;
    }
    Handles* const handles = m_sets.Lookup(threadId);
    if (handles == nullptr || !handles->RemoveKey(&handle)) {
        return false;
    }
    if (handles->IsEmpty()) {
        noteEmpty(threadId);
    }
    return true;
}

void TaHandlesOfThreads::Replace(
    unsigned int threadId, TaDataHandleBase& handle, TaDataHandleBase& by) noexcept
{
    if (SSingle* const single = findSingle(threadId)) {
        if (single->handle == &handle) {
            single->handle = &by;
        }
        return;
    }
    Handles* const handles = m_sets.Lookup(threadId);
    if (handles != nullptr && handles->RemoveKey(&handle)) {
        handles->Add(&by); // takes the node that the other has left
    }
}

void TaHandlesOfThreads::removeSet(unsigned int threadId) noexcept
{
    Handles* const handles = m_sets.Lookup(threadId);
    if (handles != nullptr && !handles->IsEmpty()) {
        handles->RemoveAll();
        noteEmpty(threadId);
    }
}

void TaHandlesOfThreads::noteEmpty(unsigned int threadId) noexcept
{
    const unsigned int former = std::exchange(m_emptied, threadId);
    if (former == threadId) {
        return;
    }
    const auto place = m_sets.Find(former);
    if (place != m_sets.end() && place->GetValue().IsEmpty()) {
        m_sets.Erase(place);
    }
}
