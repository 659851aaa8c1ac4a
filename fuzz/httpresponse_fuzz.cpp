#include "groundwork/tuexceptions.h"
#include "tabase/tastreamreadasciihttp.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace {

constexpr TaHTTPResponse::SLimits kLimits{ .headSize = 512, .fieldCount = 8, .bodySize = 2048 };

/// The answer, from pieces of the sizes that `pieces` says, in turn.
TaHTTPResponse parse(TaHTTPResponse::EWanted wanted, std::string_view text, std::string_view pieces)
{
    TaHTTPResponse response(wanted, kLimits);
    for (std::size_t i = 0; !text.empty(); ++i) {
        const std::size_t size = pieces.empty()
            ? text.size()
            : 1 + static_cast<unsigned char>(pieces[i % pieces.size()]) % 16;
        const std::string_view piece = text.substr(0, size);
        text.remove_prefix(piece.size());
        if (response.Take(piece) != (response.GetEnd().kind == eNE_None)) {
            std::abort();
        }
    }
    response.End({ eNE_Closed, {} });
    return response;
}

void check(const TaHTTPResponse& response)
{
    if (response.GetEnd().kind == eNE_None || response.GetBody().GetLength() > kLimits.bodySize
        || std::ranges::any_of(response.GetBody(), [](char16_t unit) { return unit > 255; })
        || std::ranges::any_of(
            response.GetEnd().text, [](char16_t unit) { return unit < u' ' || unit > u'~'; })) {
        std::abort();
    }
}

} // namespace

/// The first byte says how many of the next ones cut the rest into pieces, and what is wanted. How
/// it is cut makes no difference.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t kLargest = 4096; // above all limits
    if (size == 0 || size > kLargest) {
        return 0;
    }
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::string_view pieces = bytes.substr(0, data[0] % 8);
    const std::string_view text = bytes.substr(pieces.size());
    const auto wanted = data[0] < 128 ? TaHTTPResponse::eW_Body : TaHTTPResponse::eW_Status;

    TaHTTPResponse whole = parse(wanted, text, {});
    const TaHTTPResponse cut = parse(wanted, text, pieces);
    check(whole);
    if (whole.GetEnd().kind != cut.GetEnd().kind || whole.GetEnd().text != cut.GetEnd().text
        || whole.GetStatus() != cut.GetStatus()
        || (whole.GetEnd().kind != eNE_BodyTooLarge && whole.GetBody() != cut.GetBody())) {
        std::abort();
    }

    TaStreamReadASCIIHTTP stream(std::move(whole));
    for (std::size_t lines = 0; !stream.IsEndOfStream(); ++lines) {
        CStringA line;
        stream >> line;
        if (lines > size) {
            std::abort(); // it stands still
        }
    }
    return 0;
}
