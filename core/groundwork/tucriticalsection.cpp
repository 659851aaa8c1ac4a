#include "groundwork/tucriticalsection.h"

TuCriticalSection& GetCriticalSectionSingleton()
{
    // Never destroyed: what runs at the exit of the process still looks for singletons.
    static TuCriticalSection& s_lock = *new TuCriticalSection;
    return s_lock;
}
