#pragma once

#include "groundwork/tustreamwriteascii.h"
#include "tabase/tahttpexchange.h"

#include <string>

/// A readable writer to an HTTP server; text is in the system code page. What is written is
/// collected, and Send() puts it where TaStreamReadASCIIHTTP of the same address finds it: by PUT,
/// as one body. By default the values are separated, so that that reads them back.
///
/// Threads: one thread at a time.
/// Failure: TuExceptionStream, with the reason, from the constructor for an address that cannot be
///          understood, and from Send(). What is not sent is dropped: the destructor sends nothing.
class TABASE_API TaStreamWriteASCIIHTTP final : public TuStreamWriteASCII
{
    TU_DECLARE_RTTI

public:
    explicit TaStreamWriteASCIIHTTP(
        const CString& address, const SNetworkWait& wait = {}, bool separated = true);

    /// Sends what has been written, and waits until the server has answered that it took it (any
    /// status from 200 to 299). After a failure the server may have it or not; the body stays, to
    /// be sent again. After a success it is empty.
    void Send();

    /// How the latest answer ended, or what is wrong with it.
    const SNetworkEnd& GetEnd() const { return m_end; }
    unsigned int GetStatus() const { return m_status; }

private:
    void write(const char* text) override;
    void write(const char16_t* text) override;

    const TaNetworkAddress m_address;
    const SNetworkWait m_wait;
    std::string m_body;
    SNetworkEnd m_end;
    unsigned int m_status = 0;
};
