// A graph: built from connections one by one (the peers' packed forms from all at once), the memory
// that this takes, and the shortest paths between the two ends and three random pairs of nodes,
// found again and again, or once after a change of a weight. The counter "bytes" is per connection.

#include "graphpeers.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cmath>
#include <memory>
#include <string>

namespace {

std::size_t getBytesInUse() { return mallinfo2().uordblks + mallinfo2().hblkhd; }

template <class Graph, EGraphShape Shape> void BM_Build(benchmark::State& state)
{
    const SGraphInput& input = GetGraphInput(Shape, state.range(0));
    std::size_t bytes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const std::size_t before = getBytesInUse();
        state.ResumeTiming();
        auto graph = std::make_unique<Graph>(input);
        state.PauseTiming();
        bytes = getBytesInUse() - before;
        graph.reset();
        state.ResumeTiming();
    }
    state.counters["bytes"]
        = static_cast<double>(bytes) / static_cast<double>(input.connections.size());
}

/// The graph of the last size stays.
template <class Graph, EGraphShape Shape> Graph& getGraph(std::int64_t count)
{
    static std::int64_t s_count = 0;
    static std::unique_ptr<Graph> s_graph;
    if (s_count != count) {
        s_graph.reset();
        s_graph = std::make_unique<Graph>(GetGraphInput(Shape, count));
        s_count = count;
    }
    return *s_graph;
}

template <class Graph, EGraphShape Shape> void BM_Query(benchmark::State& state)
{
    const SGraphInput& input = GetGraphInput(Shape, state.range(0));
    Graph& graph = getGraph<Graph, Shape>(state.range(0));
    TaBaseGraph& ours = getGraph<TaBaseGraph, Shape>(state.range(0));
    for (const auto& [from, to] : input.queries) {
        const float length = graph.Query(from, to);
        if (!(std::abs(length - ours.Query(from, to)) <= 1e-4F * length)) {
            state.SkipWithError("the lengths of the paths differ");
        }
    }
    for (auto _ : state) {
        for (const auto& [from, to] : input.queries) {
            benchmark::DoNotOptimize(graph.Query(from, to));
        }
    }
}

template <EGraphShape Shape> void BM_QueryAfterChange(benchmark::State& state)
{
    const SGraphInput& input = GetGraphInput(Shape, state.range(0));
    TaBaseGraph& graph = getGraph<TaBaseGraph, Shape>(state.range(0));
    for (auto _ : state) {
        for (const auto& [from, to] : input.queries) {
            graph.Change();
            benchmark::DoNotOptimize(graph.Query(from, to));
        }
    }
}

/// One query of a graph that has just been built, for a path that leads far.
template <EGraphShape Shape> void BM_FirstQuery(benchmark::State& state)
{
    const SGraphInput& input = GetGraphInput(Shape, state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        auto graph = std::make_unique<TaBaseGraph>(input);
        state.ResumeTiming();
        benchmark::DoNotOptimize(graph->Query(0, input.nodeCount / 2));
        state.PauseTiming();
        graph.reset();
        state.ResumeTiming();
    }
}

#if defined(TA_PEER_BOOST)
/// The same query of one that was built before.
template <EGraphShape Shape> void BM_OneQuery(benchmark::State& state)
{
    const SGraphInput& input = GetGraphInput(Shape, state.range(0));
    BoostRows& graph = getGraph<BoostRows, Shape>(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(graph.Query(0, input.nodeCount / 2));
    }
}
#endif

constexpr std::int64_t kGridNodes = 1'000'000;
constexpr std::int64_t kRandomNodes = 200'000;
constexpr std::int64_t kMeshNodes = 500'000;

void enter(const std::string& name, void (*function)(benchmark::State&), std::int64_t nodes)
{
    benchmark::RegisterBenchmark(name.c_str(), function)
        ->Arg(nodes / 10)
        ->Arg(nodes)
        ->Unit(benchmark::kMillisecond);
}

template <class Graph> void enterGraph(const std::string& name)
{
    enter("BM_" + name + "_BuildGrid", &BM_Build<Graph, eGS_Grid>, kGridNodes);
    enter("BM_" + name + "_BuildRandom", &BM_Build<Graph, eGS_Random>, kRandomNodes);
    enter("BM_" + name + "_BuildMesh", &BM_Build<Graph, eGS_Mesh>, kMeshNodes);
    enter("BM_" + name + "_QueryGrid", &BM_Query<Graph, eGS_Grid>, kGridNodes);
    enter("BM_" + name + "_QueryRandom", &BM_Query<Graph, eGS_Random>, kRandomNodes);
    enter("BM_" + name + "_QueryMesh", &BM_Query<Graph, eGS_Mesh>, kMeshNodes);
}

const bool s_entered = [] {
    enterGraph<TaBaseGraph>("TaGraph");
    enter("BM_TaGraph_ChangeQueryGrid", &BM_QueryAfterChange<eGS_Grid>, kGridNodes);
    enter("BM_TaGraph_ChangeQueryRandom", &BM_QueryAfterChange<eGS_Random>, kRandomNodes);
    enter("BM_TaGraph_ChangeQueryMesh", &BM_QueryAfterChange<eGS_Mesh>, kMeshNodes);
    enter("BM_TaGraph_FirstQueryGrid", &BM_FirstQuery<eGS_Grid>, kGridNodes);
    enter("BM_TaGraph_FirstQueryRandom", &BM_FirstQuery<eGS_Random>, kRandomNodes);
    enter("BM_TaGraph_FirstQueryMesh", &BM_FirstQuery<eGS_Mesh>, kMeshNodes);
#if defined(TA_PEER_BOOST)
    enterGraph<BoostLists>("BoostLists");
    enterGraph<BoostRows>("BoostRows");
    enter("BM_BoostRows_OneQueryGrid", &BM_OneQuery<eGS_Grid>, kGridNodes);
    enter("BM_BoostRows_OneQueryRandom", &BM_OneQuery<eGS_Random>, kRandomNodes);
    enter("BM_BoostRows_OneQueryMesh", &BM_OneQuery<eGS_Mesh>, kMeshNodes);
#endif
#if defined(TA_PEER_LEMON)
    enterGraph<LemonGraph<eLG_Lists>>("LemonLists");
    enterGraph<LemonGraph<eLG_Smart>>("LemonSmart");
    enterGraph<LemonGraph<eLG_Static>>("LemonStatic");
#endif
#if defined(TA_PEER_IGRAPH)
    enterGraph<IGraph>("IGraph");
#endif
    return true;
}();

} // namespace
