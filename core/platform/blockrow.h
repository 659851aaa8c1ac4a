#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <utility>

namespace platform {

/// Elements in a row: added at its end, taken from its head, in blocks of `Count`, so that a long
/// row moves nothing when it grows and leaves no large holes in memory when it goes. For queues
/// between threads, whose elements are written by one and read by the other: they lie side by side.
///
/// Ownership: of its elements and blocks. Emptied blocks are kept for what comes next, up to a
///            number.
/// Threads:   one at a time.
/// Failure:   moving an element throws nothing; the operations neither.
template <class T, std::size_t Count> class BlockRow
{
public:
    BlockRow() noexcept = default;
    ~BlockRow() { Clear(); }
    BlockRow(const BlockRow&) = delete;
    BlockRow& operator=(const BlockRow&) = delete;

    bool IsEmpty() const noexcept { return m_first == nullptr; }
    std::size_t GetCount() const noexcept { return m_count; }
    /// False without memory; `element` is as it was then.
    template <class U> [[nodiscard]] bool Add(U&& element) noexcept;

    // The row is not empty for these.
    T& GetFirst() noexcept { return *m_first->At(m_head); }
    const T& GetFirst() const noexcept { return *m_first->At(m_head); }
    T& GetLast() noexcept { return *m_last->At(m_end - 1); }
    T TakeFirst() noexcept;
    T TakeLast() noexcept;

    /// Calls `keeps(element)` for each, in their order, and takes out those for which it is false.
    template <class Keeps> void Filter(Keeps keeps) noexcept;
    /// Without its blocks, too.
    void Clear() noexcept;
    void Swap(BlockRow& other) noexcept;

private:
    static constexpr std::size_t kMostKept = 64;

    struct SBlock
    {
        T* At(std::size_t index) { return reinterpret_cast<T*>(bytes) + index; }

        SBlock* next;
        alignas(T) unsigned char bytes[Count * sizeof(T)];
    };

    bool addBlock() noexcept;
    void keep(SBlock* block) noexcept;

    SBlock* m_first = nullptr;
    SBlock* m_last = nullptr;
    std::size_t m_head = 0; // of the first element, in the first block
    std::size_t m_end = Count; // behind the last element, in the last block
    std::size_t m_count = 0;
    SBlock* m_kept = nullptr;
    std::size_t m_keptCount = 0;
};

template <class T, std::size_t Count>
template <class U>
bool BlockRow<T, Count>::Add(U&& element) noexcept
{
    if (m_end == Count && !addBlock()) {
        return false;
    }
    std::construct_at(m_last->At(m_end), std::forward<U>(element));
    ++m_end;
    ++m_count;
    return true;
}

template <class T, std::size_t Count> bool BlockRow<T, Count>::addBlock() noexcept
{
    SBlock* block = m_kept;
    if (block != nullptr) {
        m_kept = block->next;
        --m_keptCount;
    } else {
        block = new (std::nothrow) SBlock;
        if (block == nullptr) {
            return false;
        }
    }
    block->next = nullptr;
    (m_last != nullptr ? m_last->next : m_first) = block;
    m_last = block;
    m_end = 0;
    return true;
}

template <class T, std::size_t Count> void BlockRow<T, Count>::keep(SBlock* block) noexcept
{
    if (m_keptCount == kMostKept) {
        delete block;
        return;
    }
    block->next = m_kept;
    m_kept = block;
    ++m_keptCount;
}

template <class T, std::size_t Count> T BlockRow<T, Count>::TakeFirst() noexcept
{
    T* const first = m_first->At(m_head);
    T element(std::move(*first));
    std::destroy_at(first);
    ++m_head;
    --m_count;
    if (m_head == Count || m_count == 0) {
        SBlock* const emptied = m_first;
        m_head = 0;
        if (emptied == m_last) {
            m_first = nullptr;
            m_last = nullptr;
            m_end = Count;
        } else {
            m_first = emptied->next;
        }
        keep(emptied);
    }
    return element;
}

template <class T, std::size_t Count> T BlockRow<T, Count>::TakeLast() noexcept
{
    if (m_count == 1) {
        return TakeFirst();
    }
    --m_end;
    --m_count;
    T* const last = m_last->At(m_end);
    T element(std::move(*last));
    std::destroy_at(last);
    if (m_end == 0) {
        SBlock* const emptied = m_last;
        m_last = m_first;
        while (m_last->next != emptied) {
            m_last = m_last->next;
        }
        m_last->next = nullptr;
        m_end = Count;
        keep(emptied);
    }
    return element;
}

template <class T, std::size_t Count>
template <class Keeps>
void BlockRow<T, Count>::Filter(Keeps keeps) noexcept
{
    // In place, for which no memory is needed: each that stays moves up to the one before.
    SBlock* from = m_first;
    SBlock* to = m_first;
    std::size_t fromIndex = m_head;
    std::size_t toIndex = m_head;
    for (std::size_t left = std::exchange(m_count, 0); left > 0; --left) {
        if (fromIndex == Count) {
            from = from->next;
            fromIndex = 0;
        }
        T* const place = from->At(fromIndex++);
        T next(std::move(*place));
        std::destroy_at(place);
        if (!keeps(next)) {
            continue;
        }
        if (toIndex == Count) {
            to = to->next;
            toIndex = 0;
        }
        std::construct_at(to->At(toIndex++), std::move(next));
        ++m_count;
    }
    SBlock*& behind = m_count != 0 ? to->next : m_first;
    for (SBlock* block = std::exchange(behind, nullptr); block != nullptr;) {
        keep(std::exchange(block, block->next));
    }
    m_last = m_count != 0 ? to : nullptr;
    m_end = m_count != 0 ? toIndex : Count;
    m_head = m_count != 0 ? m_head : 0;
}

template <class T, std::size_t Count> void BlockRow<T, Count>::Clear() noexcept
{
    while (!IsEmpty()) {
        (void)TakeFirst();
    }
    while (m_kept != nullptr) {
        delete std::exchange(m_kept, m_kept->next);
    }
    m_keptCount = 0;
}

template <class T, std::size_t Count> void BlockRow<T, Count>::Swap(BlockRow& other) noexcept
{
    std::swap(m_first, other.m_first);
    std::swap(m_last, other.m_last);
    std::swap(m_head, other.m_head);
    std::swap(m_end, other.m_end);
    std::swap(m_count, other.m_count);
    std::swap(m_kept, other.m_kept);
    std::swap(m_keptCount, other.m_keptCount);
}

} // namespace platform
