#include "tabase/tamessageshutdown.h"

TU_DEFINE_RTTI(TaMessageShutDown, TaMessage, nullptr, nullptr);
