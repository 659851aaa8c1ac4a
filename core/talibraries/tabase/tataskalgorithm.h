#pragma once

#include "groundwork/tutask.h"
#include "tabase/tabaseapi.h"

class TaAlgorithm;

/// An algorithm as a task. It succeeds exactly when the computation does; a failure is kept in the
/// algorithm.
///
/// Ownership: refers to the algorithm, which outlives it; a copy refers to the same one.
class TABASE_API TaTaskAlgorithm : public TuTask
{
    TU_DECLARE_RTTI

public:
    explicit TaTaskAlgorithm(TaAlgorithm& algorithm)
        : m_algorithm(&algorithm)
    {
    }

protected:
    TuCheckReturn<bool> run() override;

private:
    TaAlgorithm* m_algorithm;
};
