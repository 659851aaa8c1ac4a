#include "tabase/tastreamfilebase.h"

#include "groundwork/tuexceptions.h"
#include "groundwork/tulatesterror.h"
#include "groundwork/tustreamwriteasciitrace.h"

#include <cstring>
#include <string>

TU_DEFINE_RTTI_ROOT(TaStreamFileBase, nullptr, nullptr);

TaStreamFileBase::TaStreamFileBase(const CString& path, EOpenMode mode)
    : m_path(path)
    , m_buffer(new unsigned char[kBufferSize])
{
    if (mode == eOM_WriteSafe) {
        openTemporary();
    } else if (!m_file.Open(m_path, mode == eOM_Read ? platform::eFM_Read : platform::eFM_Write)) {
        throw TuExceptionStream(TU_HERE, describeFailure(u"open"));
    }
}

TaStreamFileBase::~TaStreamFileBase() { discard(); }

/// Two programs, or two streams of one, may save the same path at once: each needs a name of its
/// own, and takes the first that is free. The file's own name is cut in it, for a name with an
/// ending more may be too long.
void TaStreamFileBase::openTemporary()
{
    constexpr std::size_t kMostOfName = 40;

    std::u16string target;
    if (!platform::ResolveLinks(m_path, target) || !platform::MayBeReplaced(target)) {
        throw TuExceptionStream(TU_HERE, describeFailure(u"replace"));
    }
    m_target = target;
    const std::size_t slash = m_target.GetView().find_last_of(u"/\\");
    const std::size_t name = slash == CString::npos ? 0 : slash + 1;
    const CString stem = m_target.Left(name + kMostOfName) + u".tmp";
    for (unsigned int number = 0;; ++number) {
        m_temporaryPath = stem + CString::FromUtf8(std::to_string(number));
        bool taken = false;
        if (m_file.CreateFor(m_temporaryPath, m_target, taken)) {
            return;
        }
        if (!taken) {
            m_temporaryPath.Empty();
            throw TuExceptionStream(TU_HERE, describeFailure(u"create a temporary file beside"));
        }
    }
}

std::size_t TaStreamFileBase::readBytes(void* data, std::size_t size)
{
    std::size_t count = 0;
    const bool done = m_file.Read(data, size, count);
    m_filePosition += count;
    if (!done) {
        throw TuExceptionStream(TU_HERE, describeFailure(u"read"));
    }
    return count;
}

std::size_t TaStreamFileBase::writeBytes(std::size_t used, const void* data, std::size_t size)
{
    throwAfterFailure();
    if (!IsOpen()) {
        throw TuExceptionStream(TU_HERE, u"cannot write \"" + m_path + u"\": it is closed");
    }
    if (size > kBufferSize - used) {
        writeOut(m_buffer.get(), used);
        used = 0;
        if (size >= kBufferSize) {
            writeOut(data, size);
            return 0;
        }
    }
    if (size != 0) {
        std::memcpy(m_buffer.get() + used, data, size);
    }
    return used + size;
}

void TaStreamFileBase::writeOut(const void* data, std::size_t size)
{
    throwAfterFailure();
    if (!m_file.Write(data, size)) {
        failWriting(u"write");
    }
    m_filePosition += size;
}

void TaStreamFileBase::closeFile(std::size_t used)
{
    if (!IsOpen()) {
        return;
    }
    if (!m_temporaryPath.IsEmpty()) {
        discard();
        return;
    }
    try {
        writeOut(m_buffer.get(), used);
    } catch (...) {
        m_file.Close();
        throw;
    }
    if (!m_file.Close()) {
        failWriting(u"close");
    }
}

void TaStreamFileBase::closeFileAtDestruction(std::size_t used) noexcept
{
    if (!m_failure.IsEmpty()) {
        discard();
        return;
    }
    try {
        closeFile(used);
    } catch (const std::exception& failure) {
        try {
            TuStreamWriteASCIITraceDiagnostic() << CString::FromUtf8(failure.what()) << u"\n";
        } catch (...) { // out of memory: there is no way left to report
        }
    }
}

void TaStreamFileBase::checkCommittable() const
{
    if (m_temporaryPath.IsEmpty() || !IsOpen()) {
        throw TuExceptionPreconditionViolation(
            TU_HERE, u"a file is committed once, and only when it was opened in safe mode");
    }
}

void TaStreamFileBase::commit(std::size_t used)
{
    try {
        writeOut(m_buffer.get(), used);
        if (!m_file.Sync()) {
            failWriting(u"sync");
        }
        if (!m_file.Close()) {
            failWriting(u"close");
        }
        const platform::EReplaceResult result
            = platform::ReplaceAtomically(m_temporaryPath, m_target);
        if (result == platform::eRR_Failed) {
            failWriting(u"replace");
        }
        // The name may be another stream's from now on.
        m_temporaryPath.Empty();
        if (result != platform::eRR_Durable) {
            failWriting(u"sync the folder of");
        }
    } catch (...) {
        discard();
        throw;
    }
}

void TaStreamFileBase::discard() noexcept
{
    m_file.Close();
    if (!m_temporaryPath.IsEmpty()) {
        platform::RemovePath(m_temporaryPath);
        m_temporaryPath.Empty();
    }
}

CString TaStreamFileBase::describeFailure(const CString& verb) const
{
    const TuLatestError reason;
    return u"cannot " + verb + u" \"" + m_path + u"\": " + reason.GetMessageText();
}

void TaStreamFileBase::throwAfterFailure() const
{
    if (!m_failure.IsEmpty()) {
        throw TuExceptionStream(TU_HERE, m_failure);
    }
}

void TaStreamFileBase::failWriting(const CString& verb)
{
    m_failure = describeFailure(verb);
    throw TuExceptionStream(TU_HERE, m_failure);
}
