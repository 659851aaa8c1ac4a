#include "tamesh/pngwriter.h"

#include "groundwork/tucondition.h"
#include "groundwork/tuexceptions.h"
#include "groundwork/tustreamwritebinary.h"
#include "tamesh/image.h"

#include <zlib.h>

#include <cstdlib>
#include <memory>
#include <vector>

namespace {

/// The library's own compression makes files of about twice the size.
unsigned char* compress(unsigned char* data, int size, int* compressedSize, int level)
{
    uLongf length = compressBound(static_cast<uLong>(size));
    auto* const memory = static_cast<unsigned char*>(std::malloc(length));
    if (memory == nullptr
        || compress2(memory, &length, data, static_cast<uLong>(size), level) != Z_OK) {
        std::free(memory);
        return nullptr;
    }
    *compressedSize = static_cast<int>(length);
    return memory;
}

} // namespace

// The code of the library, here only. It lies in a folder of the system, where nothing warns.
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#define STBIW_ZLIB_COMPRESS compress
#include <stb/stb_image_write.h>

namespace tamesh {

void WritePNG(TuStreamWriteBinary& stream, const Image& image)
{
    constexpr int kChannels = 3;
    const SSize size = image.GetSize();
    TuPreCondition<2>(
        u"a picture has pixels", TU_HERE, [&] { return size.width > 0 && size.height > 0; });
    std::vector<unsigned char> bytes;
    bytes.reserve(
        static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) * kChannels);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const std::uint32_t color = image.GetPixel(x, y).GetDword();
            for (const unsigned int shift : { 16u, 8u, 0u }) {
                bytes.push_back(static_cast<unsigned char>(color >> shift));
            }
        }
    }
    int length = 0;
    struct Release
    {
        void operator()(unsigned char* memory) const { std::free(memory); }
    };
    const std::unique_ptr<unsigned char, Release> png(stbi_write_png_to_mem(
        bytes.data(), size.width * kChannels, size.width, size.height, kChannels, &length));
    if (png == nullptr) {
        throw TuExceptionOutOfMemory(TU_HERE);
    }
    stream.WriteBuffer(png.get(), static_cast<unsigned long long>(length));
}

} // namespace tamesh
