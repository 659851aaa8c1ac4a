#include "tabase/tahttpexchange.h"

#include "groundwork/tuexceptions.h"
#include "tabase/tasocket.h"

#include <memory>
#include <string>

namespace {

std::string makeHead(const TaNetworkAddress& address, const STaHTTPRequest& request)
{
    const auto text = [](const CStringA& part) { return std::string(part.GetView()); };
    std::string head = std::string(request.method) + " " + text(address.GetPath()) + " HTTP/1.1\r\n"
        + "Host: " + text(address.GetAuthority()) + "\r\n"
        + "User-Agent: TaBase\r\n"
          "Accept: */*\r\n"
          "Accept-Encoding: identity\r\n"
          "Connection: close\r\n";
    if (request.method != "GET") {
        head += "Content-Type: text/plain\r\nContent-Length: " + std::to_string(request.body.size())
            + "\r\n";
    }
    return head + "\r\n";
}

} // namespace

void TaExchangeHTTP(const TaNetworkAddress& address, const STaHTTPRequest& request,
    const SNetworkWait& wait, TaHTTPResponse& response)
{
    constexpr std::size_t kBufferSize = 65536;

    if (address.GetScheme() != TaNetworkAddress::eS_HTTP) {
        throw TuExceptionStream(TU_HERE, u"the address is none of HTTP");
    }
    TaSocket socket(address.GetHost(), address.GetPort(), wait);
    const std::string head = makeHead(address, request);
    const std::unique_ptr<char[]> buffer(new char[kBufferSize]);
    if (socket.Send(head.data(), head.size())
        && (request.method == "GET" || socket.Send(request.body.data(), request.body.size()))) {
        std::size_t count = 0;
        do {
            count = socket.Receive(buffer.get(), kBufferSize);
            if (!response.Take({ buffer.get(), count })) {
                break;
            }
            if (request.progress != nullptr) {
                request.progress->onProgress(response.GetFraction(), CString());
            }
        } while (count != 0);
    }
    response.End(socket.GetEnd());
}
