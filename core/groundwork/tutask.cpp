#include "groundwork/tutask.h"

TU_DEFINE_RTTI_ROOT(TuTask, nullptr, nullptr);

TuCheckReturn<bool> TuTask::Execute()
{
    try {
        if (doNotRun()) {
            onCancel();
            return false;
        }
        onBeforeRun();
        const bool succeeded = run();
        onAfterRun();
        return succeeded;
    } catch (const TuException& exception) {
        onException(&exception);
    } catch (...) {
        onException(nullptr);
    }
    return false;
}
