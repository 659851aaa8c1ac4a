#include "platform/posix/windowslot.h"

#include "platform/platformlock.h"
#include "platform/stopguard.h"

#include <new>

namespace platform {

constinit std::array<std::atomic<SWindowSlot*>, kSlotBlocks> s_slotBlocks{};

namespace {

    /// Never destroyed: windows may still go while the process exits.
    struct STable
    {
        CriticalSection lock;
        std::uint32_t count TU_GUARDED_BY(lock) = 0; // of places that have been in use
        SWindowSlot* firstFree TU_GUARDED_BY(lock) = nullptr;
    };

    STable& table()
    {
        static STable& s_table = *new STable;
        return s_table;
    }

    /// Null without memory, or where the table is full.
    SWindowSlot* newSlot(STable& all) noexcept TU_REQUIRES(all.lock)
    {
        const std::size_t block = all.count / kSlotsPerBlock;
        if (block == kSlotBlocks) {
            return nullptr;
        }
        SWindowSlot* slots = s_slotBlocks[block].load(std::memory_order_relaxed);
        if (slots == nullptr) {
            slots = new (std::nothrow) SWindowSlot[kSlotsPerBlock];
            if (slots == nullptr) {
                return nullptr;
            }
            s_slotBlocks[block].store(slots, std::memory_order_release);
        }
        SWindowSlot& slot = slots[all.count % kSlotsPerBlock];
        slot.number = all.count++;
        return &slot;
    }

} // namespace

SWindowSlot* TakeWindowSlot(const char16_t* className, HWND& window) noexcept
{
    const StopGuard unstopped;
    STable& all = table();
    const LockGuard guard(all.lock);
    SWindowSlot* slot = all.firstFree;
    if (slot == nullptr) {
        slot = newSlot(all);
    } else {
        all.firstFree = slot->next;
    }
    if (slot == nullptr) {
        return nullptr;
    }
    try {
        slot->className = className;
    } catch (const std::bad_alloc&) {
        slot->next = all.firstFree;
        all.firstFree = slot;
        return nullptr;
    }
    ++slot->uses;
    window = reinterpret_cast<HWND>(
        static_cast<std::uintptr_t>(slot->uses << kSlotNumberBits | slot->number));
    return slot;
}

void GiveBackWindowSlot(SWindowSlot& slot) noexcept
{
    const StopGuard unstopped;
    STable& all = table();
    const LockGuard guard(all.lock);
    slot.value = nullptr;
    slot.next = all.firstFree;
    all.firstFree = &slot;
}

std::u16string GetClassOfWindow(HWND window)
{
    const StopGuard unstopped;
    const LockGuard guard(table().lock);
    const SWindowSlot* const slot = FindWindowSlot(window);
    return slot != nullptr ? slot->className : std::u16string();
}

void SetValueOfWindow(HWND window, void* value) noexcept
{
    const StopGuard unstopped;
    const LockGuard guard(table().lock); // who takes the place for a later window waits for it
    if (SWindowSlot* const slot = FindWindowSlot(window)) {
        slot->value = value;
    }
}

} // namespace platform
