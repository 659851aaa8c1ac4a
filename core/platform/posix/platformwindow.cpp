#include "platform/platformwindow.h"

#include "platform/posix/messagequeue.h"
#include "platform/posix/windowslot.h"
#include "platform/stopguard.h"

#include <errno.h>

#include <atomic>
#include <cstdint>

namespace platform {
namespace {

    constinit std::atomic<PostRefusal> s_refusal{ nullptr };

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
    {
        const StopGuard unstopped; // so that no place is lost
        SWindowSlot* const slot = queue != nullptr ? TakeWindowSlot(className, window) : nullptr;
        if (slot == nullptr) {
            errno = ENOMEM;
            return nullptr;
        }
        slot->procedure = procedure;
        queue->AddWindow(*slot, window);
    }
    const bool isRefused
        = procedure(window, eWM_Create, 0, reinterpret_cast<long long>(parameter)) == -1;
    SWindowSlot* const slot = FindWindowSlot(window); // the procedure may have destroyed it
    if (slot != nullptr && isRefused) {
        queue->RemoveWindow(*slot);
    }
    if (slot == nullptr || isRefused) {
        errno = ECANCELED;
        return nullptr;
    }
    return window;
}

bool DestroyMessageWindow(HWND window) noexcept
{
    const SWindowSlot* const slot = FindWindowSlot(window);
    if (slot == nullptr || queueOfOwn(*slot) == nullptr) {
        errno = slot == nullptr ? ESRCH : EPERM;
        return false;
    }
    slot->procedure(window, eWM_Destroy, 0, 0);
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
    void* const value = slot != nullptr ? slot->value.load() : nullptr;
    return IsMessageWindow(window) ? value : nullptr; // or it may be a later window's
}

void SetWindowValue(HWND window, void* value) noexcept { SetValueOfWindow(window, value); }

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
    return slot->queue.load(std::memory_order_acquire)
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
    if (slot != nullptr) {
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
    bool isToGoOn = true;
    queue->Limit(true);
    for (const std::uint32_t end = queue->GetEnd(); isToGoOn && queue->HasBefore(end);) {
        isToGoOn = queue->Take(message, false) != eGM_Quit;
        if (isToGoOn) {
            DispatchToWindow(message);
        }
    }
    queue->Limit(false);
    return isToGoOn;
}

bool TakeSameMessage(HWND window, unsigned int number) noexcept
{
    // Its thread looks at its own messages, so it has a queue.
    return MessageQueue::GetCurrent()->TakeSame(window, number);
}

int GetMessageDescriptor() noexcept
{
    MessageQueue* const queue = MessageQueue::GetCurrent();
    return queue != nullptr ? queue->GetDescriptor() : -1;
}

void SetPostRefusal(PostRefusal refusal) noexcept { s_refusal = refusal; }

} // namespace platform
