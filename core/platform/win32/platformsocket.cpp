#include "platform/platformsocket.h"

#include "platform/win32/platformwindows.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <string>

// Winsock's last error is the thread's last error, so GetLastSystemError() has it.

namespace platform {
namespace {

    constexpr unsigned int kSlice = 50; // in milliseconds, between two looks at isStopped

    SOCKET asSocket(std::intptr_t handle) { return static_cast<SOCKET>(handle); }
    std::intptr_t asHandle(SOCKET socket) { return static_cast<std::intptr_t>(socket); }

    /// Winsock is started with the first socket and ends with the process.
    bool isStarted()
    {
        static const int s_error = [] {
            WSADATA data;
            return ::WSAStartup(MAKEWORD(2, 2), &data);
        }();
        ::WSASetLastError(s_error);
        return s_error == 0;
    }

    enum EReady
    {
        eR_Read,
        eR_Write,
    };

    /// Waits until the socket can do it, or has failed, which doing it will show. By select, not by
    /// poll: that one does not tell of a connection that is refused.
    ESocketResult await(std::intptr_t handle, EReady ready, std::uint64_t deadline,
        const std::function<bool()>& isStopped)
    {
        if (handle < 0) {
            ::WSASetLastError(WSAENOTSOCK);
            return eSR_Failed;
        }
        constexpr unsigned int kLongest = 1
            << 30; // whose microseconds and seconds are small enough
        for (;;) {
            if (isStopped && isStopped()) {
                return eSR_Stopped;
            }
            const unsigned int left = GetMillisecondsUntil(deadline);
            const auto slice = static_cast<long>(std::min(left, isStopped ? kSlice : kLongest));
            timeval time{ slice / 1000, slice % 1000 * 1000 };
            fd_set sockets{ 1, { asSocket(handle) } };
            fd_set failed = sockets;
            const int count = ::select(0, ready == eR_Read ? &sockets : nullptr,
                ready == eR_Write ? &sockets : nullptr, &failed, &time);
            if (count > 0) {
                return eSR_Done;
            }
            if (count < 0) {
                return eSR_Failed;
            }
            if (left == 0) {
                return eSR_TimedOut;
            }
        }
    }

    bool makeNonBlocking(SOCKET socket)
    {
        u_long yes = 1;
        return ::ioctlsocket(socket, static_cast<long>(FIONBIO), &yes) == 0;
    }

    bool isTransient() { return ::WSAGetLastError() == WSAEWOULDBLOCK; }

    /// Closes without losing the reason of a failure before.
    void closeSocket(std::intptr_t handle)
    {
        const int reason = ::WSAGetLastError();
        ::closesocket(asSocket(handle));
        ::WSASetLastError(reason);
    }

    std::intptr_t openSocket(int family, int protocol)
    {
        const std::intptr_t handle = asHandle(::WSASocketW(family, SOCK_STREAM, protocol, nullptr,
            0, WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT));
        if (handle >= 0 && !makeNonBlocking(asSocket(handle))) {
            closeSocket(handle);
            return -1;
        }
        return handle;
    }

    int chunk(std::size_t size)
    {
        constexpr std::size_t kMostBytes = 1 << 30; // a call counts in 32 bits
        return static_cast<int>(std::min(size, kMostBytes));
    }

    ESocketResult connectTo(std::intptr_t handle, const addrinfo& address, std::uint64_t deadline,
        const std::function<bool()>& isStopped)
    {
        if (::connect(asSocket(handle), address.ai_addr, static_cast<int>(address.ai_addrlen))
            == 0) {
            return eSR_Done;
        }
        if (!isTransient()) {
            return eSR_Failed;
        }
        const ESocketResult result = await(handle, eR_Write, deadline, isStopped);
        if (result != eSR_Done) {
            return result;
        }
        int reason = 0;
        int size = sizeof(reason);
        if (::getsockopt(
                asSocket(handle), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&reason), &size)
            != 0) {
            return eSR_Failed;
        }
        ::WSASetLastError(reason);
        return reason == 0 ? eSR_Done : eSR_Failed;
    }

    struct SFreeAddresses
    {
        void operator()(addrinfo* addresses) const { ::freeaddrinfo(addresses); }
    };
    using Addresses = std::unique_ptr<addrinfo, SFreeAddresses>;

    ESocketResult findAddresses(std::string_view host, std::uint16_t port, Addresses& addresses)
    {
        if (host.empty() || host.find('\0') != host.npos) {
            return eSR_UnknownHost; // no host would stand for this one
        }
        addrinfo hints{};
        hints.ai_family = AF_UNSPEC;
        hints.ai_socktype = SOCK_STREAM;
        addrinfo* found = nullptr;
        const int error = ::getaddrinfo(
            std::string(host).c_str(), std::to_string(port).c_str(), &hints, &found);
        addresses.reset(error == 0 ? found : nullptr);
        switch (error) {
        case 0:
            return eSR_Done;
        case WSAHOST_NOT_FOUND:
        case WSANO_DATA:
        case WSATRY_AGAIN:
        case WSANO_RECOVERY:
            return eSR_UnknownHost;
        default:
            ::WSASetLastError(error);
            return eSR_Failed;
        }
    }

} // namespace

ESocketResult Socket::Connect(std::string_view host, std::uint16_t port, const SSocketWait& wait)
{
    Close();
    if (!isStarted()) {
        return eSR_Failed;
    }
    if (wait.isStopped && wait.isStopped()) {
        return eSR_Stopped; // before the name is looked up, which nothing stops
    }
    const std::uint64_t deadline = GetDeadline(wait.milliseconds);
    Addresses addresses;
    ESocketResult result = findAddresses(host, port, addresses);
    unsigned int count = 0;
    for (const addrinfo* address = addresses.get(); address != nullptr;
         address = address->ai_next) {
        ++count;
    }
    for (const addrinfo* address = addresses.get(); address != nullptr;
         address = address->ai_next) {
        const std::intptr_t handle = openSocket(address->ai_family, address->ai_protocol);
        const unsigned int left = GetMillisecondsUntil(deadline);
        result = handle < 0
            ? eSR_Failed
            : connectTo(handle, *address, GetDeadline(left == kWaitForever ? left : left / count),
                wait.isStopped);
        --count;
        if (result == eSR_Done) {
            m_handle = handle;
            return result;
        }
        if (handle >= 0) {
            closeSocket(handle);
        }
        if (result == eSR_Stopped) {
            break;
        }
    }
    return result;
}

bool Socket::Listen(std::uint16_t port)
{
    Close();
    if (!isStarted()) {
        return false;
    }
    m_handle = openSocket(AF_INET, 0);
    // Elsewhere nobody else may take a port that is listened on; here that must be asked for.
    const BOOL yes = TRUE;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = ::htons(port);
    address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
    if (IsOpen()
        && (::setsockopt(asSocket(m_handle), SOL_SOCKET, SO_EXCLUSIVEADDRUSE,
                reinterpret_cast<const char*>(&yes), sizeof(yes))
                != 0
            || ::bind(
                   asSocket(m_handle), reinterpret_cast<const sockaddr*>(&address), sizeof(address))
                != 0
            || ::listen(asSocket(m_handle), SOMAXCONN) != 0)) {
        Close();
    }
    return IsOpen();
}

ESocketResult Socket::Accept(Socket& connection, const SSocketWait& wait)
{
    connection.Close();
    const std::uint64_t deadline = GetDeadline(wait.milliseconds);
    for (;;) {
        const ESocketResult result = await(m_handle, eR_Read, deadline, wait.isStopped);
        if (result != eSR_Done) {
            return result;
        }
        const SOCKET accepted = ::accept(asSocket(m_handle), nullptr, nullptr);
        if (accepted != INVALID_SOCKET) {
            connection.m_handle = asHandle(accepted);
            ::SetHandleInformation(reinterpret_cast<HANDLE>(accepted), HANDLE_FLAG_INHERIT, 0);
            if (!makeNonBlocking(accepted)) {
                connection.Close();
                return eSR_Failed;
            }
            return eSR_Done;
        }
        if (!isTransient() && ::WSAGetLastError() != WSAECONNRESET) {
            return eSR_Failed;
        }
    }
}

std::uint16_t Socket::GetPort() const
{
    sockaddr_storage address{};
    int size = sizeof(address);
    if (!IsOpen()
        || ::getsockname(asSocket(m_handle), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        return 0;
    }
    return ::ntohs(address.ss_family == AF_INET6
            ? reinterpret_cast<const sockaddr_in6&>(address).sin6_port
            : reinterpret_cast<const sockaddr_in&>(address).sin_port);
}

ESocketResult Socket::Receive(
    void* data, std::size_t size, std::size_t& count, const SSocketWait& wait)
{
    count = 0;
    const std::uint64_t deadline = GetDeadline(wait.milliseconds);
    for (;;) {
        const ESocketResult result = await(m_handle, eR_Read, deadline, wait.isStopped);
        if (result != eSR_Done) {
            return result;
        }
        const int got = ::recv(asSocket(m_handle), static_cast<char*>(data), chunk(size), 0);
        if (got >= 0) {
            count = static_cast<std::size_t>(got);
            return got == 0 ? eSR_Ended : eSR_Done;
        }
        if (!isTransient()) {
            return eSR_Failed;
        }
    }
}

ESocketResult Socket::Send(const void* data, std::size_t size, const SSocketWait& wait)
{
    const char* next = static_cast<const char*>(data);
    std::uint64_t deadline = GetDeadline(wait.milliseconds);
    while (size > 0) {
        const ESocketResult result = await(m_handle, eR_Write, deadline, wait.isStopped);
        if (result != eSR_Done) {
            return result;
        }
        const int put = ::send(asSocket(m_handle), next, chunk(size), 0);
        if (put >= 0) {
            next += put;
            size -= static_cast<std::size_t>(put);
            deadline = GetDeadline(wait.milliseconds);
        } else if (!isTransient()) {
            return eSR_Failed;
        }
    }
    return eSR_Done;
}

bool Socket::ShutDownSending() { return ::shutdown(asSocket(m_handle), SD_SEND) == 0; }

void Socket::Close()
{
    if (IsOpen()) {
        closeSocket(std::exchange(m_handle, kNoHandle));
    }
}

} // namespace platform
