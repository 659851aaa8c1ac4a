#pragma once

#include "tabase/tastreamfilebase.h"
#include "tabase/tastreamreadascii.h"

/// The text reader of a file, buffered.
///
/// Threads: one thread at a time.
/// Failure: besides that of TaStreamReadASCII: TuExceptionStream, which names the file and the
///          reason, when it cannot be opened or read.
class TABASE_API TaStreamReadASCIIFile : public TaStreamReadASCII, public TaStreamFileBase
{
    TU_DECLARE_RTTI

public:
    explicit TaStreamReadASCIIFile(const CString& path);

    /// Bytes taken so far.
    unsigned long long GetPosition() const
    {
        return getFilePosition() - static_cast<unsigned long long>(m_end - m_next);
    }
    /// Nothing can be read afterwards.
    void Close();

protected:
    bool read(char& c) override;

private:
    bool fill();

    const unsigned char* m_next = nullptr; // the unread part of the buffer
    const unsigned char* m_end = nullptr;
};
