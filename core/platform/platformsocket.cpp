#include "platform/platformsocket.h"

#include "platform/socketsystem.h"

#include <algorithm>
#include <vector>

namespace platform {

using namespace socketsystem;

namespace {

    constexpr unsigned int kSlice = 50; // in milliseconds, between two looks at isStopped
    constexpr unsigned int kLongestSlice = 1u << 29;

    ESocketResult toResult(EStep step)
    {
        switch (step) {
        case eS_Done:
            return eSR_Done;
        case eS_Ended:
            return eSR_Ended;
        case eS_Unknown:
            return eSR_UnknownHost;
        case eS_Again:
        case eS_Failed:
            break;
        }
        return eSR_Failed;
    }

    /// Waits until the socket can do it.
    ESocketResult await(
        Handle socket, EReady ready, std::uint64_t deadline, const std::function<bool()>& isStopped)
    {
        for (;;) {
            if (isStopped && isStopped()) {
                return eSR_Stopped;
            }
            const unsigned int left = GetMillisecondsUntil(deadline);
            const EStep step
                = Await(socket, ready, std::min(left, isStopped ? kSlice : kLongestSlice));
            if (step != eS_Again) {
                return toResult(step);
            }
            if (left == 0) {
                return eSR_TimedOut;
            }
        }
    }

    /// Does one step as soon as the socket is ready for it.
    template <class Step>
    ESocketResult awaitStep(Handle socket, EReady ready, std::uint64_t deadline,
        const std::function<bool()>& isStopped, Step&& step)
    {
        for (;;) {
            const ESocketResult result = await(socket, ready, deadline, isStopped);
            if (result != eSR_Done) {
                return result;
            }
            if (const EStep done = step(); done != eS_Again) {
                return toResult(done);
            }
        }
    }

    /// `socket` is open where the result is eSR_Done.
    ESocketResult connectTo(Handle& socket, const SAddress& address, std::uint64_t deadline,
        const std::function<bool()>& isStopped)
    {
        socket = Open(address.family, address.protocol);
        if (socket < 0) {
            return eSR_Failed;
        }
        const EStep begun = BeginConnect(socket, address);
        const ESocketResult result = begun == eS_Again ? awaitStep(socket, eR_Write, deadline,
                                         isStopped, [socket] { return EndConnect(socket); })
                                                       : toResult(begun);
        if (result != eSR_Done) {
            socketsystem::Close(socket);
        }
        return result;
    }

} // namespace

ESocketResult Socket::Connect(std::string_view host, std::uint16_t port, const SSocketWait& wait)
{
    Close();
    if (!Start()) {
        return eSR_Failed;
    }
    if (wait.isStopped && wait.isStopped()) {
        return eSR_Stopped; // before the name is looked up, which nothing stops
    }
    if (host.empty() || host.find('\0') != host.npos) {
        return eSR_UnknownHost; // the system would take another for it
    }
    const std::uint64_t deadline = GetDeadline(wait.milliseconds);
    std::vector<SAddress> addresses;
    ESocketResult result = toResult(FindAddresses(host, port, addresses));
    auto untried = static_cast<unsigned int>(addresses.size());
    for (const SAddress& address : addresses) {
        const unsigned int left = GetMillisecondsUntil(deadline);
        const std::uint64_t share = GetDeadline(left == kWaitForever ? left : left / untried--);
        Handle socket = kNoHandle;
        result = connectTo(socket, address, share, wait.isStopped);
        if (result == eSR_Done) {
            m_handle = socket;
        }
        if (result == eSR_Done || result == eSR_Stopped) {
            break;
        }
    }
    return result;
}

bool Socket::Listen(std::uint16_t port)
{
    Close();
    m_handle = Start() ? OpenListener(port) : kNoHandle;
    return IsOpen();
}

ESocketResult Socket::Accept(Socket& connection, const SSocketWait& wait)
{
    connection.Close();
    return awaitStep(m_handle, eR_Read, GetDeadline(wait.milliseconds), wait.isStopped,
        [&] { return socketsystem::Accept(m_handle, connection.m_handle); });
}

std::uint16_t Socket::GetPort() const { return IsOpen() ? socketsystem::GetPort(m_handle) : 0; }

ESocketResult Socket::Receive(
    void* data, std::size_t size, std::size_t& count, const SSocketWait& wait)
{
    count = 0;
    return awaitStep(m_handle, eR_Read, GetDeadline(wait.milliseconds), wait.isStopped,
        [&] { return socketsystem::Receive(m_handle, data, size, count); });
}

ESocketResult Socket::Send(const void* data, std::size_t size, const SSocketWait& wait)
{
    const char* next = static_cast<const char*>(data);
    while (size > 0) {
        std::size_t count = 0;
        const ESocketResult result = awaitStep(m_handle, eR_Write, GetDeadline(wait.milliseconds),
            wait.isStopped, [&] { return socketsystem::Send(m_handle, next, size, count); });
        if (result != eSR_Done) {
            return result;
        }
        next += count;
        size -= count;
    }
    return eSR_Done;
}

bool Socket::ShutDownSending() { return socketsystem::ShutDownSending(m_handle); }

void Socket::Close()
{
    if (IsOpen()) {
        socketsystem::Close(std::exchange(m_handle, kNoHandle));
    }
}

} // namespace platform
