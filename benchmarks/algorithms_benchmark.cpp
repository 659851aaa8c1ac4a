#include "tabase/taalgorithm.h"

#include <benchmark/benchmark.h>

namespace {

/// What is left where there is nothing to compute.
class EmptyAlgorithm final : public TaAlgorithm
{
public:
    using TaAlgorithm::setInputChanged;

protected:
    bool checkPreConditions() const override { return true; }
    void compute() override { }
};

void BM_TaAlgorithm_Compute(benchmark::State& state)
{
    EmptyAlgorithm algorithm;
    for (auto _ : state) {
        algorithm.setInputChanged();
        benchmark::DoNotOptimize(algorithm.Compute(TaAlgorithm::eCF_None));
    }
}
BENCHMARK(BM_TaAlgorithm_Compute);

/// The same without a framework: a call to a class that is not known.
class Computation
{
public:
    virtual ~Computation() = default;
    virtual bool Compute() = 0;
};

class EmptyComputation final : public Computation
{
public:
    bool Compute() override { return true; }
};

void BM_VirtualCall_Compute(benchmark::State& state)
{
    EmptyComputation empty;
    Computation* computation = &empty;
    for (auto _ : state) {
        benchmark::DoNotOptimize(computation);
        benchmark::DoNotOptimize(computation->Compute());
    }
}
BENCHMARK(BM_VirtualCall_Compute);

} // namespace
