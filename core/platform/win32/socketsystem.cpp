#include "platform/socketsystem.h"

#include "platform/win32/platformwindows.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <cstring>
#include <string>

// Winsock's last error is the thread's last error, so GetLastSystemError() has it.

namespace platform::socketsystem {
namespace {

    SOCKET asSocket(Handle socket) { return static_cast<SOCKET>(socket); }
    Handle asHandle(SOCKET socket) { return static_cast<Handle>(socket); }

    bool makeNonBlocking(SOCKET socket)
    {
        u_long yes = 1;
        return ::ioctlsocket(socket, static_cast<long>(FIONBIO), &yes) == 0;
    }

    /// What a call that failed says: whether the system only asks to try again.
    EStep failure() { return ::WSAGetLastError() == WSAEWOULDBLOCK ? eS_Again : eS_Failed; }

    int chunk(std::size_t size)
    {
        constexpr std::size_t kMostBytes = 1 << 30; // a call counts in 32 bits
        return static_cast<int>(std::min(size, kMostBytes));
    }

    EStep count(int result, std::size_t& bytes)
    {
        if (result < 0) {
            return failure();
        }
        bytes = static_cast<std::size_t>(result);
        return eS_Done;
    }

} // namespace

/// Winsock is started with the first socket and ends with the process.
bool Start()
{
    static const int s_error = [] {
        WSADATA data;
        return ::WSAStartup(MAKEWORD(2, 2), &data);
    }();
    ::WSASetLastError(s_error);
    return s_error == 0;
}

EStep FindAddresses(std::string_view host, std::uint16_t port, std::vector<SAddress>& addresses)
{
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int error
        = ::getaddrinfo(std::string(host).c_str(), std::to_string(port).c_str(), &hints, &found);
    switch (error) {
    case 0:
        break;
    case WSAHOST_NOT_FOUND:
    case WSANO_DATA:
    case WSATRY_AGAIN:
    case WSANO_RECOVERY:
        return eS_Unknown;
    default:
        ::WSASetLastError(error);
        return eS_Failed;
    }
    for (const addrinfo* entry = found; entry != nullptr; entry = entry->ai_next) {
        SAddress address{ entry->ai_family, entry->ai_protocol, entry->ai_addrlen };
        std::memcpy(address.bytes.data(), entry->ai_addr, entry->ai_addrlen);
        addresses.push_back(address);
    }
    ::freeaddrinfo(found);
    return eS_Done;
}

Handle Open(int family, int protocol)
{
    const Handle socket = asHandle(::WSASocketW(family, SOCK_STREAM, protocol, nullptr, 0,
        WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT));
    if (socket >= 0 && !makeNonBlocking(asSocket(socket))) {
        Close(socket);
        return -1;
    }
    return socket;
}

void Close(Handle socket)
{
    const int reason = ::WSAGetLastError();
    ::closesocket(asSocket(socket));
    ::WSASetLastError(reason);
}

Handle OpenListener(std::uint16_t port)
{
    const Handle listener = Open(AF_INET, 0);
    // Elsewhere nobody else may take a port that is listened on; here that must be asked for.
    const BOOL yes = TRUE;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = ::htons(port);
    address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
    if (listener < 0
        || (::setsockopt(asSocket(listener), SOL_SOCKET, SO_EXCLUSIVEADDRUSE,
                reinterpret_cast<const char*>(&yes), sizeof(yes))
                == 0
            && ::bind(
                   asSocket(listener), reinterpret_cast<const sockaddr*>(&address), sizeof(address))
                == 0
            && ::listen(asSocket(listener), SOMAXCONN) == 0)) {
        return listener;
    }
    Close(listener);
    return -1;
}

std::uint16_t GetPort(Handle socket)
{
    sockaddr_storage address{};
    int size = sizeof(address);
    if (::getsockname(asSocket(socket), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        return 0;
    }
    return ::ntohs(address.ss_family == AF_INET6
            ? reinterpret_cast<const sockaddr_in6&>(address).sin6_port
            : reinterpret_cast<const sockaddr_in&>(address).sin_port);
}

/// By select, not by poll: that one does not tell of a connection that is refused.
EStep Await(Handle socket, EReady ready, unsigned int milliseconds)
{
    if (socket < 0) {
        ::WSASetLastError(WSAENOTSOCK);
        return eS_Failed;
    }
    const auto slice = static_cast<long>(milliseconds);
    timeval time{ slice / 1000, slice % 1000 * 1000 };
    fd_set sockets{ 1, { asSocket(socket) } };
    // Of a connection that is refused the third set tells. For one that receives, it would tell of
    // urgent data, which nobody takes: the wait would never end.
    fd_set failed = sockets;
    const int count = ready == eR_Read ? ::select(0, &sockets, nullptr, nullptr, &time)
                                       : ::select(0, nullptr, &sockets, &failed, &time);
    return count > 0 ? eS_Done : count == 0 ? eS_Again : eS_Failed;
}

EStep BeginConnect(Handle socket, const SAddress& address)
{
    return ::connect(asSocket(socket), reinterpret_cast<const sockaddr*>(address.bytes.data()),
               static_cast<int>(address.size))
            == 0
        ? eS_Done
        : failure();
}

EStep EndConnect(Handle socket)
{
    int reason = 0;
    int size = sizeof(reason);
    if (::getsockopt(
            asSocket(socket), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&reason), &size)
        != 0) {
        return eS_Failed;
    }
    ::WSASetLastError(reason);
    return reason == 0 ? eS_Done : eS_Failed;
}

EStep Accept(Handle listener, Handle& connection)
{
    const SOCKET accepted = ::accept(asSocket(listener), nullptr, nullptr);
    if (accepted == INVALID_SOCKET) {
        return ::WSAGetLastError() == WSAECONNRESET ? eS_Again : failure();
    }
    ::SetHandleInformation(reinterpret_cast<HANDLE>(accepted), HANDLE_FLAG_INHERIT, 0);
    if (!makeNonBlocking(accepted)) {
        Close(asHandle(accepted));
        return eS_Failed;
    }
    connection = asHandle(accepted);
    return eS_Done;
}

EStep Receive(Handle socket, void* data, std::size_t size, std::size_t& bytes)
{
    const EStep step
        = count(::recv(asSocket(socket), static_cast<char*>(data), chunk(size), 0), bytes);
    return step == eS_Done && bytes == 0 ? eS_Ended : step;
}

EStep Send(Handle socket, const void* data, std::size_t size, std::size_t& bytes)
{
    return count(::send(asSocket(socket), static_cast<const char*>(data), chunk(size), 0), bytes);
}

bool ShutDownSending(Handle socket) { return ::shutdown(asSocket(socket), SD_SEND) == 0; }

} // namespace platform::socketsystem
