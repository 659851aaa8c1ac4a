#include "tabase/tataskalgorithm.h"

#include "tabase/taalgorithm.h"

TU_DEFINE_RTTI(TaTaskAlgorithm, TuTask, nullptr, nullptr);

TuCheckReturn<bool> TaTaskAlgorithm::run() { return m_algorithm->Compute(TaAlgorithm::eCF_Top); }
