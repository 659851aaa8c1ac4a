#pragma once

#include "groundwork/tuarray.h"
#include "tacompression/tacompressionapi.h"

/// What a codec of memory blocks gives out: memory that is taken as large as the output can get,
/// filled by the coder, and then counts for as many bytes as that has written.
///
/// Nothing is filled with 0 and nothing copied on the way. The memory stays for the next output; it
/// goes with Reset().
///
/// Ownership: of its bytes.
/// Threads:   as a standard container: many readers, or one writer.
class TACOMPRESSION_API TaOutputBlock
{
public:
    /// Empties the block and makes room for `capacity` bytes; the room is there for 0 bytes, too.
    /// False, with nothing held, where there is no memory, or more than 32 bits can count.
    [[nodiscard]] bool Prepare(unsigned long long capacity);
    /// The first `size` bytes of the room are the output.
    void SetSize(unsigned int size) { m_bytes.SetSize(size); }
    void Reset();

    /// Null while there is no room.
    unsigned char* GetData() { return m_bytes.GetData(); }
    const unsigned char* GetData() const { return m_bytes.GetData(); }
    unsigned int GetSize() const { return m_bytes.GetSize(); }

private:
    TuArray<unsigned char, TuArrayPolicyConstructUninitialised> m_bytes;
};
