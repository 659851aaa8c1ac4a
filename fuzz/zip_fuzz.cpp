#include "tacompression/tacompresszip.h"
#include "tacompression/tadecompresszip.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

/// The first byte says how many times as long as the rest the data are expected to be. The rest is
/// read as a stream, and written as data and read back.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const unsigned long length = static_cast<unsigned long>(size - 1);
    const unsigned long expected = data[0] * length;
    static TaDecompressZIP s_decoder;
    const bool isRead = s_decoder.Decompress(data + 1, length, expected) != 0;
    const unsigned long most = isRead ? expected : 0;
    if (expected != 0 && s_decoder.GetOutputSize() > most) {
        std::abort();
    }
    static TaCompressZIP s_coder;
    if (s_coder.Compress(data + 1, length) == 0
        || s_decoder.Decompress(s_coder.GetOutputBuffer(), s_coder.GetOutputSize(), length + 1) == 0
        || s_decoder.GetOutputSize() != length
        || std::memcmp(s_decoder.GetOutputBuffer(), data + 1, length) != 0) {
        std::abort();
    }
    return 0;
}
