#include "groundwork/tuperformancecounter.h"

#include "platform/platformclock.h"

TU_DEFINE_SINGLETON(TuPerformanceCounter)

TuPerformanceCounter::TuPerformanceCounter()
    : m_frequency(platform::GetPerformanceFrequency())
{
}

unsigned long long TuPerformanceCounter::GetCount() const
{
    return platform::GetPerformanceCount();
}
