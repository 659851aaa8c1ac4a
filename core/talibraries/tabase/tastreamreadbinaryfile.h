#pragma once

#include "groundwork/tustreamreadbinary.h"
#include "tabase/tastreamfilebase.h"

/// A binary reader from a file, buffered.
///
/// Threads: one thread at a time.
/// Failure: TuExceptionStream, which names the file and the reason, when it cannot be opened or
///          read.
class TABASE_API TaStreamReadBinaryFile final : public TuStreamReadBinary, public TaStreamFileBase
{
    TU_DECLARE_RTTI

public:
    explicit TaStreamReadBinaryFile(const CString& path);

    /// Bytes taken so far.
    unsigned long long GetPosition() const;
    /// Nothing can be read afterwards.
    void Close();

private:
    unsigned long long read(void* data, unsigned long long size) override;
    std::size_t takeFromWindow(unsigned char* data, std::size_t size);
};
