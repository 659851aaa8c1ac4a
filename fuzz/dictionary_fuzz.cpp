#include "tacompression/tacompresslzma.h"
#include "tacompression/tadecompresslzma.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

namespace {

std::unique_ptr<TaCompressLZMA> s_coder;
std::unique_ptr<TaDecompressLZMA> s_decoder;

} // namespace

/// The library is where the coders look for it while they are made, and no longer: the paths on the
/// command line start from the folder of the caller.
extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    const std::filesystem::path former = std::filesystem::current_path();
    std::filesystem::current_path(TA_VELCOMPRESS_FOLDER);
    s_coder = std::make_unique<TaCompressLZMA>();
    s_decoder = std::make_unique<TaDecompressLZMA>();
    std::filesystem::current_path(former);
    return 0;
}

/// Reads a block; what it holds, or the block itself where it is none, is written and read back.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t kLargest = 4096; // claims 32 MiB of data at most
    constexpr std::size_t kMostToWrite = 65536; // more takes only time
    if (size > kLargest) {
        return 0;
    }
    auto length = static_cast<unsigned long>(size);
    const bool isRead = s_decoder->Decompress(data, length) != 0;
    const TaDecompressLZMA copy = *s_decoder;
    if (isRead) {
        data = copy.GetOutputBuffer();
        length = copy.GetOutputSize();
    }
    if (length > kMostToWrite) {
        return 0;
    }
    if (s_coder->Compress(data, length, 0) == 0
        || s_decoder->Decompress(s_coder->GetOutputBuffer(), s_coder->GetOutputSize()) == 0
        || s_decoder->GetOutputSize() != length
        || (length != 0 && std::memcmp(s_decoder->GetOutputBuffer(), data, length) != 0)) {
        std::abort();
    }
    return 0;
}
