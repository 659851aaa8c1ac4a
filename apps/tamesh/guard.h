#pragma once

#include "groundwork/tuexceptions.h"
#include "tamesh/console.h"
#include "tamesh/exitcode.h"
#include "tamesh/files.h"
#include "tamesh/meshfailure.h"
#include "tamesh/progress.h"

#include <exception>
#include <string>
#include <vector>

namespace tamesh {

/// Writes results. Throws MeshFailure where they do not arrive.
inline void WriteResult(IConsole& console, const std::string& text)
{
    if (!console.WriteOutput(text)) {
        throw MeshFailure(
            TU_HERE_IN("apps/tamesh/guard"), "standard output", 0, "cannot be written");
    }
}

/// Does the work on one file, or whatever `name` is, and reports what it throws.
template <class Work> EExitCode Guard(IConsole& console, const std::string& name, Work&& work)
{
    try {
        work();
        return eEC_Done;
    } catch (const std::exception& failure) {
        // Whatever the interrupted work failed with, this is why.
        if (console.GetInterrupt().IsSet()) {
            console.WriteError(name + ": interrupted\n");
            return eEC_Interrupted;
        }
        console.WriteError(ReportFailure(name, failure) + "\n");
        return eEC_Failed;
    }
}

/// Does the work on one file after the other, until an interrupt: one that fails does not keep the
/// others from being done.
template <class Work>
EExitCode GuardEach(IConsole& console, const std::vector<std::string>& names, Work&& work)
{
    EExitCode code = eEC_Done;
    for (const std::string& name : names) {
        const EExitCode fileCode = Guard(console, name, [&] { work(name); });
        code = fileCode != eEC_Done ? fileCode : code;
        if (code == eEC_Interrupted) {
            break;
        }
    }
    return code;
}

/// Does the work on a file, whose name the failures of its stream then begin with.
template <class Work> void NameFailures(const std::string& name, Work&& work)
{
    try {
        work();
    } catch (const TuExceptionStream& failure) {
        const std::string report = ReportFailure(name, failure); // "NAME: what is wrong"
        throw MeshFailure(TU_HERE_IN("apps/tamesh/guard"), name, 0, report.substr(name.size() + 2));
    }
}

/// Makes an output file of what `write` puts into it, and reports what it throws. An interrupt
/// leaves what was there before.
template <class Write>
EExitCode GuardOutput(IConsole& console, const std::string& name, Write&& write)
{
    return Guard(console, name, [&] {
        CheckInterrupt(console);
        OutputFile file(name);
        write(file);
        CheckInterrupt(console);
        file.Commit();
    });
}

} // namespace tamesh
