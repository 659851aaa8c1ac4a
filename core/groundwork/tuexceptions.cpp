#include "groundwork/tuexceptions.h"

// Each class is copied by its own clone function, so that a cause keeps its class.
#define TU_DEFINE_EXCEPTION(Class, Base)                                                           \
    TU_DEFINE_RTTI(Class, Base, nullptr, &Class::CloneByFactory);                                  \
    IObject* Class::CloneByFactory(const IObject& object)                                          \
    {                                                                                              \
        return new Class(dynamic_cast<const Class&>(object));                                      \
    }                                                                                              \
    Class::Class(const CString& file, unsigned int line, const TuException& cause)                 \
        : Base(file, line, cause, RTTI)                                                            \
    {                                                                                              \
    }                                                                                              \
    Class::Class(const CString& file, unsigned int line, const std::exception& cause)              \
        : Base(file, line, cause, RTTI)                                                            \
    {                                                                                              \
    }

TU_DEFINE_EXCEPTION(TuExceptionOutOfMemory, TuException)
TU_DEFINE_RTTI(TuExceptionCondition, TuException, nullptr, nullptr);
TU_DEFINE_EXCEPTION(TuExceptionPreconditionViolation, TuExceptionCondition)
TU_DEFINE_EXCEPTION(TuExceptionPostconditionViolation, TuExceptionCondition)
TU_DEFINE_EXCEPTION(TuExceptionStream, TuException)
TU_DEFINE_EXCEPTION(TuExceptionWrongFileVersion, TuException)
TU_DEFINE_EXCEPTION(TuExceptionUnknownExtension, TuException)

TuExceptionOutOfMemory::TuExceptionOutOfMemory(const CString& file, unsigned int line)
    : TuException(file, line, RTTI)
{
}

TuExceptionCondition::TuExceptionCondition(
    const CString& file, unsigned int line, const CString& description, const TuRTTI& record)
    : TuException(file, line, description, record)
{
}

TuExceptionPreconditionViolation::TuExceptionPreconditionViolation(
    const CString& file, unsigned int line, const CString& description)
    : TuExceptionCondition(file, line, description, RTTI)
{
}

TuExceptionPostconditionViolation::TuExceptionPostconditionViolation(
    const CString& file, unsigned int line, const CString& description)
    : TuExceptionCondition(file, line, description, RTTI)
{
}

TuExceptionStream::TuExceptionStream(const CString& file, unsigned int line, const CString& text)
    : TuException(file, line, text, RTTI)
{
}

TuExceptionWrongFileVersion::TuExceptionWrongFileVersion(
    const CString& file, unsigned int line, const CString& text)
    : TuException(file, line, text, RTTI)
{
}

TuExceptionUnknownExtension::TuExceptionUnknownExtension(const CString& file, unsigned int line)
    : TuException(file, line, RTTI)
{
}
