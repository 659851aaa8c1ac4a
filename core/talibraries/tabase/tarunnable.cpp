#include "tabase/tarunnable.h"

TU_DEFINE_RTTI_ROOT(TaRunnable, nullptr, nullptr);

TaRunnable::~TaRunnable() = default;
