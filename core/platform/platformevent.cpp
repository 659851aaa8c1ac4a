#include "platform/platformevent.h"

#include "platform/eventstate.h"
#include "platform/eventwaiter.h"
#include "platform/platformclock.h"
#include "platform/stopguard.h"

#include <algorithm>
#include <new>

namespace platform {
namespace {

    // The word of an event that is alone; the address of a state has the first bit clear.
    constexpr std::uintptr_t kAlone = 1;
    constexpr std::uintptr_t kManual = 2;
    constexpr std::uintptr_t kSet = 4;

    bool isAlone(std::uintptr_t word) { return (word & kAlone) != 0; }

    EventState* stateOf(std::uintptr_t word) { return reinterpret_cast<EventState*>(word); }

} // namespace

Event::Event(bool manual) noexcept
    : m_word(kAlone | (manual ? kManual : 0))
{
}

Event::~Event()
{
    const std::uintptr_t word = m_word.load(std::memory_order_acquire);
    if (!isAlone(word)) {
        stateOf(word)->ReleaseUse();
    }
}

Event::Event(const Event& other)
{
    EventState* state = other.share();
    if (state == nullptr) {
        throw std::bad_alloc();
    }
    state->AddUse();
    m_word.store(reinterpret_cast<std::uintptr_t>(state), std::memory_order_release);
}

Event& Event::operator=(const Event& other)
{
    if (this != &other) {
        Event copy(other); // takes the former flag with it
        copy.m_word.store(
            m_word.exchange(copy.m_word.load(std::memory_order_relaxed), std::memory_order_acq_rel),
            std::memory_order_relaxed);
    }
    return *this;
}

EventState* Event::share() const noexcept
{
    std::uintptr_t word = m_word.load(std::memory_order_acquire);
    if (!isAlone(word)) {
        return stateOf(word);
    }
    const StopGuard unstopped; // the allocator has a lock, too
    while (isAlone(word)) {
        auto* state = new (std::nothrow) EventState((word & kManual) != 0, (word & kSet) != 0);
        if (state == nullptr
            || m_word.compare_exchange_strong(word, reinterpret_cast<std::uintptr_t>(state),
                std::memory_order_acq_rel, std::memory_order_acquire)) {
            return state;
        }
        state->ReleaseUse(); // the flag was changed, or another thread was faster
    }
    return stateOf(word);
}

void Event::Set() noexcept
{
    std::uintptr_t word = m_word.load(std::memory_order_acquire);
    while (isAlone(word)) { // so nobody sleeps
        if (m_word.compare_exchange_weak(
                word, word | kSet, std::memory_order_release, std::memory_order_acquire)) {
            return;
        }
    }
    stateOf(word)->Set();
}

void Event::Reset() noexcept
{
    std::uintptr_t word = m_word.load(std::memory_order_acquire);
    while (isAlone(word)) {
        if (m_word.compare_exchange_weak(
                word, word & ~kSet, std::memory_order_acq_rel, std::memory_order_acquire)) {
            return;
        }
    }
    stateOf(word)->Reset();
}

bool Event::tryTake() const noexcept
{
    std::uintptr_t word = m_word.load(std::memory_order_acquire);
    while (isAlone(word)) {
        if ((word & kSet) == 0) {
            return false;
        }
        if ((word & kManual) != 0
            || m_word.compare_exchange_weak(
                word, word & ~kSet, std::memory_order_acq_rel, std::memory_order_acquire)) {
            return true;
        }
    }
    return stateOf(word)->TryTake();
}

EWait Event::Wait(unsigned int milliseconds) const noexcept
{
    const Event* const self = this;
    std::size_t index = 0;
    return WaitForAny(&self, 1, milliseconds, index);
}

EWait Event::WaitForAny(const Event* const* events, std::size_t count, unsigned int milliseconds,
    std::size_t& index) noexcept
{
    if (count == 0 || std::find(events, events + count, nullptr) != events + count) {
        return eW_Failed;
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (events[i]->tryTake()) {
            index = i;
            return eW_Signaled;
        }
    }
    if (milliseconds == 0) {
        return eW_TimedOut;
    }
    EventWaiter* waiter = EventWaiter::GetCurrent();
    return waiter != nullptr ? waiter->Wait(events, count, GetDeadline(milliseconds), index)
                             : eW_Failed;
}

} // namespace platform
