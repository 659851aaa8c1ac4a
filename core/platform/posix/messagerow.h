#pragma once

#include "platform/platformwindow.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace platform {

struct SWaitingMessage
{
    HWND window;
    unsigned int message;
    std::uint32_t serial; // counts on through the messages of a thread, and round
    unsigned long long wParam;
    long long lParam;
};

/// Messages in a row: added at its end, taken from its head, in blocks, so that a long row moves
/// nothing when it grows and leaves no large holes in memory when it goes.
///
/// Ownership: of its blocks. Emptied ones are kept for the next messages, up to a number.
/// Threads:   one at a time.
class MessageRow
{
public:
    MessageRow() noexcept = default;
    ~MessageRow();
    MessageRow(const MessageRow&) = delete;
    MessageRow& operator=(const MessageRow&) = delete;

    bool IsEmpty() const noexcept { return m_count == 0; }
    std::size_t GetCount() const noexcept { return m_count; }
    /// False without memory.
    [[nodiscard]] bool Add(const SWaitingMessage& message) noexcept;
    /// The row is not empty.
    SWaitingMessage TakeFirst() noexcept;
    const SWaitingMessage& GetFirst() const noexcept { return m_first->messages[m_head]; }
    /// Calls `keeps(message)` for each, and takes out those for which it is false.
    template <class Keeps> void Filter(Keeps keeps) noexcept;
    /// Without its blocks, too.
    void Clear() noexcept;
    void Swap(MessageRow& other) noexcept;

private:
    static constexpr std::size_t kMessages = 127;
    static constexpr std::size_t kMostKept = 64;

    struct SBlock
    {
        SBlock* next;
        std::array<SWaitingMessage, kMessages> messages;
    };

    static void freeBlocks(SBlock*& first) noexcept;
    bool addBlock() noexcept;

    SBlock* m_first = nullptr;
    SBlock* m_last = nullptr;
    std::size_t m_head = 0; // of the first message, in the first block
    std::size_t m_end = kMessages; // behind the last message, in the last block
    std::size_t m_count = 0;
    SBlock* m_kept = nullptr;
    std::size_t m_keptCount = 0;
};

template <class Keeps> void MessageRow::Filter(Keeps keeps) noexcept
{
    // Once round: each goes from the head to the end, where the place of the one before is free.
    for (std::size_t left = m_count; left > 0; --left) {
        const SWaitingMessage next = TakeFirst();
        if (keeps(next)) {
            (void)Add(next);
        }
    }
}

} // namespace platform
