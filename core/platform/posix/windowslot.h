#pragma once

#include "platform/platformwindow.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

namespace platform {

class MessageQueue;

/// The place of a window in the table of all windows. A window's handle is the number of its place
/// and how many windows that has had, so that a handle is never used again and an old one finds
/// nothing. Places stay for ever, and are used again: whoever looks at one that is given up just
/// now finds another handle there, or none.
///
/// Threads: the window's own changes it; the handle, under the lock of the thread's queue, too.
struct SWindowSlot
{
    std::atomic<HWND> window{ nullptr }; // null: the place is free
    std::atomic<MessageQueue*> queue{ nullptr }; // of its thread
    std::atomic<void*> value{ nullptr };
    WindowProcedure procedure = nullptr;
    std::u16string className; // guarded by the table's lock
    SWindowSlot* next = nullptr; // of the same thread, or among the free places
    std::uint32_t number = 0; // in the table
    std::uint64_t uses = 0; // how many windows it has had
};

// A handle is (uses << kSlotNumberBits) + number.
constexpr unsigned int kSlotNumberBits = 20;
constexpr std::size_t kSlotsPerBlock = 1024;
constexpr std::size_t kSlotBlocks = (std::size_t{ 1 } << kSlotNumberBits) / kSlotsPerBlock;

/// The table: found without a lock, and there before all else and after it.
extern constinit std::array<std::atomic<SWindowSlot*>, kSlotBlocks> s_slotBlocks;

/// A place with a new handle that nobody knows yet; null without memory.
[[nodiscard]] SWindowSlot* TakeWindowSlot(const char16_t* className, HWND& window) noexcept;
/// Gives back the place of a window that is gone.
void GiveBackWindowSlot(SWindowSlot& slot) noexcept;
/// Empty where there is no such window.
[[nodiscard]] std::u16string GetClassOfWindow(HWND window);
/// Nothing where there is no such window; and never the value of a later one.
void SetValueOfWindow(HWND window, void* value) noexcept;
/// Null where there is no such window.
[[nodiscard]] inline SWindowSlot* FindWindowSlot(HWND window) noexcept
{
    const auto handle = reinterpret_cast<std::uintptr_t>(window);
    const std::size_t number = handle & ((std::uintptr_t{ 1 } << kSlotNumberBits) - 1);
    SWindowSlot* const slots
        = s_slotBlocks[number / kSlotsPerBlock].load(std::memory_order_acquire);
    if (window == nullptr || slots == nullptr) {
        return nullptr;
    }
    SWindowSlot& slot = slots[number % kSlotsPerBlock];
    return slot.window.load(std::memory_order_acquire) == window ? &slot : nullptr;
}

} // namespace platform
