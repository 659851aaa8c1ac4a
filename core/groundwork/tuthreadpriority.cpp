#include "groundwork/tuthreadpriority.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr EThreadPriority kLadder[] = { eTP_Idle, eTP_Lowest, eTP_BelowNormal, eTP_Normal,
    eTP_AboveNormal, eTP_Highest, eTP_TimeCritical };

const EThreadPriority* find(EThreadPriority priority)
{
    return std::find(std::begin(kLadder), std::end(kLadder), priority);
}

} // namespace

bool TuStepUp(EThreadPriority& priority)
{
    const EThreadPriority* step = find(priority);
    const bool hasNext = step != std::end(kLadder) && step + 1 != std::end(kLadder);
    priority = hasNext ? step[1] : priority;
    return hasNext;
}

bool TuStepDown(EThreadPriority& priority)
{
    const EThreadPriority* step = find(priority);
    const bool hasPrevious = step != std::end(kLadder) && step != std::begin(kLadder);
    priority = hasPrevious ? step[-1] : priority;
    return hasPrevious;
}
