#include "tabase/tahttpresponse.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace {

constexpr unsigned int kOK = 200;

// The head of a chunk is a number; what may stand behind it, nobody uses.
constexpr std::size_t kLongestChunkHead = 4096;

bool isBlank(char c) { return c == ' ' || c == '\t'; }

std::string_view trim(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t";
    const std::size_t begin = text.find_first_not_of(kBlanks);
    return begin == text.npos ? std::string_view()
                              : text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

bool equalsWithoutCase(std::string_view text, std::string_view lowerCase)
{
    return std::ranges::equal(text, lowerCase, [](char c, char expected) {
        return (c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) == expected;
    });
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Of the name of a field.
bool isTokenCharacter(char c)
{
    return isDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')
        || std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos;
}

/// All of the text as a number; one that is too large is the largest.
bool parseNumber(std::string_view text, int base, std::uint64_t& number)
{
    const char* end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, number, base);
    if (error == std::errc::result_out_of_range) {
        number = ~std::uint64_t{ 0 };
    }
    return error != std::errc::invalid_argument && parsed == end;
}

/// A piece of what a server says, fit to be shown.
std::string show(std::string_view text)
{
    constexpr std::size_t kLongest = 100;
    std::string shown(text.substr(0, kLongest));
    std::ranges::replace_if(
        shown, [](char c) { return c < ' ' || c > '~'; }, '?');
    return shown;
}

/// Hands the elements of a list, separated by commas, to `use`; empty ones are left out.
template <class Use> void forEachElement(std::string_view list, Use&& use)
{
    while (!list.empty()) {
        const std::size_t length = std::min(list.find(','), list.size());
        if (const std::string_view element = trim(list.substr(0, length)); !element.empty()) {
            use(element);
        }
        list.remove_prefix(std::min(length + 1, list.size()));
    }
}

} // namespace

TaHTTPResponse::TaHTTPResponse(EWanted wanted)
    : TaHTTPResponse(wanted, SLimits())
{
}

TaHTTPResponse::TaHTTPResponse(EWanted wanted, const SLimits& limits)
    : m_wanted(wanted)
    , m_limits(limits)
{
}

bool TaHTTPResponse::Take(std::string_view bytes)
{
    while (m_end.kind == eNE_None && !bytes.empty()) {
        if (m_state == eS_Length || m_state == eS_Chunk || m_state == eS_UntilClose) {
            takeBody(bytes);
        } else if (takeLine(bytes)) {
            const std::string line = std::exchange(m_line, {});
            parseLine(line);
        }
    }
    return m_end.kind == eNE_None;
}

void TaHTTPResponse::End(const SNetworkEnd& connectionEnd)
{
    if (m_end.kind != eNE_None) {
        return;
    }
    if (connectionEnd.kind != eNE_Closed || m_state == eS_UntilClose) {
        m_end = connectionEnd;
    } else if (m_state == eS_Length) {
        end(eNE_EarlyClose,
            "the server closed the connection after " + std::to_string(m_body.GetLength()) + " of "
                + std::to_string(m_length) + " bytes");
    } else {
        end(eNE_EarlyClose,
            m_state == eS_StatusLine && m_line.empty()
                ? "the server closed the connection without an answer"
                : "the server closed the connection before its answer was complete");
    }
}

double TaHTTPResponse::GetFraction() const
{
    return m_length == 0 ? 0.0
                         : static_cast<double>(m_body.GetLength()) / static_cast<double>(m_length);
}

/// Adds to the line that is gathered; true when it is complete, without its line end.
bool TaHTTPResponse::takeLine(std::string_view& bytes)
{
    const std::size_t feed = bytes.find('\n');
    const std::string_view piece = bytes.substr(0, feed == bytes.npos ? feed : feed + 1);
    bytes.remove_prefix(piece.size());
    m_line += piece;
    if (m_state == eS_ChunkHead || m_state == eS_ChunkEnd) {
        if (m_line.size() > kLongestChunkHead) {
            end(eNE_Malformed, "the head of a chunk is too long");
            return false;
        }
    } else {
        m_headSize += piece.size();
        if (m_headSize > m_limits.headSize) {
            end(eNE_HeadTooLarge,
                "the header of the answer is larger than " + std::to_string(m_limits.headSize)
                    + " bytes");
            return false;
        }
    }
    if (!m_line.ends_with('\n')) {
        return false;
    }
    m_line.pop_back();
    if (m_line.ends_with('\r')) {
        m_line.pop_back();
    }
    return true;
}

void TaHTTPResponse::takeBody(std::string_view& bytes)
{
    std::string_view piece = bytes;
    if (m_state != eS_UntilClose) {
        piece
            = bytes.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(m_left, SIZE_MAX)));
        m_left -= piece.size();
    }
    bytes.remove_prefix(piece.size());
    if (piece.size() > m_limits.bodySize - m_body.GetLength()) {
        end(eNE_BodyTooLarge,
            "the answer is larger than " + std::to_string(m_limits.bodySize) + " bytes");
        return;
    }
    const std::size_t length = m_body.GetLength();
    m_body.SetLength(length + piece.size());
    std::ranges::transform(piece, m_body.GetBuffer() + length,
        [](char c) { return static_cast<char16_t>(static_cast<unsigned char>(c)); });
    if (m_state == eS_Length && m_left == 0) {
        end(eNE_Complete, {});
    } else if (m_state == eS_Chunk && m_left == 0) {
        m_state = eS_ChunkEnd;
    }
}

void TaHTTPResponse::parseLine(std::string_view line)
{
    switch (m_state) {
    case eS_StatusLine:
        parseStatusLine(line);
        break;
    case eS_Fields:
        if (line.empty()) {
            endFields();
        } else {
            parseFieldLine(line);
        }
        break;
    case eS_ChunkHead:
        parseChunkHead(line);
        break;
    case eS_ChunkEnd:
        m_state = eS_ChunkHead;
        if (!line.empty()) {
            end(eNE_Malformed, "a chunk of the answer is longer than it says");
        }
        break;
    case eS_Trailers:
        if (line.empty()) {
            end(eNE_Complete, {});
        } else {
            countField();
        }
        break;
    default:
        break;
    }
}

void TaHTTPResponse::parseStatusLine(std::string_view line)
{
    constexpr std::string_view kVersion = "HTTP/1."; // and a digit
    constexpr std::size_t kStatus = kVersion.size() + 2;
    constexpr std::size_t kEnd = kStatus + 3;

    if (line.size() < kEnd || !line.starts_with(kVersion) || !isDigit(line[kVersion.size()])
        || line[kStatus - 1] != ' ' || line[kStatus] == '0'
        || !std::ranges::all_of(line.substr(kStatus, 3), isDigit)
        || (line.size() > kEnd && line[kEnd] != ' ')) {
        end(eNE_Malformed, "the answer is none of HTTP/1.1; it begins with \"" + show(line) + "\"");
        return;
    }
    std::from_chars(line.data() + kStatus, line.data() + kEnd, m_status);
    m_reason = trim(line.substr(kEnd));
    m_state = eS_Fields;
}

/// A line that begins with a blank continues the field before.
void TaHTTPResponse::parseFieldLine(std::string_view line)
{
    if (!isBlank(line.front())) {
        countField();
        parseField(std::exchange(m_field, std::string(line)));
    } else if (m_field.empty()) {
        end(eNE_Malformed, "the header of the answer is malformed");
    } else {
        m_field.append(" ").append(trim(line));
    }
}

void TaHTTPResponse::countField()
{
    if (++m_fieldCount > m_limits.fieldCount) {
        end(eNE_HeadTooLarge,
            "the header of the answer has more than " + std::to_string(m_limits.fieldCount)
                + " fields");
    }
}

void TaHTTPResponse::parseField(std::string_view field)
{
    if (field.empty() || m_end.kind != eNE_None) {
        return;
    }
    const std::size_t colon = field.find(':');
    const std::string_view name = field.substr(0, colon);
    if (colon == field.npos || name.empty() || !std::ranges::all_of(name, isTokenCharacter)) {
        end(eNE_Malformed, "the header of the answer is malformed");
        return;
    }
    const std::string_view value = trim(field.substr(colon + 1));
    if (equalsWithoutCase(name, "content-length")) {
        parseLength(value);
    } else if (equalsWithoutCase(name, "transfer-encoding")) {
        m_codings.append(m_codings.empty() ? "" : ",").append(value);
    } else if (equalsWithoutCase(name, "content-encoding")) {
        m_isEncoded = m_isEncoded || (!value.empty() && !equalsWithoutCase(value, "identity"));
    } else if (equalsWithoutCase(name, "location")) {
        m_location = value;
    }
}

/// The length may be stated several times, also in one field, if it is the same.
void TaHTTPResponse::parseLength(std::string_view value)
{
    const bool isFirst = !m_hasLength;
    forEachElement(value, [&](std::string_view element) {
        std::uint64_t length = 0;
        if (!parseNumber(element, 10, length) || (m_hasLength && length != m_length)) {
            end(eNE_Malformed, "the length of the answer is malformed");
            return;
        }
        m_hasLength = true;
        m_length = length;
    });
    if (isFirst && !m_hasLength) {
        end(eNE_Malformed, "the length of the answer is malformed");
    }
}

void TaHTTPResponse::endFields()
{
    constexpr unsigned int kSwitchingProtocols = 101;

    parseField(std::exchange(m_field, {}));
    if (m_end.kind != eNE_None) {
        return;
    }
    if (m_status < kOK && m_status != kSwitchingProtocols) {
        m_state = eS_StatusLine; // the answer proper follows
        m_codings.clear();
        m_location.clear();
        m_hasLength = m_isEncoded = false;
        m_length = 0;
    } else if (m_wanted == eW_Status && m_status / 100 == kOK / 100) {
        end(eNE_Complete, {});
    } else if (m_wanted == eW_Status || m_status != kOK) {
        refuse();
    } else {
        beginBody();
    }
}

void TaHTTPResponse::refuse()
{
    std::string text = "the server answers " + std::to_string(m_status);
    if (!m_reason.empty()) {
        text += " " + show(m_reason);
    }
    if (!m_location.empty()) {
        text += ", see " + show(m_location) + " (redirects are not followed)";
    }
    end(eNE_Refused, text);
}

void TaHTTPResponse::beginBody()
{
    bool isChunked = false;
    bool isUnknown = m_isEncoded;
    forEachElement(m_codings, [&](std::string_view coding) {
        isUnknown = isUnknown || isChunked || !equalsWithoutCase(coding, "chunked");
        isChunked = true;
    });
    if (isUnknown) {
        end(eNE_Unsupported, "the answer is compressed, or coded in another way that is not read");
    } else if (isChunked) { // then a length does not count
        m_length = 0;
        m_state = eS_ChunkHead;
    } else if (!m_hasLength) {
        m_state = eS_UntilClose;
    } else if (m_length > m_limits.bodySize) {
        end(eNE_BodyTooLarge,
            "the answer is larger than " + std::to_string(m_limits.bodySize) + " bytes");
    } else if (m_length == 0) {
        end(eNE_Complete, {});
    } else {
        m_left = m_length;
        m_state = eS_Length;
    }
}

void TaHTTPResponse::parseChunkHead(std::string_view line)
{
    const std::string_view size = trim(line.substr(0, line.find(';')));
    if (!parseNumber(size, 16, m_left)) {
        end(eNE_Malformed, "the length of a chunk is malformed");
    } else if (m_left > m_limits.bodySize - m_body.GetLength()) {
        end(eNE_BodyTooLarge,
            "the answer is larger than " + std::to_string(m_limits.bodySize) + " bytes");
    } else {
        m_state = m_left == 0 ? eS_Trailers : eS_Chunk;
    }
}

/// The first end counts.
void TaHTTPResponse::end(ENetworkEnd kind, std::string_view text)
{
    if (m_end.kind == eNE_None) {
        m_end = { kind, CString::FromUtf8(text) };
    }
}
