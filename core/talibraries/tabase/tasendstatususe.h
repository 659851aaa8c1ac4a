#pragma once

#include "tabase/tabaseapi.h"

#include <utility>

class TaThreadSendStatus;

/// A counted use of a send status, which returns to its pool after the last one.
///
/// Threads: uses of one status may be copied and dropped on any thread.
class TABASE_API TaSendStatusUse
{
public:
    TaSendStatusUse() = default;
    /// Takes over the use that a new status has.
    explicit TaSendStatusUse(TaThreadSendStatus& status) noexcept
        : m_status(&status)
    {
    }
    TaSendStatusUse(const TaSendStatusUse& other) noexcept;
    TaSendStatusUse(TaSendStatusUse&& other) noexcept
        : m_status(std::exchange(other.m_status, nullptr))
    {
    }
    TaSendStatusUse& operator=(TaSendStatusUse other) noexcept
    {
        std::swap(m_status, other.m_status);
        return *this;
    }
    ~TaSendStatusUse();

    explicit operator bool() const { return m_status != nullptr; }
    TaThreadSendStatus& operator*() const { return *m_status; }
    TaThreadSendStatus* operator->() const { return m_status; }

private:
    TaThreadSendStatus* m_status = nullptr;
};
