#include "groundwork/tutimer.h"

#include "platform/platformclock.h"

#include <string>

namespace {

constexpr std::uint64_t kNanoseconds = 1'000'000'000;

int digitsOf(TuTimer::EResolution resolution)
{
    switch (resolution) {
    case TuTimer::eR_Seconds:
        return 0;
    case TuTimer::eR_Milliseconds:
        return 3;
    case TuTimer::eR_Microseconds:
        return 6;
    case TuTimer::eR_Nanoseconds:
        break;
    }
    return 9;
}

std::uint64_t unitsPerSecond(TuTimer::EResolution resolution)
{
    std::uint64_t units = 1;
    for (int digit = 0; digit < digitsOf(resolution); ++digit) {
        units *= 10;
    }
    return units;
}

std::string padded(std::uint64_t number, int width)
{
    std::string digits = std::to_string(number);
    const auto length = static_cast<std::size_t>(width);
    return digits.size() < length ? std::string(length - digits.size(), '0') + digits : digits;
}

} // namespace

void TuTimer::Start()
{
    m_isRunning = true;
    m_start = platform::GetMonotonicTime();
}

void TuTimer::Stop()
{
    if (m_isRunning) {
        m_elapsed = platform::GetMonotonicTime() - m_start;
        m_isRunning = false;
    }
}

unsigned long long TuTimer::GetElapsedTime() const
{
    const std::uint64_t elapsed = m_isRunning ? platform::GetMonotonicTime() - m_start : m_elapsed;
    return elapsed / (kNanoseconds / unitsPerSecond(m_resolution));
}

CString TuTimer::GetFormatted(unsigned long long time, EResolution resolution)
{
    const std::uint64_t units = unitsPerSecond(resolution);
    const std::uint64_t seconds = time / units;
    std::string text = std::to_string(seconds / 3600) + ':' + padded(seconds / 60 % 60, 2) + ':'
        + padded(seconds % 60, 2);
    if (const int digits = digitsOf(resolution)) {
        text += '.' + padded(time % units, digits);
    }
    return CString::FromUtf8(text);
}
