#include "groundwork/tucheckedcast.h"

#include "groundwork/tuexceptions.h"

void TuThrowWrongClass(const IObject& object, const TuRTTI& expected)
{
    CString text = u"the object is a ";
    text += object.GetClassName();
    text += u", and no ";
    text += expected.GetClassName();
    throw TuExceptionPreconditionViolation(TU_HERE, text);
}
