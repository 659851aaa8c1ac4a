#include "tabase/tasocket.h"

#include "groundwork/tuexceptions.h"
#include "groundwork/tulatesterror.h"

#include <string>
#include <utility>

namespace {

platform::SSocketWait makeWait(const SNetworkWait& wait)
{
    platform::SSocketWait result{ wait.milliseconds, {} };
    if (wait.stop != nullptr) {
        result.isStopped = [stop = wait.stop] { return stop->IsSet(); };
    }
    return result;
}

CString formatTime(unsigned int milliseconds)
{
    return CString::FromUtf8(milliseconds % 1000 == 0 ? std::to_string(milliseconds / 1000) + " s"
                                                      : std::to_string(milliseconds) + " ms");
}

SNetworkEnd makeEnd(platform::ESocketResult result, unsigned int milliseconds)
{
    switch (result) {
    case platform::eSR_Done:
        return {};
    case platform::eSR_Ended:
        return { eNE_Closed, {} };
    case platform::eSR_TimedOut:
        return { eNE_TimedOut, u"the other side did not answer for " + formatTime(milliseconds) };
    case platform::eSR_Stopped:
        return { eNE_Interrupted, u"interrupted" };
    case platform::eSR_UnknownHost:
        return { eNE_Failed, u"there is no such host" };
    case platform::eSR_Failed:
        break;
    }
    return { eNE_Failed, TuLatestError().GetMessageText() };
}

} // namespace

TaSocket::TaSocket(const CStringA& host, std::uint16_t port, const SNetworkWait& wait)
    : m_wait(makeWait(wait))
{
    if (!isDone(m_socket.Connect(host, port, m_wait))) {
        throw TuExceptionStream(TU_HERE,
            u"cannot connect to " + CString::FromUtf8(host) + u", port "
                + CString::FromUtf8(std::to_string(port)) + u": " + m_end.text);
    }
}

TaSocket::TaSocket(platform::Socket&& connection, const SNetworkWait& wait)
    : m_socket(std::move(connection))
    , m_wait(makeWait(wait))
{
}

std::size_t TaSocket::Receive(void* data, std::size_t size)
{
    std::size_t count = 0;
    if (m_end.kind == eNE_None) {
        isDone(m_socket.Receive(data, size, count, m_wait));
    }
    return count;
}

bool TaSocket::Send(const void* data, std::size_t size)
{
    return m_end.kind == eNE_None && isDone(m_socket.Send(data, size, m_wait));
}

bool TaSocket::isDone(platform::ESocketResult result)
{
    if (result != platform::eSR_Done) {
        m_end = makeEnd(result, m_wait.milliseconds);
    }
    return result == platform::eSR_Done;
}
