#pragma once

#include "platform/platformsocket.h"
#include "tabase/tabaseapi.h"
#include "tabase/tanetwork.h"

#include <cstddef>

/// A connection over TCP/IP that knows how long it waits, and why it ended.
///
/// What it carries is neither encrypted nor checked: whoever stands between the two sides can read
/// and change it.
///
/// Ownership: owns the connection; movable, not copyable.
/// Threads:   one thread at a time, for the end is one of both directions. Any thread may set the
///            stop event.
/// Failure:   TuExceptionStream, with host, port and reason, where there comes no connection.
///            Afterwards nothing is thrown; GetEnd() tells.
class TABASE_API TaSocket
{
public:
    /// Connects.
    TaSocket(const CStringA& host, std::uint16_t port, const SNetworkWait& wait = {});
    /// Takes over a connection, one that was accepted.
    explicit TaSocket(platform::Socket&& connection, const SNetworkWait& wait = {});

    /// Takes up to `size` bytes as soon as there are any; returns how many, and 0 at the end.
    [[nodiscard]] std::size_t Receive(void* data, std::size_t size);
    /// Sends all of them; false where the connection has ended.
    [[nodiscard]] bool Send(const void* data, std::size_t size);
    /// Tells the other side that all has been sent.
    void ShutDownSending() { m_socket.ShutDownSending(); }
    void Close() { m_socket.Close(); }

    bool IsOpen() const { return m_socket.IsOpen(); }
    /// Closed, timed out, interrupted or failed; once it is not eNE_None, it stays, and nothing is
    /// sent or received any more.
    const SNetworkEnd& GetEnd() const { return m_end; }

private:
    bool isDone(platform::ESocketResult result);

    platform::Socket m_socket;
    platform::SSocketWait m_wait;
    SNetworkEnd m_end;
};
