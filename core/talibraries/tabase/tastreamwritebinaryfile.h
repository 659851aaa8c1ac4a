#pragma once

#include "groundwork/tustreamwritebinary.h"
#include "tabase/tastreamfilebase.h"

/// A binary writer into a file, buffered.
///
/// In safe mode the bytes go to a temporary file beside the target, which Commit() puts in the
/// target's place in one step; whatever happens before, the old file stays as it is.
///
///     TaStreamWriteBinaryFile file(path, TaStreamWriteBinaryFile::eWM_Safe);
///     document.Serialize(file);
///     file.Commit();
///
/// Threads: one thread at a time.
/// Failure: TuExceptionStream, which names the file and the reason, when it cannot be opened or
///          written; at the latest from Close() or Commit(). The destructor, which closes what is
///          open, cannot throw: it reports a loss to the diagnostic trace.
class TABASE_API TaStreamWriteBinaryFile final : public TuStreamWriteBinary, public TaStreamFileBase
{
    TU_DECLARE_RTTI

public:
    enum EMode
    {
        eWM_Direct, // the file is created, or cut to length 0, at once
        eWM_Safe,
    };

    explicit TaStreamWriteBinaryFile(const CString& path, EMode mode = eWM_Direct);
    ~TaStreamWriteBinaryFile() override;

    /// In safe mode, once: writes out, waits for the storage device, closes, and replaces the
    /// target. When it throws, the old file stays, unless only the very last step, making the
    /// replacement durable, has failed.
    void Commit();
    /// Writes out and closes. In safe mode without Commit() the temporary file is removed.
    void Close();

    /// Bytes written so far.
    unsigned long long GetPosition() const { return getFilePosition() + getUsed(); }

private:
    void write(const void* data, unsigned long long size) override;
    std::size_t getUsed() const;
    std::size_t takeUsed();
};
