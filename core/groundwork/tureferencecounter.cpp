#include "groundwork/tureferencecounter.h"

#include "groundwork/tucriticalsection.h"

#include <utility>

using Counter = TuReferenceCounter<unsigned int>;

/// What the weak entries of one target share. It lives until the target and all entries are gone.
class TuReferenceCounter<unsigned int>::WeakBlock
{
public:
    void AddUser() { m_users.fetch_add(1, std::memory_order_relaxed); }
    void ReleaseUser()
    {
        if (m_users.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete this;
        }
    }

    TuCriticalSection lock;
    TuWeakEntry* head TU_GUARDED_BY(lock) = nullptr;

private:
    ~WeakBlock() = default;

    std::atomic<unsigned int> m_users{ 1 }; // the target, and each entry
};

Counter::WeakBlock& Counter::getWeakBlock() const
{
    WeakBlock* block = m_weak.load(std::memory_order_acquire);
    if (block == nullptr) {
        auto* made = new WeakBlock;
        if (m_weak.compare_exchange_strong(
                block, made, std::memory_order_acq_rel, std::memory_order_acquire)) {
            return *made;
        }
        made->ReleaseUser(); // another thread was faster
    }
    return *block;
}

void Counter::clearWeakEntries() const
{
    WeakBlock* block = m_weak.exchange(nullptr, std::memory_order_acq_rel);
    {
        const TuCriticalSectionAuto guard(block->lock);
        for (TuWeakEntry* entry = block->head; entry != nullptr;) {
            entry->m_target = nullptr;
            entry->m_previous = nullptr;
            entry = std::exchange(entry->m_next, nullptr);
        }
        block->head = nullptr;
    }
    block->ReleaseUser();
}

void TuWeakEntry::Link(const Counter& target)
{
    Counter::WeakBlock& block = target.getWeakBlock();
    block.AddUser();
    Unlink();
    m_block = &block;
    const TuCriticalSectionAuto guard(block.lock);
    enterList(target);
}

/// Under the block's lock the target cannot go; whether it has strong references does not matter.
void TuWeakEntry::LinkLike(const TuWeakEntry& other)
{
    Counter::WeakBlock* block = other.m_block;
    if (block != nullptr) {
        block->AddUser();
    }
    Unlink();
    m_block = block;
    if (block != nullptr) {
        const TuCriticalSectionAuto guard(block->lock);
        if (other.m_target != nullptr) {
            enterList(*other.m_target);
        }
    }
}

void TuWeakEntry::enterList(const Counter& target) TU_NO_THREAD_SAFETY_ANALYSIS
{
    m_target = &target;
    m_next = m_block->head;
    if (m_next != nullptr) {
        m_next->m_previous = this;
    }
    m_block->head = this;
}

void TuWeakEntry::Unlink()
{
    if (m_block == nullptr) {
        return;
    }
    {
        const TuCriticalSectionAuto guard(m_block->lock);
        if (m_target != nullptr) {
            (m_previous != nullptr ? m_previous->m_next : m_block->head) = m_next;
            if (m_next != nullptr) {
                m_next->m_previous = m_previous;
            }
            m_target = nullptr;
            m_previous = m_next = nullptr;
        }
    }
    std::exchange(m_block, nullptr)->ReleaseUser();
}

bool TuWeakEntry::Lock() const
{
    if (m_block == nullptr) {
        return false;
    }
    const TuCriticalSectionAuto guard(m_block->lock);
    return m_target != nullptr && m_target->AddReferenceUnlessZero();
}
