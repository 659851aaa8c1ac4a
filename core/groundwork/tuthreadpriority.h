#pragma once

#include "groundwork/groundworkapi.h"

/// How much a thread is preferred to others, from the lowest to the highest. On Linux most steps
/// are niceness: anybody may lower it, only some may raise it (again).
enum EThreadPriority : int
{
    eTP_Idle = -15,
    eTP_Lowest = -2,
    eTP_BelowNormal = -1,
    eTP_Normal = 0,
    eTP_AboveNormal = 1,
    eTP_Highest = 2,
    eTP_TimeCritical = 15,
};

/// Moves `priority` one step up or down; false, and nothing changes, at the end of the ladder and
/// for a value that is not on it.
[[nodiscard]] GROUNDWORK_API bool TuStepUp(EThreadPriority& priority);
[[nodiscard]] GROUNDWORK_API bool TuStepDown(EThreadPriority& priority);
