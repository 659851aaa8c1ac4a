// What the shared-library test loads.

#include "platform/platformapi.h"

extern "C" PLATFORM_API int TellSeven();
extern "C" PLATFORM_API int ordinal_3();

int TellSeven() { return 7; }

int ordinal_3() { return 33; }
