#include "groundwork/tuexceptions.h"

#include "groundwork/tucheckedcast.h"

#include <new>

#define TU_DEFINE_EXCEPTION_BASE(Class, Base)                                                      \
    Class::Class(const CString& file, unsigned int line, const TuRTTI& record)                     \
        : Base(file, line, record)                                                                 \
    {                                                                                              \
    }                                                                                              \
    Class::Class(                                                                                  \
        const CString& file, unsigned int line, const CString& text, const TuRTTI& record)         \
        : Base(file, line, text, record)                                                           \
    {                                                                                              \
    }                                                                                              \
    Class::Class(                                                                                  \
        const CString& file, unsigned int line, const TuException& cause, const TuRTTI& record)    \
        : Base(file, line, cause, record)                                                          \
    {                                                                                              \
    }                                                                                              \
    Class::Class(                                                                                  \
        const CString& file, unsigned int line, const std::exception& cause, const TuRTTI& record) \
        : Base(file, line, cause, record)                                                          \
    {                                                                                              \
    }

// Each class is copied by its own clone function, so that a cause keeps its class.
#define TU_DEFINE_EXCEPTION(Class, Base)                                                           \
    TU_DEFINE_RTTI(Class, Base, nullptr, &Class::CloneByFactory);                                  \
    IObject* Class::CloneByFactory(const IObject& object)                                          \
    {                                                                                              \
        return new Class(TuCheckedCast<Class>(object));                                            \
    }                                                                                              \
    Class::Class(const CString& file, unsigned int line, const CString& text)                      \
        : Class(file, line, text, RTTI)                                                            \
    {                                                                                              \
    }                                                                                              \
    Class::Class(const CString& file, unsigned int line, const TuException& cause)                 \
        : Class(file, line, cause, RTTI)                                                           \
    {                                                                                              \
    }                                                                                              \
    Class::Class(const CString& file, unsigned int line, const std::exception& cause)              \
        : Class(file, line, cause, RTTI)                                                           \
    {                                                                                              \
    }                                                                                              \
    TU_DEFINE_EXCEPTION_BASE(Class, Base)

TU_DEFINE_EXCEPTION(TuExceptionOutOfMemory, TuException)
TU_DEFINE_RTTI(TuExceptionCondition, TuException, nullptr, nullptr);
TU_DEFINE_EXCEPTION_BASE(TuExceptionCondition, TuException)
TU_DEFINE_EXCEPTION(TuExceptionPreconditionViolation, TuExceptionCondition)
TU_DEFINE_EXCEPTION(TuExceptionPostconditionViolation, TuExceptionCondition)
TU_DEFINE_EXCEPTION(TuExceptionStream, TuException)
TU_DEFINE_EXCEPTION(TuExceptionWrongFileVersion, TuException)
TU_DEFINE_EXCEPTION(TuExceptionUnknownExtension, TuException)

namespace {

/// What is thrown when there is no memory for an exception: made while the library is loaded, and
/// never destroyed, for memory may run out as late as at the end of the process.
const TuExceptionOutOfMemory& s_reserve = *new TuExceptionOutOfMemory(
    CString(u"unknown"), 0, CString(u"no memory was left to say where"));

/// Copies never throw.
template <class File> TuExceptionOutOfMemory makeOutOfMemory(File file, unsigned int line) noexcept
{
    try {
        return TuExceptionOutOfMemory(CString(file), line);
    } catch (const std::bad_alloc&) {
        return s_reserve;
    }
}

} // namespace

TuExceptionOutOfMemory::TuExceptionOutOfMemory(const char16_t* file, unsigned int line) noexcept
    : TuExceptionOutOfMemory(makeOutOfMemory(file, line))
{
}

TuExceptionOutOfMemory::TuExceptionOutOfMemory(TuSource file, unsigned int line) noexcept
    : TuExceptionOutOfMemory(makeOutOfMemory(file, line))
{
}
