#pragma once

#include "groundwork/cstring.h"
#include "groundwork/iobject.h"
#include "groundwork/tuidumpable.h"
#include "groundwork/tureferencecounted.h"

#include <exception>
#include <memory>

/// The path of a source from the root of the source tree, without extension: how exceptions name
/// their place. `file` is what __FILE__ gives.
GROUNDWORK_API CString TuSourceName(const char* file);

/// A source as TU_HERE names it; becomes text only when a failure is really made.
struct TuSource
{
    const char* file;

    operator CString() const { return TuSourceName(file); } // NOLINT(google-explicit-constructor)
};

/// Source and line of the throw, from the compiler: `throw TuExceptionStream(TU_HERE);`. Where a
/// contract states the line, a named constant stands instead and never moves.
#define TU_HERE TuSource{ __FILE__ }, static_cast<unsigned int>(__LINE__)

/// The same in a header, which is compiled from wherever its user has it: the source has its name.
#define TU_HERE_IN(source) u"" source, static_cast<unsigned int>(__LINE__)

/// Any failure that has no more specific class; the base of all others.
///
/// File and line are the message. Where there is more to say it is the cause: another failure, or
/// the text of a standard exception.
///
///     throw TuException(TU_HERE, std::runtime_error("cannot open 'a.off': " + reason));
///
/// Ownership: copies share their immutable contents, so copying never throws. A cause is kept with
///            its own class, as Clone() makes it, and still names that class where it is less. A
///            copy on the heap can be shared through TuSmartPointer; the one that is caught cannot.
/// Threads:   may be passed between threads.
/// Failure:   std::bad_alloc where there is no memory left for the contents.
class GROUNDWORK_API TuException : public std::exception,
                                   public virtual IObject,
                                   public TuReferenceCounted,
                                   public TuIDumpable<1>
{
    TU_DECLARE_RTTI

public:
    TuException(const CString& file, unsigned int line);
    TuException(const CString& file, unsigned int line, const TuException& cause);
    TuException(const CString& file, unsigned int line, const std::exception& cause);

    // No moves: copies never throw, and what was moved from would have no contents.
    TuException(const TuException&) = default;
    TuException& operator=(const TuException&) = default;

    const CString& GetFile() const;
    unsigned int GetLine() const;
    /// Null when there is none.
    const TuException* GetCause() const;
    /// The text of a standard exception that was the cause, else empty.
    const CString& GetCauseText() const;
    /// The record of the class that was thrown; it outlives slicing, which GetRTTI() does not.
    const TuRTTI& GetExceptionRTTI() const;

    /// A copy on the heap, of the same class as this or the nearest of its bases that has a clone
    /// function.
    std::unique_ptr<TuException> Clone() const;

    /// The account, causes included, in UTF-8, as it was made when the exception was; valid as long
    /// as this exception or a copy.
    const char* what() const noexcept override;

protected:
    TuException(const CString& file, unsigned int line, const TuRTTI& record);
    TuException(
        const CString& file, unsigned int line, const TuException& cause, const TuRTTI& record);
    TuException(
        const CString& file, unsigned int line, const std::exception& cause, const TuRTTI& record);
    /// For a subclass with a text of its own, which stands in the account where a cause's would.
    TuException(const CString& file, unsigned int line, const CString& text, const TuRTTI& record);

    /// The account of this exception, then of its causes, each behind "; caused by ".
    void dump(TuStreamWriteASCII& stream) const override;
    /// The account of this exception alone: "TuException at core/tabase/tanode(120)".
    virtual void dumpException(TuStreamWriteASCII& stream) const;

private:
    struct SContents;

    static IObject* CloneByFactory(const IObject& object);

    std::shared_ptr<const SContents> m_contents;
};
