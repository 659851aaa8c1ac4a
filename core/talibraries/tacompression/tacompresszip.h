#pragma once

#include "tacompression/tacompressionapi.h"
#include "tacompression/taoutputblock.h"

/// Compresses a block of memory in one call, to a zlib stream: header, deflate data at the default
/// level, Adler-32 checksum. The exact bytes are the affair of the zlib that is installed.
///
///     TaCompressZIP coder;
///     if (coder.Compress(bytes, length) != 0)
///         Store(length, coder.GetOutputBuffer(), coder.GetOutputSize());
///
/// The length is not stored with the data, and TaDecompressZIP needs it.
///
/// Ownership: of the output, which is valid until the next call; a copy has its own.
/// Threads:   as a standard container; different objects know nothing of each other.
/// Failure:   by the result alone. It is 0, and the output empty, where memory runs out or the
///            output could take more than 32 bits can count (a source of some 3.9 GB).
class TACOMPRESSION_API TaCompressZIP
{
public:
    TaCompressZIP() = default;
    virtual ~TaCompressZIP() = default;
    TaCompressZIP(const TaCompressZIP&) = default;
    TaCompressZIP& operator=(const TaCompressZIP&) = default;
    TaCompressZIP(TaCompressZIP&&) = default;
    TaCompressZIP& operator=(TaCompressZIP&&) = default;

    /// The source is not this object's output. Returns non-zero on success.
    int Compress(const unsigned char* source, unsigned long sourceLength);

    const unsigned char* GetOutputBuffer() const { return m_output.GetData(); }
    unsigned long GetOutputSize() const { return m_output.GetSize(); }

protected:
    void reset() { m_output.Reset(); }

private:
    TaOutputBlock m_output;
};
