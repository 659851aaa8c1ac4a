#pragma once

#include "tabase/tabaseapi.h"
#include "tabase/tanetwork.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

/// The answer of an HTTP server (version 1.0 or 1.1) to one request, taken apart as its bytes
/// arrive; it knows nothing of connections.
///
///     while (response.Take(nextBytes()))
///         ;                            // or, where the connection ends:
///     response.End(socket.GetEnd());
///
/// Taken are bodies with Content-Length, in chunks, and up to the end of the connection. An answer
/// of any other status than is wanted is an end, and so is a coding of the body; redirects are not
/// followed. Answers on the way (100 to 199, but for 101) are passed over.
///
/// Threads: one thread at a time.
/// Failure: none but of memory; GetEnd() tells. Memory grows as bytes arrive, whatever is
/// announced.
class TABASE_API TaHTTPResponse
{
public:
    enum EWanted
    {
        eW_Body, // with status 200
        eW_Status, // any of 200 to 299; its body is not looked at
    };

    struct SLimits
    {
        std::size_t headSize = 65536; // in bytes, trailers and heads on the way included
        std::size_t fieldCount = 100; // of these
        std::uint32_t bodySize = 1u << 30; // in bytes
    };

    explicit TaHTTPResponse(EWanted wanted = eW_Body);
    TaHTTPResponse(EWanted wanted, const SLimits& limits);

    /// Takes the next bytes, in pieces of any size; false once no more are wanted. What comes
    /// behind the end is ignored.
    [[nodiscard]] bool Take(std::string_view bytes);
    /// The connection has ended like this. No effect on an answer that has ended before.
    void End(const SNetworkEnd& connectionEnd);

    const SNetworkEnd& GetEnd() const { return m_end; }
    /// 0 as long as it is not known.
    unsigned int GetStatus() const { return m_status; }
    /// What has come of the body; each unit holds one byte, 0 to 255.
    const CString& GetBody() const { return m_body; }
    CString TakeBody() { return std::move(m_body); }
    /// From 0 to 1 where the length of the body is known, else 0.
    double GetFraction() const;

private:
    enum EState
    {
        eS_StatusLine,
        eS_Fields,
        eS_Length, // m_left bytes of the body are missing
        eS_UntilClose,
        eS_ChunkHead,
        eS_Chunk, // m_left bytes of the chunk are missing
        eS_ChunkEnd, // the line end behind a chunk
        eS_Trailers,
    };

    bool takeLine(std::string_view& bytes);
    void takeBody(std::string_view& bytes);
    void parseLine(std::string_view line);
    void parseStatusLine(std::string_view line);
    void parseFieldLine(std::string_view line);
    void parseField(std::string_view field);
    void parseLength(std::string_view value);
    void parseChunkHead(std::string_view line);
    void countField();
    void endFields();
    void beginBody();
    void refuse();
    void end(ENetworkEnd kind, std::string_view text);

    const EWanted m_wanted;
    const SLimits m_limits;
    EState m_state = eS_StatusLine;
    SNetworkEnd m_end;
    std::string m_line; // as far as it has come
    std::size_t m_headSize = 0; // bytes of lines so far, but for heads of chunks
    std::size_t m_fieldCount = 0;

    unsigned int m_status = 0;
    std::string m_reason;
    std::string m_field; // the latest, which the next line may continue
    std::string m_location;
    std::string m_codings; // of the transfer
    bool m_hasLength = false;
    bool m_isEncoded = false;

    std::uint64_t m_length = 0; // of the body, where it is stated
    std::uint64_t m_left = 0;
    CString m_body;
};
