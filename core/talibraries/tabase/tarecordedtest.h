#pragma once

#include "groundwork/cstring.h"
#include "tabase/tabaseapi.h"
#include "tabase/taunittest.h"

/// Replays the recording of an algorithm's run: makes the algorithm by its class name, reads the
/// recorded input and output, computes, and compares. docs/algorithms.md says how a recording
/// becomes a test case.
///
/// Failure: TuException where there is no such algorithm, or none that is made by name, and where
///          the recording cannot be read; of a run that failed, it holds no output.
class TABASE_API TaRecordedTest
{
public:
    TaRecordedTest() = delete;

    static TaUnitTest::EResult Run(const CString& className, const CString& path);
    /// The same for a program, with a line on standard error where the test does not pass; returns
    /// the exit code: 0, or that of EResult, or 1 where it could not be run.
    static int Main(int argumentCount, const char* const* arguments);
};
