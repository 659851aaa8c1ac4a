#include "groundwork/tucheckedcast.h"

#include "groundwork/tuexceptions.h"

void TuThrowWrongClass(const IObject& object, const TuRTTI& expected)
{
    CString text = u"the object is a ";
    text += expected.GetClassName();
    text += u", and no ";
    text += object.GetRTTI().GetClassName();
    throw TuExceptionPreconditionViolation(TU_HERE, text);
}
