#include "tabase/taalgorithmfamilies.h"

TU_DEFINE_RTTI(TaFtAlgorithm, TaAlgorithm, nullptr, nullptr);
TU_DEFINE_RTTI(TaMpAlgorithm, TaAlgorithm, nullptr, nullptr);
