#include "platform/socketsystem.h"

#include <errno.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <string>

namespace platform::socketsystem {
namespace {

    int descriptor(Handle socket) { return static_cast<int>(socket); }

    /// What a call that failed says: whether the system only asks to try again.
    EStep failure()
    {
        return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR ? eS_Again : eS_Failed;
    }

    EStep count(ssize_t result, std::size_t& bytes)
    {
        if (result < 0) {
            return failure();
        }
        bytes = static_cast<std::size_t>(result);
        return eS_Done;
    }

} // namespace

bool Start() { return true; }

EStep FindAddresses(std::string_view host, std::uint16_t port, std::vector<SAddress>& addresses)
{
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo* found = nullptr;
    const int error
        = getaddrinfo(std::string(host).c_str(), std::to_string(port).c_str(), &hints, &found);
    if (error != 0) {
        if (error == EAI_MEMORY) {
            errno = ENOMEM;
        }
        return error == EAI_SYSTEM || error == EAI_MEMORY ? eS_Failed : eS_Unknown;
    }
    for (const addrinfo* entry = found; entry != nullptr; entry = entry->ai_next) {
        SAddress address{ entry->ai_family, entry->ai_protocol, entry->ai_addrlen };
        std::memcpy(address.bytes.data(), entry->ai_addr, entry->ai_addrlen);
        addresses.push_back(address);
    }
    freeaddrinfo(found);
    return eS_Done;
}

Handle Open(int family, int protocol)
{
    return socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, protocol);
}

void Close(Handle socket)
{
    const int reason = errno;
    close(descriptor(socket));
    errno = reason;
}

Handle OpenListener(std::uint16_t port)
{
    const Handle listener = Open(AF_INET, 0);
    const int yes = 1; // a port whose connections have ended a moment ago is free
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (listener < 0
        || (setsockopt(descriptor(listener), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes)) == 0
            && bind(descriptor(listener), reinterpret_cast<const sockaddr*>(&address),
                   sizeof(address))
                == 0
            && listen(descriptor(listener), SOMAXCONN) == 0)) {
        return listener;
    }
    Close(listener);
    return -1;
}

std::uint16_t GetPort(Handle socket)
{
    sockaddr_storage address{};
    socklen_t size = sizeof(address);
    if (getsockname(descriptor(socket), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        return 0;
    }
    return ntohs(address.ss_family == AF_INET6
            ? reinterpret_cast<const sockaddr_in6&>(address).sin6_port
            : reinterpret_cast<const sockaddr_in&>(address).sin_port);
}

EStep Await(Handle socket, EReady ready, unsigned int milliseconds)
{
    if (socket < 0) {
        errno = EBADF; // the system would wait for nothing
        return eS_Failed;
    }
    const short events = ready == eR_Read ? POLLIN : POLLOUT;
    pollfd entry{ descriptor(socket), events, 0 };
    const int count = poll(&entry, 1, static_cast<int>(milliseconds));
    return count > 0 ? eS_Done : count == 0 ? eS_Again : failure();
}

EStep BeginConnect(Handle socket, const SAddress& address)
{
    if (connect(descriptor(socket), reinterpret_cast<const sockaddr*>(address.bytes.data()),
            static_cast<socklen_t>(address.size))
        == 0) {
        return eS_Done;
    }
    return errno == EINPROGRESS || errno == EINTR ? eS_Again : eS_Failed;
}

EStep EndConnect(Handle socket)
{
    int reason = 0;
    socklen_t size = sizeof(reason);
    if (getsockopt(descriptor(socket), SOL_SOCKET, SO_ERROR, &reason, &size) != 0) {
        return eS_Failed;
    }
    errno = reason;
    return reason == 0 ? eS_Done : eS_Failed;
}

EStep Accept(Handle listener, Handle& connection)
{
    connection = accept4(descriptor(listener), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    return connection >= 0 ? eS_Done : errno == ECONNABORTED ? eS_Again : failure();
}

EStep Receive(Handle socket, void* data, std::size_t size, std::size_t& bytes)
{
    const EStep step = count(recv(descriptor(socket), data, size, 0), bytes);
    return step == eS_Done && bytes == 0 ? eS_Ended : step;
}

EStep Send(Handle socket, const void* data, std::size_t size, std::size_t& bytes)
{
    return count(send(descriptor(socket), data, size, MSG_NOSIGNAL), bytes);
}

bool ShutDownSending(Handle socket) { return shutdown(descriptor(socket), SHUT_WR) == 0; }

} // namespace platform::socketsystem
