#include "platform/platformsocket.h"

#include <errno.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <string>

namespace platform {
namespace {

    constexpr unsigned int kSlice = 50; // in milliseconds, between two looks at isStopped

    int descriptor(std::intptr_t handle) { return static_cast<int>(handle); }

    /// Waits until the socket can do what `events` names, or has failed, which doing it will show.
    ESocketResult await(std::intptr_t handle, short events, std::uint64_t deadline,
        const std::function<bool()>& isStopped)
    {
        if (handle < 0) {
            errno = EBADF; // the system would wait for nothing
            return eSR_Failed;
        }
        const unsigned int slice
            = isStopped ? kSlice : static_cast<unsigned int>(std::numeric_limits<int>::max());
        for (;;) {
            if (isStopped && isStopped()) {
                return eSR_Stopped;
            }
            const unsigned int left = GetMillisecondsUntil(deadline);
            pollfd entry{ descriptor(handle), events, 0 };
            const int count = poll(&entry, 1, static_cast<int>(std::min(left, slice)));
            if (count > 0) {
                return eSR_Done;
            }
            if (count < 0 && errno != EINTR) {
                return eSR_Failed;
            }
            if (left == 0) {
                return eSR_TimedOut;
            }
        }
    }

    /// Whether the system only asks to try again.
    bool isTransient() { return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR; }

    std::intptr_t openSocket(int family, int protocol)
    {
        return socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, protocol);
    }

    /// Closes without losing the reason of a failure before.
    void closeSocket(std::intptr_t handle)
    {
        const int reason = errno;
        close(descriptor(handle));
        errno = reason;
    }

    ESocketResult connectTo(std::intptr_t handle, const addrinfo& address, std::uint64_t deadline,
        const std::function<bool()>& isStopped)
    {
        if (connect(descriptor(handle), address.ai_addr, address.ai_addrlen) == 0) {
            return eSR_Done;
        }
        if (errno != EINPROGRESS && errno != EINTR) {
            return eSR_Failed;
        }
        const ESocketResult result = await(handle, POLLOUT, deadline, isStopped);
        if (result != eSR_Done) {
            return result;
        }
        int reason = 0;
        socklen_t size = sizeof(reason);
        if (getsockopt(descriptor(handle), SOL_SOCKET, SO_ERROR, &reason, &size) != 0) {
            return eSR_Failed;
        }
        errno = reason;
        return reason == 0 ? eSR_Done : eSR_Failed;
    }

    struct SFreeAddresses
    {
        void operator()(addrinfo* addresses) const { freeaddrinfo(addresses); }
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
        hints.ai_flags = AI_NUMERICSERV;
        addrinfo* found = nullptr;
        const int error
            = getaddrinfo(std::string(host).c_str(), std::to_string(port).c_str(), &hints, &found);
        addresses.reset(error == 0 ? found : nullptr);
        if (error == EAI_MEMORY) {
            errno = ENOMEM;
        }
        return error == 0                                ? eSR_Done
            : error == EAI_SYSTEM || error == EAI_MEMORY ? eSR_Failed
                                                         : eSR_UnknownHost;
    }

} // namespace

ESocketResult Socket::Connect(std::string_view host, std::uint16_t port, const SSocketWait& wait)
{
    Close();
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
    m_handle = openSocket(AF_INET, 0);
    // A port whose connections have ended a moment ago is free.
    const int yes = 1;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (IsOpen()
        && (setsockopt(descriptor(m_handle), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes)) != 0
            || bind(descriptor(m_handle), reinterpret_cast<const sockaddr*>(&address),
                   sizeof(address))
                != 0
            || listen(descriptor(m_handle), SOMAXCONN) != 0)) {
        Close();
    }
    return IsOpen();
}

ESocketResult Socket::Accept(Socket& connection, const SSocketWait& wait)
{
    connection.Close();
    const std::uint64_t deadline = GetDeadline(wait.milliseconds);
    for (;;) {
        const ESocketResult result = await(m_handle, POLLIN, deadline, wait.isStopped);
        if (result != eSR_Done) {
            return result;
        }
        connection.m_handle
            = accept4(descriptor(m_handle), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (connection.IsOpen()) {
            return eSR_Done;
        }
        if (!isTransient() && errno != ECONNABORTED) {
            return eSR_Failed;
        }
    }
}

std::uint16_t Socket::GetPort() const
{
    sockaddr_storage address{};
    socklen_t size = sizeof(address);
    if (!IsOpen()
        || getsockname(descriptor(m_handle), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        return 0;
    }
    return ntohs(address.ss_family == AF_INET6
            ? reinterpret_cast<const sockaddr_in6&>(address).sin6_port
            : reinterpret_cast<const sockaddr_in&>(address).sin_port);
}

ESocketResult Socket::Receive(
    void* data, std::size_t size, std::size_t& count, const SSocketWait& wait)
{
    count = 0;
    const std::uint64_t deadline = GetDeadline(wait.milliseconds);
    for (;;) {
        const ESocketResult result = await(m_handle, POLLIN, deadline, wait.isStopped);
        if (result != eSR_Done) {
            return result;
        }
        const ssize_t got = recv(descriptor(m_handle), data, size, 0);
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
        const ESocketResult result = await(m_handle, POLLOUT, deadline, wait.isStopped);
        if (result != eSR_Done) {
            return result;
        }
        const ssize_t put = send(descriptor(m_handle), next, size, MSG_NOSIGNAL);
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

bool Socket::ShutDownSending() { return shutdown(descriptor(m_handle), SHUT_WR) == 0; }

void Socket::Close()
{
    if (IsOpen()) {
        closeSocket(std::exchange(m_handle, kNoHandle));
    }
}

} // namespace platform
