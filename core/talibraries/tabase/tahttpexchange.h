#pragma once

#include "tabase/tahttpresponse.h"
#include "tabase/tanetworkaddress.h"
#include "tabase/taprogresssink.h"

#include <string_view>

/// One request of an HTTP client, over a connection of its own that is closed afterwards.
struct STaHTTPRequest
{
    std::string_view method = "GET";
    std::string_view body = {}; // sent with its length, unless the method is GET
    TaProgressSink* progress = nullptr; // told how much of the answer has come, where it is known
};

/// Sends the request to the address, and gives `response` what comes back, up to its end.
///
/// Failure: TuExceptionStream where the address is not one of HTTP, or there comes no connection.
///          What goes wrong later is an end, which the response keeps.
TABASE_API void TaExchangeHTTP(const TaNetworkAddress& address, const STaHTTPRequest& request,
    const SNetworkWait& wait, TaHTTPResponse& response);
