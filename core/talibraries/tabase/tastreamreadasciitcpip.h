#pragma once

#include "tabase/tastreamreadascii.h"
#include "tabase/tastreamtcpipbase.h"

#include <memory>

/// The text reader of a TCP/IP connection, buffered: it asks for nothing, and reads what the other
/// side sends until that closes.
///
/// The reader's end is that of the connection, whatever brought it about: ask GetEnd() afterwards
/// whether the text is whole. A text that broke off may end in half a number.
///
/// Threads: one thread at a time.
/// Failure: besides that of TaStreamReadASCII: TuExceptionStream where there comes no connection.
class TABASE_API TaStreamReadASCIITCPIP : public TaStreamReadASCII, public TaStreamTCPIPBase
{
    TU_DECLARE_RTTI

public:
    TaStreamReadASCIITCPIP(const CStringA& host, std::uint16_t port, const SNetworkWait& wait = {});
    /// Reads from a connection that is there already.
    explicit TaStreamReadASCIITCPIP(TaSocket&& connection);

    /// Nothing can be read afterwards.
    void Close();

protected:
    /// Waits for a byte; true unless exactly one has come.
    bool read(char& c) override;

private:
    bool fill();

    std::unique_ptr<char[]> m_buffer;
    const char* m_next = nullptr; // the unread part of the buffer
    const char* m_end = nullptr;
};
