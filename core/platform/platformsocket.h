#pragma once

#include "platform/platformapi.h"
#include "platform/platformclock.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>

namespace platform {

enum ESocketResult
{
    eSR_Done,
    eSR_Ended, // the other side sends no more
    eSR_TimedOut,
    eSR_Stopped, // as the caller's isStopped asked for
    eSR_UnknownHost, // no address goes by that name, or nobody can be asked
    eSR_Failed, // GetLastSystemError() has the reason
};

/// How long a socket waits.
struct SSocketWait
{
    unsigned int milliseconds = kWaitForever; // 0 only asks
    /// Asked at first and then twenty times a second, on the thread that waits: once it answers
    /// true, the wait ends. None for a wait that only time ends.
    std::function<bool()> isStopped;
};

/// A TCP socket: one end of a connection, or what listens for connections from this machine.
///
/// Ownership: the handle is closed by the destructor; movable, not copyable.
/// Threads:   one thread may send while another receives; else one thread at a time. To end another
///            thread's wait, let its isStopped answer true.
/// Failure:   anything but eSR_Done, or false. No signal is raised.
class PLATFORM_API Socket
{
public:
    Socket() = default;
    ~Socket() { Close(); }
    Socket(Socket&& other) noexcept
        : m_handle(std::exchange(other.m_handle, kNoHandle))
    {
    }
    Socket& operator=(Socket&& other) noexcept
    {
        if (this != &other) {
            Close();
            m_handle = std::exchange(other.m_handle, kNoHandle);
        }
        return *this;
    }

    /// Connects to a host by its name or address, IPv4 or IPv6. All its addresses are tried in
    /// turn, each for its share of the time that is left; the result is that of the last one.
    /// Finding the addresses of a name is the system's affair: it may take longer than the wait,
    /// and cannot be stopped.
    [[nodiscard]] ESocketResult Connect(
        std::string_view host, std::uint16_t port, const SSocketWait& wait);

    /// Listens on 127.0.0.1, where only this machine can reach it; port 0 takes any that is free.
    [[nodiscard]] bool Listen(std::uint16_t port);
    /// Waits for a connection.
    [[nodiscard]] ESocketResult Accept(Socket& connection, const SSocketWait& wait);
    /// Of this side; 0 where there is none.
    std::uint16_t GetPort() const;

    /// Waits until there are bytes, and takes up to `size` of them, which is not 0.
    [[nodiscard]] ESocketResult Receive(
        void* data, std::size_t size, std::size_t& count, const SSocketWait& wait);
    /// Sends all bytes. The wait begins anew whenever some have gone; unless eSR_Done, nobody knows
    /// how many have arrived.
    [[nodiscard]] ESocketResult Send(const void* data, std::size_t size, const SSocketWait& wait);
    /// Tells the other side that no more bytes come; it can still send.
    bool ShutDownSending();

    bool IsOpen() const { return m_handle != kNoHandle; }
    /// Bytes sent still travel; but where some that came in were not received, the other side may
    /// find the connection reset, and lose them.
    void Close();

private:
    static constexpr std::intptr_t kNoHandle = -1;

    std::intptr_t m_handle = kNoHandle;
};

} // namespace platform
