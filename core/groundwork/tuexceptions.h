#pragma once

#include "groundwork/tuexception.h"

// The constructors that keep a cause, for each class that is thrown: another failure, or a standard
// exception.
#define TU_EXCEPTION_WITH_CAUSE(Class)                                                             \
    Class(const CString& file, unsigned int line, const TuException& cause);                       \
    Class(const CString& file, unsigned int line, const std::exception& cause)

/// An allocation that failed.
class GROUNDWORK_API TuExceptionOutOfMemory : public TuException
{
    TU_DECLARE_RTTI

public:
    TuExceptionOutOfMemory(const CString& file, unsigned int line);
    TU_EXCEPTION_WITH_CAUSE(TuExceptionOutOfMemory);

private:
    static IObject* CloneByFactory(const IObject& object);
};

/// A condition that did not hold: the base of the two classes below.
class GROUNDWORK_API TuExceptionCondition : public TuException
{
    TU_DECLARE_RTTI

protected:
    /// `description` says which condition; it may be empty.
    TuExceptionCondition(
        const CString& file, unsigned int line, const CString& description, const TuRTTI& record);
    using TuException::TuException; // those with a cause
};

/// An argument or a state that violates a function's contract.
class GROUNDWORK_API TuExceptionPreconditionViolation : public TuExceptionCondition
{
    TU_DECLARE_RTTI

public:
    TuExceptionPreconditionViolation(
        const CString& file, unsigned int line, const CString& description = CString());
    TU_EXCEPTION_WITH_CAUSE(TuExceptionPreconditionViolation);

private:
    static IObject* CloneByFactory(const IObject& object);
};

/// A function that did not keep what it promises.
class GROUNDWORK_API TuExceptionPostconditionViolation : public TuExceptionCondition
{
    TU_DECLARE_RTTI

public:
    TuExceptionPostconditionViolation(
        const CString& file, unsigned int line, const CString& description = CString());
    TU_EXCEPTION_WITH_CAUSE(TuExceptionPostconditionViolation);

private:
    static IObject* CloneByFactory(const IObject& object);
};

/// A stream that ended early, holds malformed data, or failed to take or give bytes. `text`, where
/// there is one, says what was wrong.
class GROUNDWORK_API TuExceptionStream : public TuException
{
    TU_DECLARE_RTTI

public:
    TuExceptionStream(const CString& file, unsigned int line, const CString& text = CString());
    TU_EXCEPTION_WITH_CAUSE(TuExceptionStream);

private:
    static IObject* CloneByFactory(const IObject& object);
};

/// A record whose version or format marker this reader does not know.
class GROUNDWORK_API TuExceptionWrongFileVersion : public TuException
{
    TU_DECLARE_RTTI

public:
    TuExceptionWrongFileVersion(
        const CString& file, unsigned int line, const CString& text = CString());
    TU_EXCEPTION_WITH_CAUSE(TuExceptionWrongFileVersion);

private:
    static IObject* CloneByFactory(const IObject& object);
};

/// An extension interface asked for by a name that the object does not implement.
class GROUNDWORK_API TuExceptionUnknownExtension : public TuException
{
    TU_DECLARE_RTTI

public:
    TuExceptionUnknownExtension(const CString& file, unsigned int line);
    TU_EXCEPTION_WITH_CAUSE(TuExceptionUnknownExtension);

private:
    static IObject* CloneByFactory(const IObject& object);
};

#undef TU_EXCEPTION_WITH_CAUSE
