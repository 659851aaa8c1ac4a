#include "groundwork/tuexception.h"

#include "groundwork/tucheckedcast.h"
#include "groundwork/tustreamwriteasciistring.h"

#include <string>

TU_DEFINE_RTTI_ROOT(TuException, nullptr, &TuException::CloneByFactory);

struct TuException::SContents
{
    CString file;
    unsigned int line = 0;
    std::shared_ptr<const TuException> cause;
    CString causeText;
    const TuRTTI* record = nullptr;
    std::string account;

    /// The account is made while the exception is: what() may not fail, and may run on any thread.
    SContents(const CString& source, unsigned int lineNumber, const TuException* failure,
        const CString& text, const TuRTTI& thrown)
        : file(source)
        , line(lineNumber)
        , cause(failure != nullptr ? failure->Clone() : nullptr)
        , causeText(text)
        , record(&thrown)
    {
        account = CString(record->GetClassName()).ToUtf8() + " at " + file.ToUtf8() + '('
            + std::to_string(line) + ')';
        if (!causeText.IsEmpty()) {
            account += ": " + causeText.ToUtf8();
        }
        if (cause != nullptr) {
            account += std::string("; caused by ") + cause->what();
        }
    }
};

CString TuSourceName(const char* file)
{
    const std::string_view path = file;
    const std::size_t slash = path.find_last_of("/\\");
    const std::size_t point = path.rfind('.');
    const bool hasExtension = point != path.npos && (slash == path.npos || slash < point);
    CString name = CString::FromUtf8(path.substr(0, hasExtension ? point : path.npos));
    for (char16_t *unit = name.GetBuffer(), *end = unit + name.GetLength(); unit != end; ++unit) {
        *unit = *unit == u'\\' ? u'/' : *unit;
    }
    return name;
}

TuException::TuException(const CString& file, unsigned int line)
    : TuException(file, line, RTTI)
{
}

TuException::TuException(const CString& file, unsigned int line, const TuException& cause)
    : TuException(file, line, cause, RTTI)
{
}

TuException::TuException(const CString& file, unsigned int line, const std::exception& cause)
    : TuException(file, line, cause, RTTI)
{
}

TuException::TuException(
    const CString& file, unsigned int line, const std::exception& cause, const TuRTTI& record)
{
    // A reference to the standard base may hide one of our own, which tells more.
    const auto* known = dynamic_cast<const TuException*>(&cause);
    m_contents = std::make_shared<const SContents>(
        file, line, known, known != nullptr ? CString() : CString::FromUtf8(cause.what()), record);
}

TuException::TuException(const CString& file, unsigned int line, const TuRTTI& record)
    : m_contents(std::make_shared<const SContents>(file, line, nullptr, CString(), record))
{
}

TuException::TuException(
    const CString& file, unsigned int line, const TuException& cause, const TuRTTI& record)
    : m_contents(std::make_shared<const SContents>(file, line, &cause, CString(), record))
{
}

TuException::TuException(
    const CString& file, unsigned int line, const CString& text, const TuRTTI& record)
    : m_contents(std::make_shared<const SContents>(file, line, nullptr, text, record))
{
}

const CString& TuException::GetFile() const { return m_contents->file; }

unsigned int TuException::GetLine() const { return m_contents->line; }

const TuException* TuException::GetCause() const { return m_contents->cause.get(); }

const CString& TuException::GetCauseText() const { return m_contents->causeText; }

const TuRTTI& TuException::GetExceptionRTTI() const { return *m_contents->record; }

std::unique_ptr<TuException> TuException::Clone() const
{
    const TuRTTI* record = &GetRTTI();
    while (record->GetClone() == nullptr && record->GetFirstBase() != nullptr) {
        record = record->GetFirstBase();
    }
    if (const TuRTTI::CloneFunction clone = record->GetClone()) {
        std::unique_ptr<IObject> copy(clone(*this));
        if (auto* failure = dynamic_cast<TuException*>(copy.get())) {
            static_cast<void>(copy.release());
            return std::unique_ptr<TuException>(failure);
        }
    }
    return std::make_unique<TuException>(*this);
}

const char* TuException::what() const noexcept { return m_contents->account.c_str(); }

void TuException::dump(TuStreamWriteASCII& stream) const
{
    dumpException(stream);
    for (const TuException* cause = GetCause(); cause != nullptr; cause = cause->GetCause()) {
        stream << u"; caused by ";
        cause->dumpException(stream);
    }
}

void TuException::dumpException(TuStreamWriteASCII& stream) const
{
    stream << m_contents->record->GetClassName() << u" at " << m_contents->file << u"("
           << m_contents->line << u")";
    if (!m_contents->causeText.IsEmpty()) {
        stream << u": " << m_contents->causeText;
    }
}

IObject* TuException::CloneByFactory(const IObject& object)
{
    return new TuException(TuCheckedCast<TuException>(object));
}
