#include "tabase/taexceptioncontainer.h"

#include "groundwork/tucheckedcast.h"

TU_DEFINE_RTTI(TaExceptionContainer, TuException, nullptr, &TaExceptionContainer::CloneByFactory);

namespace {

const TuSmartPointer<const TuException> s_reserve(new TaExceptionContainer(
    CString(u"unknown"), 0, CString(u"no memory was left to keep the failure")));

} // namespace

const TuSmartPointer<const TuException>& TaExceptionContainer::GetReserve() { return s_reserve; }

TaExceptionContainer::TaExceptionContainer(const CString& file, unsigned int line)
    : TuException(file, line, RTTI)
{
}

TaExceptionContainer::TaExceptionContainer(
    const CString& file, unsigned int line, const CString& message)
    : TuException(file, line, message, RTTI)
{
}

IObject* TaExceptionContainer::CloneByFactory(const IObject& object)
{
    return new TaExceptionContainer(TuCheckedCast<TaExceptionContainer>(object));
}
