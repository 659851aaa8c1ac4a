#include "platform/platformwindow.h"

#include "platform/posix/messagequeue.h"
#include "platform/posix/windowslot.h"

#include <errno.h>

#include <atomic>
#include <new>

namespace platform {
namespace {

    constinit std::atomic<PostRefusal> s_refusal{ nullptr };

    void send(const SWindowSlot& slot, HWND window, unsigned int message, long long lParam)
    {
        if (slot.procedure != nullptr) {
            slot.procedure(window, message, 0, lParam);
        }
    }

    /// Null where the window is not the calling thread's.
    MessageQueue* queueOfOwn(const SWindowSlot& slot)
    {
        MessageQueue* const queue = slot.queue.load(std::memory_order_relaxed);
        return queue == MessageQueue::GetCurrent() ? queue : nullptr;
    }

} // namespace

HWND CreateMessageWindow(
    const char16_t* className, WindowProcedure procedure, void* parameter) noexcept
{
    MessageQueue* const queue = MessageQueue::GetCurrent();
    HWND window = nullptr;
    SWindowSlot* const slot = queue != nullptr ? TakeWindowSlot(className, window) : nullptr;
    if (slot == nullptr) {
        errno = ENOMEM;
        return nullptr;
    }
    slot->procedure = procedure;
    queue->AddWindow(*slot, window);
    send(*slot, window, eWM_Create, reinterpret_cast<long long>(parameter));
    return IsMessageWindow(window) ? window : nullptr; // the procedure may have destroyed it
}

bool DestroyMessageWindow(HWND window) noexcept
{
    const SWindowSlot* const slot = FindWindowSlot(window);
    if (slot == nullptr || queueOfOwn(*slot) == nullptr) {
        errno = slot == nullptr ? ESRCH : EPERM;
        return false;
    }
    send(*slot, window, eWM_Destroy, 0);
    // The procedure may have destroyed it.
    if (SWindowSlot* const left = FindWindowSlot(window)) {
        queueOfOwn(*left)->RemoveWindow(*left);
    }
    return true;
}

bool IsMessageWindow(HWND window) noexcept { return FindWindowSlot(window) != nullptr; }

std::u16string GetWindowClassName(HWND window) { return GetClassOfWindow(window); }

void* GetCreationParameter(long long lParam) noexcept { return reinterpret_cast<void*>(lParam); }

void* GetWindowValue(HWND window) noexcept
{
    const SWindowSlot* const slot = FindWindowSlot(window);
    return slot != nullptr ? slot->value.load() : nullptr;
}

void SetWindowValue(HWND window, void* value) noexcept
{
    if (SWindowSlot* const slot = FindWindowSlot(window)) {
        slot->value = value;
    }
}

long long PassToDefault(HWND window, unsigned int message, unsigned long long, long long) noexcept
{
    if (message == eWM_Close) {
        DestroyMessageWindow(window);
    }
    return 0;
}

EPost PostToWindow(
    HWND window, unsigned int message, unsigned long long wParam, long long lParam) noexcept
{
    if (const PostRefusal refusal = s_refusal.load(std::memory_order_relaxed);
        refusal != nullptr && refusal(window, message)) {
        errno = ENOBUFS;
        return eP_Full;
    }
    const SWindowSlot* const slot = FindWindowSlot(window);
    if (slot == nullptr) {
        errno = ESRCH;
        return eP_NoWindow;
    }
    return slot->queue.load(std::memory_order_relaxed)
        ->Post(*slot, { window, message, wParam, lParam });
}

EGetMessage WaitForMessage(SWindowMessage& message) noexcept
{
    MessageQueue* const queue = MessageQueue::GetCurrent();
    return queue != nullptr ? queue->Take(message, true) : eGM_Failed;
}

EGetMessage TakeMessage(SWindowMessage& message) noexcept
{
    MessageQueue* const queue = MessageQueue::GetCurrent();
    return queue != nullptr ? queue->Take(message, false) : eGM_Failed;
}

bool TakeMessageOf(HWND window, unsigned int number, SWindowMessage& message) noexcept
{
    MessageQueue* const queue = MessageQueue::GetCurrent();
    return queue != nullptr && queue->TakeOf(window, number, message);
}

void DispatchToWindow(const SWindowMessage& message) noexcept
{
    const SWindowSlot* const slot = FindWindowSlot(message.window);
    if (slot != nullptr && slot->procedure != nullptr) {
        slot->procedure(message.window, message.message, message.wParam, message.lParam);
    }
}

bool HandleWaitingMessages() noexcept
{
    MessageQueue* const queue = MessageQueue::GetCurrent();
    if (queue == nullptr) {
        return true;
    }
    SWindowMessage message;
    for (std::size_t left = queue->GetCount(); left > 0; --left) {
        const EGetMessage result = queue->Take(message, false);
        if (result != eGM_Message) {
            queue->UpdateDescriptor();
            return result != eGM_Quit;
        }
        DispatchToWindow(message);
    }
    queue->UpdateDescriptor();
    return true;
}

int GetMessageDescriptor() noexcept
{
    MessageQueue* const queue = MessageQueue::GetCurrent();
    return queue != nullptr ? queue->GetDescriptor() : -1;
}

void SetPostRefusal(PostRefusal refusal) noexcept { s_refusal = refusal; }

} // namespace platform
