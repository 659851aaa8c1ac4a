#pragma once

#if defined(TA_PEER_LZMA)
#include <lzma.h>
#endif
#if defined(TA_PEER_ZLIB)
#include <zlib.h>
#endif
#if defined(TA_PEER_ZSTD)
#include <zstd.h>
#endif

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <vector>

/// General codecs of memory blocks, to measure special ones against. What they decode has a known
/// size.

using ConstByteSpan = std::span<const unsigned char>;
using ByteSpan = std::span<unsigned char>;

/// What a codec made, in memory that stays from one time to the next.
class EncodedBytes
{
public:
    /// Room for so many bytes; what was encoded before is gone.
    ByteSpan Provide(std::size_t most)
    {
        if (m_buffer.size() < most) {
            m_buffer.resize(most);
        }
        return m_buffer;
    }
    void SetSize(std::size_t size) { m_size = size; }
    std::size_t GetSize() const { return m_size; }
    ConstByteSpan Get() const { return ConstByteSpan(m_buffer).first(m_size); }

private:
    std::vector<unsigned char> m_buffer;
    std::size_t m_size = 0;
};

/// Makes a benchmark end with a word about the peer, where it would go on with wrong results.
inline void requirePeer(bool isRight, const char* what)
{
    if (!isRight) {
        throw std::runtime_error(what);
    }
}

#if defined(TA_PEER_LZMA)
/// In its container, without a checksum.
struct Lzma0
{
    static void Encode(ConstByteSpan bytes, EncodedBytes& encoded)
    {
        const ByteSpan room = encoded.Provide(lzma_stream_buffer_bound(bytes.size()));
        std::size_t size = 0;
        requirePeer(lzma_easy_buffer_encode(0, LZMA_CHECK_NONE, nullptr, bytes.data(), bytes.size(),
                        room.data(), &size, room.size())
                == LZMA_OK,
            "liblzma does not encode");
        encoded.SetSize(size);
    }
    static void Decode(ConstByteSpan encoded, ByteSpan bytes)
    {
        std::uint64_t memoryLimit = UINT64_MAX;
        std::size_t taken = 0;
        std::size_t size = 0;
        requirePeer(lzma_stream_buffer_decode(&memoryLimit, 0, nullptr, encoded.data(), &taken,
                        encoded.size(), bytes.data(), &size, bytes.size())
                == LZMA_OK,
            "liblzma does not decode");
    }
};
#endif

#if defined(TA_PEER_ZLIB)
struct Zlib6
{
    static void Encode(ConstByteSpan bytes, EncodedBytes& encoded)
    {
        constexpr int kLevel = 6;
        const ByteSpan room = encoded.Provide(compressBound(bytes.size()));
        uLongf size = room.size();
        requirePeer(compress2(room.data(), &size, bytes.data(), bytes.size(), kLevel) == Z_OK,
            "zlib does not encode");
        encoded.SetSize(size);
    }
    static void Decode(ConstByteSpan encoded, ByteSpan bytes)
    {
        uLongf size = bytes.size();
        requirePeer(uncompress(bytes.data(), &size, encoded.data(), encoded.size()) == Z_OK,
            "zlib does not decode");
    }
};
#endif

#if defined(TA_PEER_ZSTD)
struct Zstd3
{
    static void Encode(ConstByteSpan bytes, EncodedBytes& encoded)
    {
        constexpr int kLevel = 3;
        const ByteSpan room = encoded.Provide(ZSTD_compressBound(bytes.size()));
        const std::size_t size
            = ZSTD_compress(room.data(), room.size(), bytes.data(), bytes.size(), kLevel);
        requirePeer(ZSTD_isError(size) == 0, "zstd does not encode");
        encoded.SetSize(size);
    }
    static void Decode(ConstByteSpan encoded, ByteSpan bytes)
    {
        requirePeer(ZSTD_decompress(bytes.data(), bytes.size(), encoded.data(), encoded.size())
                == bytes.size(),
            "zstd does not decode");
    }
};
#endif
