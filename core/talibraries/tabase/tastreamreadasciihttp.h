#pragma once

#include "tabase/tahttpexchange.h"
#include "tabase/tastreamreadascii.h"

#include <cstdint>

/// The text reader of what an HTTP server answers to GET. The constructor fetches the whole body,
/// which is then in memory.
///
/// The end is reported together with the last byte, deliberately: a line takes that byte in, a word
/// does not. So a body whose last word no white space follows loses that word's last character;
/// read it through TaStreamReadASCIIString instead.
///
/// Where the answer is not whole, or none, the text is as much of the body as came: ask GetEnd().
///
/// Threads: one thread at a time.
/// Failure: besides that of TaStreamReadASCII: TuExceptionStream from the constructor, with the
///          reason, for an address that cannot be read and where there comes no connection.
class TABASE_API TaStreamReadASCIIHTTP : public TaStreamReadASCII
{
    TU_DECLARE_RTTI

public:
    /// `progress`, where there is one, is told how far the answer has come.
    explicit TaStreamReadASCIIHTTP(
        const CString& address, const SNetworkWait& wait = {}, TaProgressSink* progress = nullptr);
    /// Reads the body of an answer that was fetched by other means.
    explicit TaStreamReadASCIIHTTP(TaHTTPResponse&& response);

    /// Each unit holds one byte, 0 to 255.
    const CString& GetText() const { return m_text; }
    /// How the answer ended, or what is wrong with it.
    const SNetworkEnd& GetEnd() const { return m_end; }
    /// That of the answer; 0 where none came.
    unsigned int GetStatus() const { return m_status; }

protected:
    /// Of an empty text, and behind the end, it reports the end and leaves `c` as it is.
    bool read(char& c) override;

private:
    CString m_text;
    std::uint32_t m_position = 0;
    SNetworkEnd m_end;
    unsigned int m_status;
};
