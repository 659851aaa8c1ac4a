#include "tabase/tastreamwriteasciitcpip.h"

#include "groundwork/tuexceptions.h"
#include "groundwork/tustreamwriteasciitrace.h"

#include <utility>

TU_DEFINE_RTTI2(TaStreamWriteASCIITCPIP, TuStreamWriteASCII, TaStreamTCPIPBase, nullptr, nullptr);

namespace {

constexpr std::size_t kBufferSize = 65536;

} // namespace

TaStreamWriteASCIITCPIP::TaStreamWriteASCIITCPIP(
    const CStringA& host, std::uint16_t port, const SNetworkWait& wait, bool separated)
    : TuStreamWriteASCII(separated)
    , TaStreamTCPIPBase(host, port, wait)
{
}

TaStreamWriteASCIITCPIP::TaStreamWriteASCIITCPIP(TaSocket&& connection, bool separated)
    : TuStreamWriteASCII(separated)
    , TaStreamTCPIPBase(std::move(connection))
{
}

TaStreamWriteASCIITCPIP::~TaStreamWriteASCIITCPIP()
{
    try {
        Close();
    } catch (const std::exception& failure) {
        try {
            TuStreamWriteASCIITraceDiagnostic() << CString::FromUtf8(failure.what()) << u"\n";
        } catch (...) { // out of memory: there is no way left to report
        }
    }
}

void TaStreamWriteASCIITCPIP::Flush()
{
    checkOpen();
    if (!getSocket().Send(m_buffer.data(), m_buffer.size())) {
        getSocket().Close(); // so that the loss is thrown, and not reported once more
        checkOpen();
    }
    m_buffer.clear();
}

void TaStreamWriteASCIITCPIP::Close()
{
    if (!IsOpen()) {
        return;
    }
    Flush();
    getSocket().ShutDownSending();
    getSocket().Close();
}

void TaStreamWriteASCIITCPIP::write(const char* text) { append(text); }

void TaStreamWriteASCIITCPIP::write(const char16_t* text) { append(platform::ToCodePage(text)); }

void TaStreamWriteASCIITCPIP::append(std::string_view text)
{
    checkOpen();
    m_buffer += text;
    if (m_buffer.size() >= kBufferSize) {
        Flush();
    }
}

void TaStreamWriteASCIITCPIP::checkOpen() const
{
    if (!IsOpen()) {
        throw TuExceptionStream(TU_HERE,
            u"cannot send: "
                + (GetEnd().kind == eNE_None ? CString(u"the connection is closed")
                                             : GetEnd().text));
    }
}
