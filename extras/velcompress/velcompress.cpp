// Two functions for the dictionary coder, which finds them by their numbers. A block is an .xz
// stream with a CRC32 check, which says at its end how long the data are.

#include <lzma.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#define VELCOMPRESS_API __attribute__((visibility("default")))

extern "C" {
VELCOMPRESS_API int ordinal_1(const unsigned char** source, unsigned char** buffer,
    std::uint32_t sourceLength, std::uint32_t* size, int reserved);
VELCOMPRESS_API int ordinal_2(const unsigned char** source, unsigned char** buffer,
    std::uint32_t sourceLength, std::uint32_t* size, int reserved);
}

namespace {

/// What callers make of it: anything but the first two is a failure.
enum EStatus
{
    eS_Done = 0,
    eS_SizeReported = -1,
    eS_Failed = 1
};

/// A decoder takes the memory that a block asks for, up to this: enough for any block of the usual
/// presets of .xz, the largest included.
constexpr std::uint64_t kMemoryLimit = std::uint64_t{ 128 } << 20;

/// No byte of LZMA stands for more: a match has at most 273 bytes, and its 14 binary decisions take
/// at least 0.022 bits each, which makes 7,090. A damaged block claims no more memory than that.
constexpr std::uint64_t kMostBytesPerByte = 8192;

/// Reads the index at the end of the block. False where the block is no single .xz stream, or does
/// not fit the lengths that its index lists.
bool readIndex(
    const unsigned char* source, std::uint32_t sourceLength, std::uint64_t& uncompressedSize)
{
    if (sourceLength < 2 * LZMA_STREAM_HEADER_SIZE) {
        return false;
    }
    const std::uint32_t footer = sourceLength - LZMA_STREAM_HEADER_SIZE;
    lzma_stream_flags header{};
    lzma_stream_flags flags{};
    if (lzma_stream_header_decode(&header, source) != LZMA_OK
        || lzma_stream_footer_decode(&flags, source + footer) != LZMA_OK
        || lzma_stream_flags_compare(&header, &flags) != LZMA_OK
        || flags.backward_size > footer - LZMA_STREAM_HEADER_SIZE) {
        return false;
    }
    std::size_t position = footer - static_cast<std::size_t>(flags.backward_size);
    // A record has two bytes or more: the limit holds the memory for what a count only claims.
    std::uint64_t limit = lzma_index_memusage(1, flags.backward_size / 2);
    lzma_index* index = nullptr;
    if (lzma_index_buffer_decode(&index, &limit, nullptr, source, &position, footer) != LZMA_OK) {
        return false;
    }
    const bool isWhole = position == footer && lzma_index_stream_size(index) == sourceLength;
    uncompressedSize = lzma_index_uncompressed_size(index);
    lzma_index_end(index, nullptr);
    return isWhole;
}

int reportSize(const unsigned char* source, std::uint32_t sourceLength, std::uint32_t& size)
{
    std::uint64_t uncompressedSize = 0;
    if (!readIndex(source, sourceLength, uncompressedSize) || uncompressedSize > UINT32_MAX
        || uncompressedSize > sourceLength * kMostBytesPerByte) {
        return eS_Failed;
    }
    size = static_cast<std::uint32_t>(uncompressedSize);
    return eS_SizeReported;
}

} // namespace

/// Compresses.
int ordinal_1(const unsigned char** source, unsigned char** buffer, std::uint32_t sourceLength,
    std::uint32_t* size, int)
{
    lzma_options_lzma options;
    if (lzma_lzma_preset(&options, LZMA_PRESET_DEFAULT) != 0) {
        return eS_Failed;
    }
    // A dictionary larger than the data would only take memory, here and when it is read.
    options.dict_size
        = std::clamp<std::uint32_t>(sourceLength, LZMA_DICT_SIZE_MIN, options.dict_size);
    lzma_filter filters[] = { { LZMA_FILTER_LZMA2, &options }, { LZMA_VLI_UNKNOWN, nullptr } };
    std::size_t length = 0;
    if (lzma_stream_buffer_encode(
            filters, LZMA_CHECK_CRC32, nullptr, *source, sourceLength, *buffer, &length, *size)
        != LZMA_OK) {
        return eS_Failed;
    }
    *size = static_cast<std::uint32_t>(length);
    return eS_Done;
}

/// Decompresses; without a buffer it tells how long the data are.
int ordinal_2(const unsigned char** source, unsigned char** buffer, std::uint32_t sourceLength,
    std::uint32_t* size, int)
{
    if (*buffer == nullptr) {
        return reportSize(*source, sourceLength, *size);
    }
    std::uint64_t limit = kMemoryLimit;
    std::size_t position = 0;
    std::size_t length = 0;
    if (lzma_stream_buffer_decode(
            &limit, 0, nullptr, *source, &position, sourceLength, *buffer, &length, *size)
            != LZMA_OK
        || position != sourceLength) {
        return eS_Failed;
    }
    *size = static_cast<std::uint32_t>(length);
    return eS_Done;
}
