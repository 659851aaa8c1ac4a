#include "tabase/taparameterset.h"

#include <benchmark/benchmark.h>
#if defined(TA_PEER_QT)
#include <QHash>
#include <QString>
#include <QVariant>
#endif

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <variant>
#include <vector>

namespace {

/// Names as settings have them, in an order that is not that of the insertion.
template <class Text> std::vector<Text> makeNames(benchmark::State& state)
{
    std::vector<Text> names;
    for (int i = 0; i < state.range(0); ++i) {
        const std::string name = "smoothing.step" + std::to_string(i) + ".weight";
        const std::u16string wide(name.begin(), name.end());
        names.emplace_back(Text(reinterpret_cast<const typename Text::value_type*>(wide.data()),
            static_cast<decltype(Text().size())>(wide.size())));
    }
    std::ranges::shuffle(names, std::minstd_rand(1));
    return names;
}

/// One round through all names; the items are the names.
template <class Names, class Visit>
void visitAll(benchmark::State& state, const Names& names, Visit&& visit)
{
    double number = 0.5;
    for (auto _ : state) {
        for (const auto& name : names) {
            visit(name, number);
            number += 1.0;
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void sizes(benchmark::internal::Benchmark* benchmark) { benchmark->Arg(10)->Arg(100)->Arg(10'000); }

TaParameterSet makeSet(const std::vector<std::u16string>& names)
{
    TaParameterSet set;
    for (const std::u16string& name : names) {
        set.SetParameter(name, 0.0);
    }
    return set;
}

void BM_TaParameterSet_Set(benchmark::State& state)
{
    const auto names = makeNames<std::u16string>(state);
    TaParameterSet set = makeSet(names);
    visitAll(
        state, names, [&](const auto& name, double number) { set.SetParameter(name, number); });
}
BENCHMARK(BM_TaParameterSet_Set)->Apply(sizes);

void BM_TaParameterSet_Get(benchmark::State& state)
{
    const auto names = makeNames<std::u16string>(state);
    const TaParameterSet set = makeSet(names);
    TuVariant value;
    visitAll(state, names, [&](const auto& name, double) {
        set.GetParameter(name, value);
        benchmark::DoNotOptimize(value);
    });
}
BENCHMARK(BM_TaParameterSet_Get)->Apply(sizes);

using StdValue = std::variant<std::monostate, bool, int, double, std::u16string>;

void BM_StdMap_Set(benchmark::State& state)
{
    const auto names = makeNames<std::u16string>(state);
    std::map<std::u16string, StdValue> map;
    visitAll(state, names, [&](const auto& name, double number) { map[name] = number; });
}
BENCHMARK(BM_StdMap_Set)->Apply(sizes);

void BM_StdMap_Get(benchmark::State& state)
{
    const auto names = makeNames<std::u16string>(state);
    std::map<std::u16string, StdValue> map;
    for (const std::u16string& name : names) {
        map[name] = 0.0;
    }
    StdValue value;
    visitAll(state, names, [&](const auto& name, double) {
        if (const auto found = map.find(name); found != map.end()) {
            value = found->second;
        }
        benchmark::DoNotOptimize(value);
    });
}
BENCHMARK(BM_StdMap_Get)->Apply(sizes);

#if defined(TA_PEER_QT)
void BM_QHash_Set(benchmark::State& state)
{
    const auto names = makeNames<QString>(state);
    QHash<QString, QVariant> hash;
    visitAll(state, names, [&](const QString& name, double number) { hash[name] = number; });
}
BENCHMARK(BM_QHash_Set)->Apply(sizes);

void BM_QHash_Get(benchmark::State& state)
{
    const auto names = makeNames<QString>(state);
    QHash<QString, QVariant> hash;
    for (const QString& name : names) {
        hash[name] = 0.0;
    }
    QVariant value;
    visitAll(state, names, [&](const QString& name, double) {
        if (const auto found = hash.constFind(name); found != hash.constEnd()) {
            value = *found;
        }
        benchmark::DoNotOptimize(value);
    });
}
BENCHMARK(BM_QHash_Get)->Apply(sizes);
#endif

} // namespace
