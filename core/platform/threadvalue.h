#pragma once

#include <cstdint>

namespace platform {

/// A value of the calling thread, null at first, that is handed to a function when the thread ends
/// and its own objects are destroyed. Not so when the thread is killed.
///
/// It stands for `thread_local` objects with a destructor: those need memory of the C library's
/// that a killed thread loses, and with MinGW-w64 a destructor finds other variables of its thread
/// gone.
class ThreadValue
{
public:
    using EndFunction = void (*)(void* value);

    explicit ThreadValue(EndFunction end) noexcept;

    void* Get() const noexcept;
    /// False where the system has no place for it.
    [[nodiscard]] bool Set(void* value) const noexcept;

private:
    std::uintptr_t m_key = 0;
    bool m_isUsable;
};

} // namespace platform
