#include "groundwork/tuassert.h"

#include "platform/platformterminal.h"

#include <atomic>
#include <cstdlib>
#include <string>

namespace {

void reportAndAbort(const char* condition, const char* advice, const char* file, unsigned int line)
{
    platform::WriteStandard(platform::eSS_Error,
        std::string(file) + '(' + std::to_string(line) + "): assertion failed: " + condition + ". "
            + advice + '\n');
    std::abort();
}

std::atomic<TuAssertHandler> s_handler{ reportAndAbort };

} // namespace

TuAssertHandler TuSetAssertHandler(TuAssertHandler handler)
{
    return s_handler.exchange(handler != nullptr ? handler : reportAndAbort);
}

void TuReportAssert(const char* condition, const char* advice, const char* file, unsigned int line)
{
    s_handler.load()(condition, advice, file, line);
}
