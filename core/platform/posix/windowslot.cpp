#include "platform/posix/windowslot.h"

#include "platform/platformlock.h"
#include "platform/stopguard.h"

#include <array>
#include <new>

namespace platform {
namespace {

    // A handle is (uses << kNumberBits) + number.
    constexpr unsigned int kNumberBits = 20;
    constexpr std::size_t kSlotsPerBlock = 1024;
    constexpr std::size_t kBlocks = (std::size_t{ 1 } << kNumberBits) / kSlotsPerBlock;

    using Block = std::array<SWindowSlot, kSlotsPerBlock>;

    /// Found without a lock, and there before all else and after it.
    constinit std::array<std::atomic<Block*>, kBlocks> s_blocks{};

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
        if (block == kBlocks) {
            return nullptr;
        }
        Block* slots = s_blocks[block].load(std::memory_order_relaxed);
        if (slots == nullptr) {
            slots = new (std::nothrow) Block;
            if (slots == nullptr) {
                return nullptr;
            }
            s_blocks[block].store(slots, std::memory_order_release);
        }
        SWindowSlot& slot = (*slots)[all.count % kSlotsPerBlock];
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
        static_cast<std::uintptr_t>(slot->uses << kNumberBits | slot->number));
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

SWindowSlot* FindWindowSlot(HWND window) noexcept
{
    const auto handle = reinterpret_cast<std::uintptr_t>(window);
    const std::size_t number = handle & ((std::uintptr_t{ 1 } << kNumberBits) - 1);
    Block* const slots = s_blocks[number / kSlotsPerBlock].load(std::memory_order_acquire);
    if (window == nullptr || slots == nullptr) {
        return nullptr;
    }
    SWindowSlot& slot = (*slots)[number % kSlotsPerBlock];
    return slot.window.load(std::memory_order_acquire) == window ? &slot : nullptr;
}

} // namespace platform
