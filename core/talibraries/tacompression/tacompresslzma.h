#pragma once

#include "tacompression/tacompressionapi.h"
#include "tacompression/talzmaentrypoint.h"
#include "tacompression/taoutputblock.h"

/// Compresses a block of memory in one call with the coder of a library that is loaded at run time,
/// `VelCompress.dll` in the current directory; extras/velcompress has one.
///
/// What the coded form is, and whether it stores the length, is that library's affair;
/// TaDecompressLZMA asks it. TaLZMAEntryPoint says what loading from the current directory risks.
///
/// Ownership: of the output, which is valid until the next call. A copy has its own, and shares the
///            loaded library.
/// Threads:   as a standard container; different objects may work at once if the library can.
/// Failure:   the constructor throws TuException: line 54 where there is no such library, 61 where
///            it lacks function 1. Compress tells by its result alone. It is 0, and the output
///            empty, where the coder fails or reports more than it had room for, memory runs out,
///            or the source or the room for the output takes more than 32 bits can count.
class TACOMPRESSION_API TaCompressLZMA
{
public:
    TaCompressLZMA();
    virtual ~TaCompressLZMA() = default;
    TaCompressLZMA(const TaCompressLZMA&) = default;
    TaCompressLZMA& operator=(const TaCompressLZMA&) = default;
    TaCompressLZMA(TaCompressLZMA&&) = default;
    TaCompressLZMA& operator=(TaCompressLZMA&&) = default;

    /// The source is not this object's output; the third argument means nothing. Returns non-zero
    /// on success.
    int Compress(const unsigned char* source, unsigned long sourceLength, unsigned long);

    const unsigned char* GetOutputBuffer() const { return m_output.GetData(); }
    unsigned int GetOutputSize() const { return m_output.GetSize(); }

protected:
    void reset() { m_output.Reset(); }

private:
    TaOutputBlock m_output;
    TaLZMAEntryPoint m_entryPoint;
};
