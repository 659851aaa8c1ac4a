#include "platform/platformlock.h"

#include "platform/platformclock.h"
#include "platform/posix/currentthread.h"
#include "platform/posix/futex.h"
#include "platform/threadsanitizer.h"

#if defined(TA_THREAD_SANITIZER)
#include <sanitizer/tsan_interface.h>
#endif

namespace platform {
namespace {

    constexpr std::uint32_t kWaiters = 0x80000000u; // beside the holder's number, which is below it

    /// Tell the thread sanitizer that this is a lock, so that it finds locks taken in two orders.
#if defined(TA_THREAD_SANITIZER)
    constexpr unsigned int kKind = __tsan_mutex_write_reentrant;
    void noteMade(void* lock) { __tsan_mutex_create(lock, kKind); }
    void noteGone(void* lock) { __tsan_mutex_destroy(lock, kKind); }
    void noteEntering(void* lock) { __tsan_mutex_pre_lock(lock, kKind); }
    void noteEntered(void* lock) { __tsan_mutex_post_lock(lock, kKind, 0); }
    // As if it were only tried, which can block nobody.
    constexpr unsigned int kAnyOrder = kKind | __tsan_mutex_try_lock;
    void noteEnteringInAnyOrder(void* lock) { __tsan_mutex_pre_lock(lock, kAnyOrder); }
    void noteEnteredInAnyOrder(void* lock) { __tsan_mutex_post_lock(lock, kAnyOrder, 0); }
    void noteLeaving(void* lock) { __tsan_mutex_pre_unlock(lock, kKind); }
    void noteLeft(void* lock) { __tsan_mutex_post_unlock(lock, kKind); }
#else
    void noteMade(void*) { }
    void noteGone(void*) { }
    void noteEntering(void*) { }
    void noteEntered(void*) { }
    void noteEnteringInAnyOrder(void*) { }
    void noteEnteredInAnyOrder(void*) { }
    void noteLeaving(void*) { }
    void noteLeft(void*) { }
#endif

} // namespace

CriticalSection::CriticalSection() noexcept { noteMade(this); }

CriticalSection::~CriticalSection() { noteGone(this); }

void CriticalSection::Enter() noexcept TU_NO_THREAD_SAFETY_ANALYSIS
{
    noteEntering(this);
    enter();
    noteEntered(this);
}

void CriticalSection::EnterInAnyOrder() noexcept TU_NO_THREAD_SAFETY_ANALYSIS
{
    noteEnteringInAnyOrder(this);
    enter();
    noteEnteredInAnyOrder(this);
}

inline void CriticalSection::enter() noexcept
{
    const std::uint32_t self = CurrentThreadNumber();
    std::uint32_t holder = 0;
    if (!m_holder.compare_exchange_strong(
            holder, self, std::memory_order_acquire, std::memory_order_relaxed)) {
        if ((holder & ~kWaiters) == self) {
            ++m_again;
        } else {
            enterSlowly(self);
        }
    }
}

/// Most holders are about to leave: a look or two more is cheaper than sleep and a call to be
/// woken. Where others sleep already, or the holder does not run, it would only take their time.
inline std::uint32_t CriticalSection::lookAgain(std::uint32_t holder) const noexcept
{
    constexpr int kLooks = 50;
    for (int look = 0; look < kLooks && holder != 0 && (holder & kWaiters) == 0; ++look) {
#if defined(__x86_64__)
        __builtin_ia32_pause();
#endif
        holder = m_holder.load(std::memory_order_relaxed);
    }
    return holder;
}

/// Who had to wait cannot know whether he was the last one, so he holds the lock with the bit set;
/// at worst his leaving wakes nobody.
void CriticalSection::enterSlowly(std::uint32_t self) noexcept
{
    std::uint32_t holder = lookAgain(m_holder.load(std::memory_order_relaxed));
    if (holder == 0
        && m_holder.compare_exchange_strong(
            holder, self, std::memory_order_acquire, std::memory_order_relaxed)) {
        return;
    }
    for (;;) {
        if (holder == 0) {
            if (m_holder.compare_exchange_weak(holder, self | kWaiters, std::memory_order_acquire,
                    std::memory_order_relaxed)) {
                return;
            }
        } else if ((holder & kWaiters) != 0
            || m_holder.compare_exchange_weak(
                holder, holder | kWaiters, std::memory_order_relaxed)) {
            (void)WaitOnWord(m_holder, holder | kWaiters, kNever);
            holder = m_holder.load(std::memory_order_relaxed);
        }
    }
}

void CriticalSection::Leave() noexcept TU_NO_THREAD_SAFETY_ANALYSIS
{
    noteLeaving(this);
    if (m_again != 0) {
        --m_again;
    } else if ((m_holder.exchange(0, std::memory_order_release) & kWaiters) != 0) {
        WakeOne(m_holder);
    }
    noteLeft(this);
}

} // namespace platform
