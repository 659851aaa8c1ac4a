#pragma once

#include "groundwork/cstring.h"
#include "groundwork/iobject.h"
#include "platform/platformfile.h"
#include "tabase/tabaseapi.h"

#include <cstddef>
#include <memory>

/// What all file streams share: the open file, its buffer and what becomes of its errors. The
/// streams themselves say how the buffer is filled with values and taken apart again.
///
/// Ownership: owns the file and the buffer.
/// Threads:   one thread at a time.
/// Failure:   TuExceptionStream, which names the file and the system's reason. A file that has
///            failed to take bytes refuses all later ones with the first reason.
class TABASE_API TaStreamFileBase : public virtual IObject
{
    TU_DECLARE_RTTI

public:
    TaStreamFileBase(const TaStreamFileBase&) = delete;
    TaStreamFileBase& operator=(const TaStreamFileBase&) = delete;
    ~TaStreamFileBase() override;

    const CString& GetPath() const { return m_path; }
    bool IsOpen() const { return m_file.IsOpen(); }

protected:
    enum EOpenMode
    {
        eOM_Read,
        eOM_Write, // created, or cut to length 0
        eOM_WriteSafe, // a temporary file beside the path, which commit() puts in its place
    };

    static constexpr std::size_t kBufferSize = 65536;

    TaStreamFileBase(const CString& path, EOpenMode mode);

    unsigned char* getBuffer() const { return m_buffer.get(); }
    /// Bytes that have come from the system, or gone to it, so far.
    unsigned long long getFilePosition() const { return m_filePosition; }

    /// Reads past the buffer; returns fewer bytes only at the end of the file.
    std::size_t readBytes(void* data, std::size_t size);

    /// Appends to a buffer that holds `used` bytes, and writes out what does not fit; returns how
    /// many bytes the buffer holds then.
    std::size_t writeBytes(std::size_t used, const void* data, std::size_t size);

    /// Writes out the `used` bytes of the buffer and closes; a temporary file is removed instead.
    /// The file is closed even when this throws.
    void closeFile(std::size_t used = 0);
    /// For destructors: closeFile() whose error, unless it has been thrown before, goes to the
    /// diagnostic trace.
    void closeFileAtDestruction(std::size_t used) noexcept;
    /// Throws TuExceptionPreconditionViolation unless commit() may be called: once, in safe mode.
    void checkCommittable() const;
    /// Writes out, syncs, closes and puts the temporary file in the place of the old one. When this
    /// throws, the temporary file is gone; the old file stays, unless only the last step, making
    /// the change of the folder durable, has failed.
    void commit(std::size_t used);

private:
    void openTemporary();
    void writeOut(const void* data, std::size_t size);
    void discard() noexcept;
    CString describeFailure(const CString& verb) const;
    void throwAfterFailure() const;
    [[noreturn]] void failWriting(const CString& verb);

    CString m_path;
    CString m_target; // in safe mode: the file behind the path, which may be a link
    CString m_temporaryPath; // empty where the path itself is written
    platform::File m_file;
    std::unique_ptr<unsigned char[]> m_buffer;
    unsigned long long m_filePosition = 0;
    CString m_failure; // why bytes were lost; empty as long as none were
};
