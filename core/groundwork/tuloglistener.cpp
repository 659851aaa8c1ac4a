#include "groundwork/tuloglistener.h"

#include "groundwork/tustreamwriteasciitrace.h"

namespace {

const char* nameOf(unsigned int level)
{
    switch (level) {
    case eLL_Trace:
        return "trace";
    case eLL_Debug:
        return "debug";
    case eLL_Information:
        return "information";
    case eLL_Warning:
        return "warning";
    case eLL_Error:
        return "error";
    case eLL_Fatal:
        return "fatal";
    default:
        return "log";
    }
}

} // namespace

void TuLogListenerStandardError::onLog(const SLogLine& line)
{
    TuStreamWriteASCIITraceDiagnostic stream;
    stream << line.source << "(" << line.line << "): " << nameOf(line.level) << ": " << line.text
           << "\n";
}
