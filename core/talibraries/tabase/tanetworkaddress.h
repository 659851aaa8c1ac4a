#pragma once

#include "groundwork/cstring.h"
#include "tabase/tabaseapi.h"

#include <cstdint>

/// Where something lies on the network: `http://HOST[:PORT][/PATH][?QUERY]`, or `tcp://HOST:PORT`
/// with whatever follows. A host is a name, an IPv4 address, or an IPv6 address in brackets.
///
/// There is no encryption here, so `https` is refused, and so are a user and a password.
///
/// Threads: as a value.
class TABASE_API TaNetworkAddress
{
public:
    enum EScheme
    {
        eS_HTTP,
        eS_TCP,
    };

    /// Throws TuExceptionStream, with what is wrong, for a text that is no such address.
    explicit TaNetworkAddress(const CString& text);

    /// Whether the text is meant as one: it begins with `http://`, `https://` or `tcp://`, in
    /// capitals or not.
    static bool IsMeant(const CString& text);

    EScheme GetScheme() const { return m_scheme; }
    /// Without brackets.
    const CStringA& GetHost() const { return m_host; }
    std::uint16_t GetPort() const { return m_port; }
    /// Path and query as they are sent, with all else than visible ASCII as `%` and two digits; at
    /// least `/`.
    const CStringA& GetPath() const { return m_path; }
    /// Host and port as the address has them.
    const CStringA& GetAuthority() const { return m_authority; }

private:
    void takeAuthority(std::string_view text);
    void takePath(std::string_view text);

    EScheme m_scheme;
    CStringA m_host;
    std::uint16_t m_port = 0;
    CStringA m_path;
    CStringA m_authority;
};
