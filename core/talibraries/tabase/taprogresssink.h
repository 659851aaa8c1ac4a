#pragma once

#include "groundwork/cstring.h"
#include "tabase/tabaseapi.h"

/// Is told how far a computation is: a bar on a command line, a dialog, an observer.
///
/// Threads: onProgress is called on the thread that computes, at each place where that asks for a
///          break, which may be every few microseconds: look at a clock before drawing anything.
/// Failure: what onProgress throws is a failure of the computation.
class TABASE_API TaProgressSink
{
public:
    virtual ~TaProgressSink();

    /// `fraction` goes from 0 to 1; `text` says what is being done, and may be empty.
    virtual void onProgress(double fraction, const CString& text) = 0;

protected:
    TaProgressSink() = default;
    TaProgressSink(const TaProgressSink&) = default;
    TaProgressSink& operator=(const TaProgressSink&) = default;
};
