#include "tabase/tastreamwriteasciihttp.h"

#include "groundwork/tuexceptions.h"

TU_DEFINE_RTTI(TaStreamWriteASCIIHTTP, TuStreamWriteASCII, nullptr, nullptr);

TaStreamWriteASCIIHTTP::TaStreamWriteASCIIHTTP(
    const CString& address, const SNetworkWait& wait, bool separated)
    : TuStreamWriteASCII(separated)
    , m_address(address)
    , m_wait(wait)
{
}

void TaStreamWriteASCIIHTTP::Send()
{
    TaHTTPResponse response(TaHTTPResponse::eW_Status);
    TaExchangeHTTP(m_address, { .method = "PUT", .body = m_body }, m_wait, response);
    m_end = response.GetEnd();
    m_status = response.GetStatus();
    if (!m_end.IsWhole()) {
        throw TuExceptionStream(TU_HERE, u"cannot send: " + m_end.text);
    }
    m_body.clear();
}

void TaStreamWriteASCIIHTTP::write(const char* text) { m_body += text; }

void TaStreamWriteASCIIHTTP::write(const char16_t* text) { m_body += platform::ToCodePage(text); }
