#include "groundwork/tuevent.h"

#include "groundwork/tuarray.h"

#include <memory>
#include <new>

// Windows exports the constants of a class where a source repeats them.
constexpr unsigned int TuEvent::kInfinite;

TuEvent::EWaitResult TuEvent::WaitForMultipleEvents(
    const TuArray<const TuEvent*>& events, unsigned int milliseconds, unsigned int* index)
{
    return WaitForMultipleEvents(events.begin(), events.GetSize(), milliseconds, index);
}

TuEvent::EWaitResult TuEvent::WaitForMultipleEvents(const TuEvent* const* events,
    unsigned int count, unsigned int milliseconds, unsigned int* index)
{
    constexpr unsigned int kOnStack = 64;
    const platform::Event* few[kOnStack];
    std::unique_ptr<const platform::Event*[]> many;
    const platform::Event** flags = few;
    if (count > kOnStack) {
        many.reset(new (std::nothrow) const platform::Event*[count]);
        if (many == nullptr) {
            return eWR_Failed;
        }
        flags = many.get();
    }
    for (unsigned int i = 0; i < count; ++i) {
        flags[i] = events[i] != nullptr ? &events[i]->m_event : nullptr;
    }
    std::size_t found = 0;
    const platform::EWait result = platform::Event::WaitForAny(flags, count, milliseconds, found);
    if (index != nullptr && result == platform::eW_Signaled) {
        *index = static_cast<unsigned int>(found);
    }
    return static_cast<EWaitResult>(result);
}
