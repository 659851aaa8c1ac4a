#pragma once

#include "groundwork/tuexception.h"

// What a class of exceptions has: its record, the constructors without and with a text of its own
// and with a cause (another failure, or a standard exception), and the same for its subclasses,
// which pass their record.
#define TU_DECLARE_EXCEPTION(Class)                                                                \
    TU_DECLARE_RTTI                                                                                \
                                                                                                   \
public:                                                                                            \
    Class(const CString& file, unsigned int line, const CString& text = CString());                \
    Class(const CString& file, unsigned int line, const TuException& cause);                       \
    Class(const CString& file, unsigned int line, const std::exception& cause);                    \
                                                                                                   \
    TU_DECLARE_EXCEPTION_BASE(Class)                                                               \
                                                                                                   \
private:                                                                                           \
    static IObject* CloneByFactory(const IObject& object)

#define TU_DECLARE_EXCEPTION_BASE(Class)                                                           \
protected:                                                                                         \
    Class(const CString& file, unsigned int line, const TuRTTI& record);                           \
    Class(const CString& file, unsigned int line, const CString& text, const TuRTTI& record);      \
    Class(const CString& file, unsigned int line, const TuException& cause, const TuRTTI& record); \
    Class(const CString& file, unsigned int line, const std::exception& cause,                     \
        const TuRTTI& record);

/// An allocation that failed.
///
/// Failure: none from the two constructors below, which throw sites use: where there is no memory
///          for the place, either, the exception says so in its stead.
class GROUNDWORK_API TuExceptionOutOfMemory : public TuException
{
    TU_DECLARE_EXCEPTION(TuExceptionOutOfMemory);

public:
    TuExceptionOutOfMemory(const char16_t* file, unsigned int line) noexcept;
    TuExceptionOutOfMemory(TuSource file, unsigned int line) noexcept;
};

/// A condition that did not hold: the base of the two classes below, which say in their text which
/// condition.
class GROUNDWORK_API TuExceptionCondition : public TuException
{
    TU_DECLARE_RTTI
    TU_DECLARE_EXCEPTION_BASE(TuExceptionCondition)
};

/// An argument or a state that violates a function's contract.
class GROUNDWORK_API TuExceptionPreconditionViolation : public TuExceptionCondition
{
    TU_DECLARE_EXCEPTION(TuExceptionPreconditionViolation);
};

/// A function that did not keep what it promises.
class GROUNDWORK_API TuExceptionPostconditionViolation : public TuExceptionCondition
{
    TU_DECLARE_EXCEPTION(TuExceptionPostconditionViolation);
};

/// A stream that ended early, holds malformed data, or failed to take or give bytes.
class GROUNDWORK_API TuExceptionStream : public TuException
{
    TU_DECLARE_EXCEPTION(TuExceptionStream);
};

/// A record whose version or format marker this reader does not know.
class GROUNDWORK_API TuExceptionWrongFileVersion : public TuException
{
    TU_DECLARE_EXCEPTION(TuExceptionWrongFileVersion);
};

/// An extension interface asked for by a name that the object does not implement.
class GROUNDWORK_API TuExceptionUnknownExtension : public TuException
{
    TU_DECLARE_EXCEPTION(TuExceptionUnknownExtension);
};

#undef TU_DECLARE_EXCEPTION
#undef TU_DECLARE_EXCEPTION_BASE
