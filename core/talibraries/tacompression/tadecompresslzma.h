#pragma once

#include "tacompression/tacompressionapi.h"
#include "tacompression/talzmaentrypoint.h"
#include "tacompression/taoutputblock.h"

/// Decompresses a block that TaCompressLZMA has made, in one call with the coder of the same
/// library, `VelCompress.dll` in the current directory.
///
/// The library tells from the block how long the data are, and so much memory is taken: whether a
/// damaged block can make it claim anything is that library's affair.
///
/// Ownership: of the output, which is valid until the next call. A copy has its own, and shares the
///            loaded library.
/// Threads:   as a standard container; different objects may work at once if the library can.
/// Failure:   the constructor throws TuException: line 54 where there is no such library, 61 where
///            it lacks function 2. Decompress returns 0 where the library refuses the block; only
///            where there is no memory for the data it throws, a bare `const char*`.
class TACOMPRESSION_API TaDecompressLZMA
{
public:
    TaDecompressLZMA();
    virtual ~TaDecompressLZMA() = default;
    TaDecompressLZMA(const TaDecompressLZMA&) = default;
    TaDecompressLZMA& operator=(const TaDecompressLZMA&) = default;
    TaDecompressLZMA(TaDecompressLZMA&&) = default;
    TaDecompressLZMA& operator=(TaDecompressLZMA&&) = default;

    /// The source is not this object's output. Returns non-zero on success. Where the library
    /// cannot tell the length, or the source is longer than 32 bits can count, the output stays as
    /// it was; where it fails to decode, or reports more than there was room for, the output has
    /// size 0 and the buffer stays.
    int Decompress(const unsigned char* source, unsigned long sourceLength);

    const unsigned char* GetOutputBuffer() const { return m_output.GetData(); }
    unsigned int GetOutputSize() const { return m_output.GetSize(); }

protected:
    void reset() { m_output.Reset(); }

private:
    TaOutputBlock m_output;
    TaLZMAEntryPoint m_entryPoint;
};
