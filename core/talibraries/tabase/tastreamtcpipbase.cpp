#include "tabase/tastreamtcpipbase.h"

#include <utility>

TU_DEFINE_RTTI_ROOT(TaStreamTCPIPBase, nullptr, nullptr);

TaStreamTCPIPBase::TaStreamTCPIPBase(
    const CStringA& host, std::uint16_t port, const SNetworkWait& wait)
    : m_socket(host, port, wait)
{
}

TaStreamTCPIPBase::TaStreamTCPIPBase(TaSocket&& connection)
    : m_socket(std::move(connection))
{
}

TaStreamTCPIPBase::~TaStreamTCPIPBase() = default;
