#pragma once

#include "groundwork/cstring.h"
#include "groundwork/groundworkapi.h"

#include <cstdint>

/// A stopwatch on the system's monotonic clock.
///
///     TuTimer timer(TuTimer::eR_Milliseconds);
///     timer.Start();
///     Work();
///     timer.Stop();
///     Show(TuTimer::GetFormatted(timer.GetElapsedTime(), TuTimer::eR_Milliseconds));
///
/// Threads: one thread at a time.
/// Failure: none.
class GROUNDWORK_API TuTimer
{
public:
    /// The unit in which time is told; whole units, the rest is cut off.
    enum EResolution
    {
        eR_Seconds,
        eR_Milliseconds,
        eR_Microseconds,
        eR_Nanoseconds,
    };

    explicit TuTimer(EResolution resolution)
        : m_resolution(resolution)
    {
    }

    /// Begins anew, at 0.
    void Start();
    /// The elapsed time stays as it is; nothing happens on a timer that does not run.
    void Stop();
    bool IsRunning() const { return m_isRunning; }
    /// Since Start, up to Stop, or up to now where the timer runs; 0 before the first Start.
    unsigned long long GetElapsedTime() const;

    /// Hours, minutes and seconds, with as many digits behind the point as the resolution has:
    /// "26:03:04" or "0:00:01.250".
    static CString GetFormatted(unsigned long long time, EResolution resolution);

private:
    EResolution m_resolution;
    bool m_isRunning = false;
    std::uint64_t m_start = 0; // nanoseconds
    std::uint64_t m_elapsed = 0; // nanoseconds, of a timer that has been stopped
};
