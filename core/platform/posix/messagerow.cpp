#include "platform/posix/messagerow.h"

#include <new>
#include <utility>

namespace platform {

MessageRow::~MessageRow() { Clear(); }

bool MessageRow::Add(const SWaitingMessage& message) noexcept
{
    if (m_end == kMessages && !addBlock()) {
        return false;
    }
    m_last->messages[m_end++] = message;
    ++m_count;
    return true;
}

bool MessageRow::addBlock() noexcept
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

SWaitingMessage MessageRow::TakeFirst() noexcept
{
    SWaitingMessage message = m_first->messages[m_head++];
    --m_count;
    if (m_head == kMessages || m_count == 0) {
        SBlock* const emptied = m_first;
        m_first = emptied->next;
        m_head = 0;
        if (m_first == nullptr) {
            m_last = nullptr;
            m_end = kMessages;
        }
        if (m_keptCount < kMostKept) {
            emptied->next = m_kept;
            m_kept = emptied;
            ++m_keptCount;
        } else {
            delete emptied;
        }
    }
    return message;
}

void MessageRow::Clear() noexcept
{
    freeBlocks(m_first);
    freeBlocks(m_kept);
    m_last = nullptr;
    m_head = 0;
    m_end = kMessages;
    m_count = 0;
    m_keptCount = 0;
}

void MessageRow::freeBlocks(SBlock*& first) noexcept
{
    while (first != nullptr) {
        delete std::exchange(first, first->next);
    }
}

void MessageRow::Swap(MessageRow& other) noexcept
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
