#pragma once

#include "groundwork/cstring.h"
#include "groundwork/tureferencecounted.h"

/// How much a line of the log matters.
enum ELogLevel
{
    eLL_Trace = 1,
    eLL_Debug = 2,
    eLL_Information = 3,
    eLL_Warning = 4,
    eLL_Error = 5,
    eLL_Fatal = 6,
};

/// A line of the log.
struct SLogLine
{
    unsigned int level; // see ELogLevel
    CString source; // the source file, as exceptions name it
    unsigned int line;
    CString text;
};

/// Hears what is logged; see TuLogListenerManager.
///
/// Threads: onLog is called on whatever thread logs, several at once, with no lock held. It may log
///          itself, but has to end that.
class GROUNDWORK_API TuLogListener : public TuReferenceCounted
{
public:
    virtual void onLog(const SLogLine& line) = 0;
};

/// Writes to standard error, a line each: source(line): level: text.
class GROUNDWORK_API TuLogListenerStandardError final : public TuLogListener
{
public:
    void onLog(const SLogLine& line) override;
};
