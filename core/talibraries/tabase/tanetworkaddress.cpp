#include "tabase/tanetworkaddress.h"

#include "groundwork/tuexceptions.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <system_error>

namespace {

constexpr std::string_view kHTTP = "http://";
constexpr std::string_view kHTTPS = "https://";
constexpr std::string_view kTCP = "tcp://";

bool beginsWith(std::string_view text, std::string_view scheme)
{
    return text.size() >= scheme.size()
        && std::equal(scheme.begin(), scheme.end(), text.begin(), [](char expected, char c) {
               return (c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) == expected;
           });
}

bool isVisible(char c) { return c > ' ' && c <= '~'; }

[[noreturn]] void fail(const char16_t* text) { throw TuExceptionStream(TU_HERE, CString(text)); }

} // namespace

TaNetworkAddress::TaNetworkAddress(const CString& text)
    : m_scheme(eS_HTTP)
{
    const std::string bytes = text.ToUtf8();
    std::string_view rest = bytes;
    if (beginsWith(rest, kHTTPS)) {
        fail(u"https is not read, for there is no encryption here; fetch it by other means");
    }
    if (beginsWith(rest, kTCP)) {
        m_scheme = eS_TCP;
        rest.remove_prefix(kTCP.size());
    } else if (beginsWith(rest, kHTTP)) {
        rest.remove_prefix(kHTTP.size());
    } else {
        fail(u"an address on the network begins with http:// or tcp://");
    }
    rest = rest.substr(0, rest.find('#')); // a place within the text is nothing to the server
    const std::size_t length = std::min(rest.find_first_of("/?"), rest.size());
    takeAuthority(rest.substr(0, length));
    takePath(rest.substr(length));
}

bool TaNetworkAddress::IsMeant(const CString& text)
{
    const std::string bytes = text.Left(kHTTPS.size()).ToUtf8();
    return beginsWith(bytes, kHTTP) || beginsWith(bytes, kHTTPS) || beginsWith(bytes, kTCP);
}

void TaNetworkAddress::takeAuthority(std::string_view text)
{
    constexpr std::uint16_t kUsualPort = 80;

    if (text.find('@') != text.npos) {
        fail(u"an address with a user or a password is not taken: they would travel in the open");
    }
    if (!std::all_of(text.begin(), text.end(), isVisible)) {
        fail(u"the name of the host is not plain ASCII");
    }
    m_authority = text;
    std::string_view port;
    if (text.starts_with('[')) {
        const std::size_t end = text.find(']');
        const std::string_view rest = end == text.npos ? "?" : text.substr(end + 1);
        if (!rest.empty() && rest.front() != ':') {
            fail(u"an IPv6 address stands in brackets, and a port behind a colon");
        }
        m_host = text.substr(1, end - 1);
        port = rest;
    } else {
        const std::size_t colon = std::min(text.find(':'), text.size());
        m_host = text.substr(0, colon);
        port = text.substr(colon);
    }
    if (m_host.IsEmpty()) {
        fail(u"the host is missing");
    }
    if (port.size() <= 1) {
        if (m_scheme == eS_TCP) {
            fail(u"the port is missing");
        }
        m_port = kUsualPort;
        return;
    }
    port.remove_prefix(1);
    const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), m_port);
    if (error != std::errc() || end != port.data() + port.size() || m_port == 0) {
        fail(u"the port is no number from 1 to 65535");
    }
}

void TaNetworkAddress::takePath(std::string_view text)
{
    constexpr std::string_view kDigits = "0123456789ABCDEF";

    if (!text.starts_with('/')) {
        m_path = "/";
    }
    for (const char c : text) {
        if (isVisible(c)) {
            m_path += c;
        } else {
            // Sent as it is, a line break would be the end of the request's line.
            const auto unit = static_cast<unsigned char>(c);
            m_path += '%';
            m_path += kDigits[unit / 16];
            m_path += kDigits[unit % 16];
        }
    }
}
