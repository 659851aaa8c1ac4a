#pragma once

#include "tacompression/tacompressionapi.h"

/// Marks what the library `tabase` exports.
#define TABASE_API TACOMPRESSION_API
