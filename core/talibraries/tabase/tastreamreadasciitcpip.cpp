#include "tabase/tastreamreadasciitcpip.h"

#include <utility>

TU_DEFINE_RTTI2(TaStreamReadASCIITCPIP, TaStreamReadASCII, TaStreamTCPIPBase, nullptr, nullptr);

namespace {

constexpr std::size_t kBufferSize = 65536;

} // namespace

TaStreamReadASCIITCPIP::TaStreamReadASCIITCPIP(
    const CStringA& host, std::uint16_t port, const SNetworkWait& wait)
    : TaStreamTCPIPBase(host, port, wait)
    , m_buffer(new char[kBufferSize])
{
}

TaStreamReadASCIITCPIP::TaStreamReadASCIITCPIP(TaSocket&& connection)
    : TaStreamTCPIPBase(std::move(connection))
    , m_buffer(new char[kBufferSize])
{
}

void TaStreamReadASCIITCPIP::Close()
{
    m_next = m_end;
    getSocket().Close();
}

bool TaStreamReadASCIITCPIP::read(char& c)
{
    if (m_next == m_end && !fill()) {
        return true;
    }
    c = *m_next++;
    return false;
}

bool TaStreamReadASCIITCPIP::fill()
{
    m_next = m_end = m_buffer.get();
    m_end += getSocket().Receive(m_buffer.get(), kBufferSize);
    return m_next != m_end;
}
