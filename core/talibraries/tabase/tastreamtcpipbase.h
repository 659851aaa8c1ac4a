#pragma once

#include "groundwork/iobject.h"
#include "tabase/tasocket.h"

/// What the TCP/IP streams share: the connection.
///
/// Ownership: owns the connection.
/// Threads:   one thread at a time.
/// Failure:   TuExceptionStream where there comes no connection.
class TABASE_API TaStreamTCPIPBase : public virtual IObject
{
    TU_DECLARE_RTTI

public:
    TaStreamTCPIPBase(const TaStreamTCPIPBase&) = delete;
    TaStreamTCPIPBase& operator=(const TaStreamTCPIPBase&) = delete;
    ~TaStreamTCPIPBase() override;

    bool IsOpen() const { return m_socket.IsOpen(); }
    /// Why the connection ended; see TaSocket.
    const SNetworkEnd& GetEnd() const { return m_socket.GetEnd(); }

protected:
    TaStreamTCPIPBase(const CStringA& host, std::uint16_t port, const SNetworkWait& wait);
    explicit TaStreamTCPIPBase(TaSocket&& connection);

    TaSocket& getSocket() { return m_socket; }

private:
    TaSocket m_socket;
};
