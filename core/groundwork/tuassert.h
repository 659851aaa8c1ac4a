#pragma once

#include "groundwork/groundworkapi.h"

/// What a failed assertion reports: the condition, a sentence that says what the reader probably
/// did, and the place.
using TuAssertHandler
    = void (*)(const char* condition, const char* advice, const char* file, unsigned int line);

/// Replaces what happens on a failed assertion and returns the former handler. The default writes
/// the report to standard error and aborts; null restores it. Any thread may call it.
GROUNDWORK_API TuAssertHandler TuSetAssertHandler(TuAssertHandler handler);

/// Calls the current handler. If the handler returns, the program goes on.
GROUNDWORK_API void TuReportAssert(
    const char* condition, const char* advice, const char* file, unsigned int line);

/// Checks what cannot be false unless this program has a fault, in debug builds only. What a
/// caller may get wrong is checked with TuPreCondition; what the world may get wrong is reported
/// with a TuException.
#if defined(NDEBUG)
#define TU_ASSERT(condition, advice) static_cast<void>(0)
#else
#define TU_ASSERT(condition, advice)                                                               \
    ((condition) ? static_cast<void>(0) : TuReportAssert(#condition, advice, __FILE__, __LINE__))
#endif
