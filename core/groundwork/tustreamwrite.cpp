#include "groundwork/tustreamwrite.h"

TU_DEFINE_RTTI_ROOT(TuStreamWrite, nullptr, nullptr);
