#pragma once

#include "groundwork/tustreamwriteascii.h"
#include "tabase/tastreamtcpipbase.h"

#include <string>

/// A readable writer into a TCP/IP connection, buffered; text is in the system code page. By
/// default its values are separated, so that TaStreamReadASCIITCPIP reads them back.
///
/// Threads: one thread at a time.
/// Failure: TuExceptionStream, with the reason, when there comes no connection or bytes cannot be
///          sent; at the latest from Flush() or Close(). That the other side has received them,
///          nobody knows. The destructor, which closes what is open, cannot throw: it reports a
///          loss to the diagnostic trace.
class TABASE_API TaStreamWriteASCIITCPIP final : public TuStreamWriteASCII, public TaStreamTCPIPBase
{
    TU_DECLARE_RTTI

public:
    TaStreamWriteASCIITCPIP(const CStringA& host, std::uint16_t port, const SNetworkWait& wait = {},
        bool separated = true);
    /// Writes into a connection that is there already.
    explicit TaStreamWriteASCIITCPIP(TaSocket&& connection, bool separated = true);
    ~TaStreamWriteASCIITCPIP() override;

    /// Sends what is in the buffer: the other side may wait for it.
    void Flush();
    /// Sends it and closes.
    void Close();

private:
    void write(const char* text) override;
    void write(const char16_t* text) override;
    void append(std::string_view text);
    void checkOpen() const;

    std::string m_buffer;
};
