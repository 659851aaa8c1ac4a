#pragma once

// The system's declarations for the sources of this folder: without the macros `min` and `max`, and
// without the parts that nobody here uses.

#if !defined(NOMINMAX) // MinGW-w64's C++ library defines it
#define NOMINMAX
#endif
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
