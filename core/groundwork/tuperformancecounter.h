#pragma once

#include "groundwork/tusingleton.h"

class TuPerformanceCounter;
TU_DECLARE_SINGLETON(GROUNDWORK_API, TuPerformanceCounter)

/// The finest clock of the system, as it counts; for a span in a usual unit take a TuTimer.
///
/// Threads: any thread may call any member.
/// Failure: none.
class GROUNDWORK_API TuPerformanceCounter : public TuSingleton<TuPerformanceCounter>
{
public:
    unsigned long long GetCount() const;
    /// How many counts make a second; it never changes.
    unsigned long long GetFrequency() const { return m_frequency; }
    double GetSeconds(unsigned long long counts) const
    {
        return static_cast<double>(counts) / static_cast<double>(m_frequency);
    }

private:
    friend class TuSingleton<TuPerformanceCounter>;
    static constexpr bool kLivesToTheEnd = true; // exit handlers measure, too

    TuPerformanceCounter();
    ~TuPerformanceCounter() override = default;

    const unsigned long long m_frequency;
};
