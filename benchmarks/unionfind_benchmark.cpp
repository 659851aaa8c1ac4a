#include "tabase/taunionfind.h"

#include <benchmark/benchmark.h>
#include <boost/pending/disjoint_sets.hpp>

#include <cmath>
#include <cstdint>
#include <memory>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

namespace {

using Pair = std::pair<std::uint32_t, std::uint32_t>;

struct SInput
{
    std::uint32_t count = 0;
    std::vector<Pair> pairs;
};

/// As many random pairs as elements.
SInput makeRandomPairs(std::uint32_t count)
{
    std::mt19937 random(1);
    SInput input{ count, {} };
    for (std::uint32_t i = 0; i < count; ++i) {
        const auto a = static_cast<std::uint32_t>((std::uint64_t{ random() } * count) >> 32);
        const auto b = static_cast<std::uint32_t>((std::uint64_t{ random() } * count) >> 32);
        input.pairs.emplace_back(a, b);
    }
    return input;
}

/// The pixels of a random black and white image of `count` pixels; each is paired with its left and
/// upper neighbour of the same colour, row by row.
SInput makeImage(std::uint32_t count)
{
    const auto width = static_cast<std::uint32_t>(std::sqrt(static_cast<double>(count)));
    std::mt19937 random(1);
    std::vector<bool> pixels;
    for (std::uint32_t i = 0; i < width * width; ++i) {
        pixels.push_back((random() & 1) != 0);
    }
    SInput input{ width * width, {} };
    for (std::uint32_t i = 0; i < width * width; ++i) {
        if (i % width != 0 && pixels[i] == pixels[i - 1]) {
            input.pairs.emplace_back(i, i - 1);
        }
        if (i >= width && pixels[i] == pixels[i - width]) {
            input.pairs.emplace_back(i, i - width);
        }
    }
    return input;
}

using MakeInput = SInput (*)(std::uint32_t);

/// The input of the last size stays, so that it is made once and not once a measurement.
const SInput& getInput(MakeInput make, std::int64_t count)
{
    static MakeInput s_make = nullptr;
    static std::int64_t s_count = 0;
    static SInput s_input;
    if (s_make != make || s_count != count) {
        s_input = {};
        s_input = make(static_cast<std::uint32_t>(count));
        s_make = make;
        s_count = count;
    }
    return s_input;
}

/// The peer, with entries as small as ours and ranks in a byte.
template <class FindCompress> class BoostSets
{
public:
    explicit BoostSets(std::uint32_t count)
        : m_ranks(count)
        , m_parents(count)
        , m_sets(m_ranks.data(), m_parents.data())
    {
        std::iota(m_parents.begin(), m_parents.end(), 0u);
    }

    void AddPair(std::uint32_t a, std::uint32_t b) { m_sets.union_set(a, b); }
    std::uint32_t CreateSetNumbers()
    {
        constexpr std::uint32_t kNone = ~0u;
        std::vector<std::uint32_t> numbers(m_parents.size(), kNone);
        m_numbers.resize(m_parents.size());
        std::uint32_t count = 0;
        for (std::uint32_t element = 0; element < m_parents.size(); ++element) {
            std::uint32_t& number = numbers[m_sets.find_set(element)];
            if (number == kNone) {
                number = count++;
            }
            m_numbers[element] = number;
        }
        return count;
    }

private:
    std::vector<unsigned char> m_ranks;
    std::vector<std::uint32_t> m_parents;
    boost::disjoint_sets<unsigned char*, std::uint32_t*, FindCompress> m_sets;
    std::vector<std::uint32_t> m_numbers;
};

using BoostFullSets = BoostSets<boost::find_with_full_path_compression>;
using BoostHalvingSets = BoostSets<boost::find_with_path_halving>;

template <class Sets> void addPairs(Sets& sets, const SInput& input)
{
    for (const auto& [a, b] : input.pairs) {
        sets.AddPair(a, b);
    }
}

template <class Sets, MakeInput make> void BM_AddPairs(benchmark::State& state)
{
    const SInput& input = getInput(make, state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        auto sets = std::make_unique<Sets>(input.count);
        state.ResumeTiming();
        addPairs(*sets, input);
        state.PauseTiming();
        benchmark::DoNotOptimize(sets.get());
        sets.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(input.pairs.size())
        * static_cast<std::int64_t>(state.iterations()));
}

template <class Sets, MakeInput make> void BM_CreateSetNumbers(benchmark::State& state)
{
    const SInput& input = getInput(make, state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        auto sets = std::make_unique<Sets>(input.count);
        addPairs(*sets, input);
        state.ResumeTiming();
        benchmark::DoNotOptimize(sets->CreateSetNumbers());
        state.PauseTiming();
        sets.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(
        static_cast<std::int64_t>(input.count) * static_cast<std::int64_t>(state.iterations()));
}

#define UNION_FIND_BENCHMARK(name, run, Sets, make)                                                \
    BENCHMARK_TEMPLATE(run, Sets, make)                                                            \
        ->Name("BM_" #name)                                                                        \
        ->Unit(benchmark::kMillisecond)                                                            \
        ->Arg(3163 * 3163)                                                                         \
        ->Arg(1000 * 1000)                                                                         \
        ->Arg(10000 * 10000);                                                                      \
    BENCHMARK_TEMPLATE(run, Sets, make)->Name("BM_" #name "/quick")->Arg(100 * 100)

UNION_FIND_BENCHMARK(TaUnionFind_RandomPairs, BM_AddPairs, TaUnionFind, makeRandomPairs);
UNION_FIND_BENCHMARK(BoostFull_RandomPairs, BM_AddPairs, BoostFullSets, makeRandomPairs);
UNION_FIND_BENCHMARK(BoostHalving_RandomPairs, BM_AddPairs, BoostHalvingSets, makeRandomPairs);

UNION_FIND_BENCHMARK(TaUnionFind_NumberRandom, BM_CreateSetNumbers, TaUnionFind, makeRandomPairs);
UNION_FIND_BENCHMARK(BoostFull_NumberRandom, BM_CreateSetNumbers, BoostFullSets, makeRandomPairs);
UNION_FIND_BENCHMARK(
    BoostHalving_NumberRandom, BM_CreateSetNumbers, BoostHalvingSets, makeRandomPairs);

UNION_FIND_BENCHMARK(TaUnionFind_Image, BM_AddPairs, TaUnionFind, makeImage);
UNION_FIND_BENCHMARK(BoostFull_Image, BM_AddPairs, BoostFullSets, makeImage);
UNION_FIND_BENCHMARK(BoostHalving_Image, BM_AddPairs, BoostHalvingSets, makeImage);

UNION_FIND_BENCHMARK(TaUnionFind_NumberImage, BM_CreateSetNumbers, TaUnionFind, makeImage);
UNION_FIND_BENCHMARK(BoostFull_NumberImage, BM_CreateSetNumbers, BoostFullSets, makeImage);
UNION_FIND_BENCHMARK(BoostHalving_NumberImage, BM_CreateSetNumbers, BoostHalvingSets, makeImage);

} // namespace
