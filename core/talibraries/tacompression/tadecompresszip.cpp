#include "tacompression/tadecompresszip.h"

#include <zlib.h>

int TaDecompressZIP::Decompress(
    const unsigned char* source, unsigned long sourceLength, unsigned long expectedSize)
{
    if (expectedSize == 0) {
        return 0;
    }
    if (!m_output.Prepare(expectedSize)) {
        return 0;
    }
    uLong length = expectedSize; // zlib's own type, wider than ours
    if (uncompress(m_output.GetData(), &length, source, sourceLength) != Z_OK) {
        reset();
        return 0;
    }
    m_output.SetSize(static_cast<unsigned int>(length));
    return 1;
}
