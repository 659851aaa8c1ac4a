#include "tacompression/tacompresszip.h"

#include <zlib.h>

#include <cmath>
#include <limits>

namespace {

/// Enough for any source: incompressible data grow by far less than a tenth.
double getCapacity(unsigned long sourceLength)
{
    return std::trunc(static_cast<double>(sourceLength) * 1.1) + 12;
}

} // namespace

int TaCompressZIP::Compress(const unsigned char* source, unsigned long sourceLength)
{
    const double capacity = getCapacity(sourceLength);
    if (capacity > std::numeric_limits<unsigned int>::max()
        || !m_output.Prepare(static_cast<unsigned long long>(capacity))) {
        reset();
        return 0;
    }
    uLong length = static_cast<uLong>(capacity); // zlib's own type, wider than ours
    if (compress(m_output.GetData(), &length, source, sourceLength) != Z_OK) {
        reset();
        return 0;
    }
    m_output.SetSize(static_cast<unsigned int>(length));
    return 1;
}
