#pragma once

#include "platform/threadsanitizer.h"

#include <gtest/gtest.h>

/// Leaves out, by name, tests that suspend or kill threads where a sanitizer does not let them.

#if defined(TA_THREAD_SANITIZER)
#define SKIP_IF_SIGNALS_ARE_DELAYED()                                                              \
    GTEST_SKIP() << "the thread sanitizer delays the signals that stop a thread"
#else
#define SKIP_IF_SIGNALS_ARE_DELAYED() static_cast<void>(0)
#endif
