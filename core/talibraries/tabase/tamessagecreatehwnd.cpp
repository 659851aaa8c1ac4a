#include "tabase/tamessagecreatehwnd.h"

TU_DEFINE_RTTI(TaMessageCreateHWND, TaMessage, nullptr, nullptr);
