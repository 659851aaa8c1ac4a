#pragma once

#include "platform/platformapi.h"

#if !defined(__cplusplus)                                                                          \
    || (__cplusplus < 202002L && !(defined(_MSVC_LANG) && _MSVC_LANG >= 202002L))
#error "Groundwork needs a C++20 compiler: pass -std=c++20."
#endif

/// Marks what the library `groundwork` exports. The platform services are part of that library.
#define GROUNDWORK_API PLATFORM_API

/// Marks class templates: their instances are one type in all libraries of a process.
#define GROUNDWORK_TEMPLATE PLATFORM_TEMPLATE
