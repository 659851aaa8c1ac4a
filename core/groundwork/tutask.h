#pragma once

#include "groundwork/iobject.h"
#include "groundwork/tucheckreturn.h"
#include "groundwork/tuexception.h"

/// A piece of work that a queue runs, and that hears what becomes of it.
///
/// A queue calls NotifyAdded when it takes the task, and then either Execute or Cancel, once. A
/// derived class does its work in run(), and fills in the hooks that it needs.
///
/// Ownership: of whoever makes it; a queue says how long it needs it.
/// Threads:   one call at a time; Execute usually runs on another thread than NotifyAdded.
/// Failure:   Execute lets no exception out of run() or a hook, but hands it to onException, which
///            must not throw.
class GROUNDWORK_API TuTask : public virtual IObject
{
    TU_DECLARE_RTTI

public:
    TuTask() = default;
    TuTask(const TuTask&) = default;
    TuTask& operator=(const TuTask&) = default;
    ~TuTask() override = default;

    void NotifyAdded() { onAdd(); }
    /// Runs onBeforeRun, run and onAfterRun, or, where doNotRun() says so, only onCancel. True
    /// where run() was, and nothing threw.
    TuCheckReturn<bool> Execute();
    void Cancel() { onCancel(); }

protected:
    /// The task has been taken by a queue.
    virtual void onAdd() { }
    virtual void onBeforeRun() { }
    /// Not called after an exception.
    virtual void onAfterRun() { }
    /// It will not be run (any more).
    virtual void onCancel() { }
    /// What was thrown; null where it was no TuException.
    virtual void onException([[maybe_unused]] const TuException* exception) { }
    /// Asked right before the run.
    virtual bool doNotRun() const { return false; }
    /// The work; true means that it succeeded.
    virtual TuCheckReturn<bool> run() = 0;
};
