#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

/// What sockets need of the system, each call one step that does not wait: platformsocket.cpp makes
/// of it operations that do.
namespace platform::socketsystem {

using Handle = std::intptr_t; // negative for none

enum EStep
{
    eS_Done,
    eS_Again, // not yet: the socket is to be awaited
    eS_Failed, // GetLastSystemError() has the reason
    eS_Ended, // the other side sends no more
    eS_Unknown, // no address goes by that name, or nobody can be asked
};

enum EReady
{
    eR_Read,
    eR_Write,
};

/// An address as the system has it.
struct SAddress
{
    int family = 0;
    int protocol = 0;
    std::size_t size = 0; // in bytes
    alignas(std::uint64_t) std::array<unsigned char, 128> bytes{};
};

/// To be called before all others.
bool Start();
/// May take long; `host` is no empty text and has no zero in it.
EStep FindAddresses(std::string_view host, std::uint16_t port, std::vector<SAddress>& addresses);

/// A socket that does not wait.
Handle Open(int family, int protocol);
/// Leaves the reason of a failure before as it is.
void Close(Handle socket);
/// Makes a socket of Open listen on 127.0.0.1.
Handle OpenListener(std::uint16_t port);
std::uint16_t GetPort(Handle socket);

/// Waits up to `milliseconds`, less than 2^30, until the socket can do it, or has failed, which
/// doing it will show.
EStep Await(Handle socket, EReady ready, unsigned int milliseconds);
EStep BeginConnect(Handle socket, const SAddress& address);
/// When the socket is ready to write.
EStep EndConnect(Handle socket);
EStep Accept(Handle listener, Handle& connection);
EStep Receive(Handle socket, void* data, std::size_t size, std::size_t& count);
EStep Send(Handle socket, const void* data, std::size_t size, std::size_t& count);
bool ShutDownSending(Handle socket);

} // namespace platform::socketsystem
