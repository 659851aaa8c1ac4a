#include "tabase/tamessagerunnable.h"

TU_DEFINE_RTTI(TaMessageRunnable, TaMessage, nullptr, nullptr);
