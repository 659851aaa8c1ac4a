#pragma once

#include "tacompression/tacompressionapi.h"
#include "tacompression/taoutputblock.h"

/// Decompresses a zlib stream, such as TaCompressZIP makes, in one call.
///
/// The caller tells how long the data are: at least as long as they turn out to be. So much memory
/// is taken whatever the stream holds, so a length from a file is checked before it gets here.
///
/// Ownership: of the output, which is valid until the next call; a copy has its own.
/// Threads:   as a standard container; different objects know nothing of each other.
/// Failure:   by the result alone. It is 0, and the output empty, where the stream is damaged, the
///            data are longer than expected, memory runs out, or more than 32 bits can count is
///            expected. Where nothing is expected, the result is 0 and the output as it was.
class TACOMPRESSION_API TaDecompressZIP
{
public:
    TaDecompressZIP() = default;
    virtual ~TaDecompressZIP() = default;
    TaDecompressZIP(const TaDecompressZIP&) = default;
    TaDecompressZIP& operator=(const TaDecompressZIP&) = default;
    TaDecompressZIP(TaDecompressZIP&&) = default;
    TaDecompressZIP& operator=(TaDecompressZIP&&) = default;

    /// The source is not this object's output. Returns non-zero on success.
    int Decompress(
        const unsigned char* source, unsigned long sourceLength, unsigned long expectedSize);

    const unsigned char* GetOutputBuffer() const { return m_output.GetData(); }
    /// What the data really are long.
    unsigned long GetOutputSize() const { return m_output.GetSize(); }

protected:
    void reset() { m_output.Reset(); }

private:
    TaOutputBlock m_output;
};
