#pragma once

#include "groundwork/tustreamwriteascii.h"
#include "tabase/tastreamfilebase.h"

/// A readable writer into a file, buffered; text is in the system code page. By default its values
/// are separated, so that TaStreamReadASCIIFile reads them back.
///
/// Threads: one thread at a time.
/// Failure: TuExceptionStream, which names the file and the reason, when it cannot be opened or
///          written; at the latest from Close(). The destructor, which closes what is open, cannot
///          throw: it reports a loss to the diagnostic trace.
class TABASE_API TaStreamWriteASCIIFile final : public TuStreamWriteASCII, public TaStreamFileBase
{
    TU_DECLARE_RTTI

public:
    explicit TaStreamWriteASCIIFile(const CString& path, bool separated = true);
    ~TaStreamWriteASCIIFile() override;

    /// Writes out and closes.
    void Close();

    /// Bytes written so far.
    unsigned long long GetPosition() const { return getFilePosition() + m_used; }

private:
    void write(const char* text) override;
    void write(const char16_t* text) override;
    void append(std::string_view text);

    std::size_t m_used = 0; // bytes in the buffer
};
