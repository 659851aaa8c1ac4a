#include "platform/posix/threadpriority.h"

#include <errno.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>

namespace platform {
namespace {

    struct SStep
    {
        int priority;
        int policy;
        int niceness; // beside that of the process
    };

    // The classes at both ends take the niceness of their neighbours with them, so that the way
    // back to these needs no more rights than the way there.
    constexpr SStep kLadder[] = {
        { -15, SCHED_IDLE, 10 },
        { -2, SCHED_OTHER, 10 },
        { -1, SCHED_OTHER, 5 },
        { 0, SCHED_OTHER, 0 },
        { 1, SCHED_OTHER, -5 },
        { 2, SCHED_OTHER, -10 },
        { 15, SCHED_RR, -10 },
    };

    bool setPolicy(pid_t id, int policy)
    {
        if (sched_getscheduler(id) == policy) {
            return true;
        }
        sched_param parameters{};
        parameters.sched_priority = policy == SCHED_RR ? sched_get_priority_min(SCHED_RR) : 0;
        return sched_setscheduler(id, policy, &parameters) == 0;
    }

    bool setNiceness(pid_t id, int niceness)
    {
        // A thread's id stands where a process's is asked for: each thread has a niceness.
        return setpriority(PRIO_PROCESS, static_cast<id_t>(id), niceness) == 0;
    }

} // namespace

bool ApplyThreadPriority(std::uint32_t id, int priority)
{
    const SStep* step = std::find_if(std::begin(kLadder), std::end(kLadder),
        [priority](const SStep& candidate) { return candidate.priority == priority; });
    if (step == std::end(kLadder)) {
        errno = EINVAL;
        return false;
    }
    const auto thread = static_cast<pid_t>(id);
    const int formerNiceness = getpriority(PRIO_PROCESS, static_cast<id_t>(id));
    const int ofProcess = getpriority(PRIO_PROCESS, static_cast<id_t>(getpid()));
    if (setNiceness(thread, ofProcess + step->niceness)) {
        if (setPolicy(thread, step->policy)) {
            return true;
        }
        const int reason = errno;
        setNiceness(thread, formerNiceness);
        errno = reason;
    }
    return false;
}

} // namespace platform
