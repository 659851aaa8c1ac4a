#include "tabase/tastreamreadasciihttp.h"

#include <utility>

TU_DEFINE_RTTI(TaStreamReadASCIIHTTP, TaStreamReadASCII, nullptr, nullptr);

namespace {

TaHTTPResponse fetch(const CString& address, const SNetworkWait& wait, TaProgressSink* progress)
{
    TaHTTPResponse response;
    TaExchangeHTTP(TaNetworkAddress(address), { .progress = progress }, wait, response);
    return response;
}

} // namespace

TaStreamReadASCIIHTTP::TaStreamReadASCIIHTTP(
    const CString& address, const SNetworkWait& wait, TaProgressSink* progress)
    : TaStreamReadASCIIHTTP(fetch(address, wait, progress))
{
}

TaStreamReadASCIIHTTP::TaStreamReadASCIIHTTP(TaHTTPResponse&& response)
    : m_text(response.TakeBody())
    , m_end(response.GetEnd())
    , m_status(response.GetStatus())
{
}

bool TaStreamReadASCIIHTTP::read(char& c)
{
    if (m_position >= m_text.GetLength()) {
        return true;
    }
    c = static_cast<char>(m_text[m_position++]);
    return m_position == m_text.GetLength();
}
