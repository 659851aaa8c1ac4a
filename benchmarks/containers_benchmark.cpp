#include "groundwork/cstring.h"
#include "groundwork/tuarray.h"
#include "groundwork/tulist.h"
#include "groundwork/tumap.h"

#include <benchmark/benchmark.h>
#if defined(TA_PEER_ABSL)
#include <absl/container/flat_hash_map.h>
#endif
#if defined(TA_PEER_BOOST)
#include <boost/container/vector.hpp>
#include <boost/intrusive/list.hpp>
#endif
#if defined(TA_PEER_QT)
#include <QList>
#endif

#include <algorithm>
#include <cstdint>
#include <list>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

void setItems(benchmark::State& state)
{
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Arrays: from empty, without a reserve.

template <class Array> void appendToArray(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    for (auto _ : state) {
        Array array;
        for (int i = 0; i < count; ++i) {
            array.push_back(i);
        }
        benchmark::DoNotOptimize(array.data());
        benchmark::ClobberMemory();
    }
    setItems(state);
}

void arraySizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->RangeMultiplier(10)->Range(1'000'000, 100'000'000)->Unit(benchmark::kMillisecond);
}

void BM_TuArray_Append(benchmark::State& state) { appendToArray<TuArray<int>>(state); }
void BM_StdVector_Append(benchmark::State& state) { appendToArray<std::vector<int>>(state); }
BENCHMARK(BM_TuArray_Append)->Apply(arraySizes);
BENCHMARK(BM_StdVector_Append)->Apply(arraySizes);
#if defined(TA_PEER_BOOST)
void BM_BoostVector_Append(benchmark::State& state)
{
    appendToArray<boost::container::vector<int>>(state);
}
BENCHMARK(BM_BoostVector_Append)->Apply(arraySizes);
#endif
#if defined(TA_PEER_QT)
void BM_QList_Append(benchmark::State& state) { appendToArray<QList<int>>(state); }
BENCHMARK(BM_QList_Append)->Apply(arraySizes);
#endif

// Lists of numbers, a node per element.

#if defined(TA_PEER_BOOST)
struct IntrusiveNode : boost::intrusive::list_base_hook<>
{
    explicit IntrusiveNode(int number)
        : value(number)
    {
    }
    int value;
};

class BoostIntrusiveList
{
public:
    BoostIntrusiveList() = default;
    ~BoostIntrusiveList() { m_nodes.clear_and_dispose(std::default_delete<IntrusiveNode>()); }
    void push_back(int value) { m_nodes.push_back(*new IntrusiveNode(value)); }
    long long Sum() const
    {
        long long sum = 0;
        for (const IntrusiveNode& node : m_nodes) {
            sum += node.value;
        }
        return sum;
    }

private:
    boost::intrusive::list<IntrusiveNode> m_nodes;
};

long long sumOf(const BoostIntrusiveList& list) { return list.Sum(); }
#endif

template <class List> long long sumOf(const List& list)
{
    long long sum = 0;
    for (const int value : list) {
        sum += value;
    }
    return sum;
}

template <class List> void fill(std::unique_ptr<List>& list, long long count)
{
    list = std::make_unique<List>();
    for (long long i = 0; i < count; ++i) {
        list->push_back(static_cast<int>(i));
    }
}

template <class List> void appendToList(benchmark::State& state)
{
    for (auto _ : state) {
        std::unique_ptr<List> list;
        fill(list, state.range(0));
        state.PauseTiming();
        list.reset();
        state.ResumeTiming();
    }
    setItems(state);
}

template <class List> void walkList(benchmark::State& state)
{
    std::unique_ptr<List> list;
    fill(list, state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(sumOf(*list));
    }
    setItems(state);
}

template <class List> void destroyList(benchmark::State& state)
{
    for (auto _ : state) {
        state.PauseTiming();
        std::unique_ptr<List> list;
        fill(list, state.range(0));
        state.ResumeTiming();
        list.reset();
    }
    setItems(state);
}

void listSizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->RangeMultiplier(10)->Range(100'000, 10'000'000)->Unit(benchmark::kMillisecond);
}

void BM_TuList_Append(benchmark::State& state) { appendToList<TuList<int>>(state); }
void BM_TuList_Walk(benchmark::State& state) { walkList<TuList<int>>(state); }
void BM_TuList_Destroy(benchmark::State& state) { destroyList<TuList<int>>(state); }
void BM_StdList_Append(benchmark::State& state) { appendToList<std::list<int>>(state); }
void BM_StdList_Walk(benchmark::State& state) { walkList<std::list<int>>(state); }
void BM_StdList_Destroy(benchmark::State& state) { destroyList<std::list<int>>(state); }
BENCHMARK(BM_TuList_Append)->Apply(listSizes);
BENCHMARK(BM_TuList_Walk)->Apply(listSizes);
BENCHMARK(BM_TuList_Destroy)->Apply(listSizes);
BENCHMARK(BM_StdList_Append)->Apply(listSizes);
BENCHMARK(BM_StdList_Walk)->Apply(listSizes);
BENCHMARK(BM_StdList_Destroy)->Apply(listSizes);
#if defined(TA_PEER_BOOST)
void BM_BoostIntrusiveList_Append(benchmark::State& state)
{
    appendToList<BoostIntrusiveList>(state);
}
void BM_BoostIntrusiveList_Walk(benchmark::State& state) { walkList<BoostIntrusiveList>(state); }
void BM_BoostIntrusiveList_Destroy(benchmark::State& state)
{
    destroyList<BoostIntrusiveList>(state);
}
BENCHMARK(BM_BoostIntrusiveList_Append)->Apply(listSizes);
BENCHMARK(BM_BoostIntrusiveList_Walk)->Apply(listSizes);
BENCHMARK(BM_BoostIntrusiveList_Destroy)->Apply(listSizes);
#endif

// Maps: as many buckets as keys, found in another order than inserted.

template <class Key> struct Keys
{
    std::vector<Key> inOrder;
    std::vector<Key> shuffled; // copies: a text found is not the object that was inserted
};

template <class Text> Text textOf(std::uint32_t number)
{
    // From 5 to 26 units: some lie in the text object, most beside it.
    const std::string digits = std::to_string(number);
    std::u16string text(number % 3 == 0 ? u"n/" : u"Region/parameter");
    text.append(digits.begin(), digits.end());
    return Text(text);
}

template <class Key> Keys<Key> makeKeys(long long count)
{
    std::mt19937 random(20261121);
    Keys<Key> keys;
    for (long long i = 0; i < count; ++i) {
        const auto number = static_cast<std::uint32_t>(random());
        if constexpr (std::is_integral_v<Key>) {
            keys.inOrder.push_back(number);
        } else {
            keys.inOrder.push_back(textOf<Key>(number));
        }
    }
    keys.shuffled = keys.inOrder;
    std::shuffle(keys.shuffled.begin(), keys.shuffled.end(), random);
    return keys;
}

/// The map under test, made for `count` keys.
template <class Key> struct Ours
{
    explicit Ours(long long count)
        : map(kBlockSize, static_cast<unsigned int>(count))
    {
    }
    unsigned int Find(const Key& key) const { return *map.Lookup(key); }

    static constexpr unsigned int kBlockSize = 10; // the usual one
    TuMap<Key, unsigned int> map;
};

template <class Map> struct Standard
{
    explicit Standard(long long count) { map.reserve(static_cast<std::size_t>(count)); }
    unsigned int Find(const typename Map::key_type& key) const { return map.find(key)->second; }

    Map map;
};

template <class Holder, class Key>
void fillMap(std::unique_ptr<Holder>& holder, const std::vector<Key>& keys)
{
    holder = std::make_unique<Holder>(static_cast<long long>(keys.size()));
    unsigned int number = 0;
    for (const Key& key : keys) {
        holder->map[key] = number++;
    }
}

template <class Holder, class Key> void findInMap(benchmark::State& state)
{
    const Keys<Key> keys = makeKeys<Key>(state.range(0));
    std::unique_ptr<Holder> holder;
    fillMap(holder, keys.inOrder);
    for (auto _ : state) {
        unsigned int sum = 0;
        for (const Key& key : keys.shuffled) {
            sum += holder->Find(key);
        }
        benchmark::DoNotOptimize(sum);
    }
    setItems(state);
}

template <class Holder, class Key> void insertIntoMap(benchmark::State& state)
{
    const Keys<Key> keys = makeKeys<Key>(state.range(0));
    for (auto _ : state) {
        std::unique_ptr<Holder> holder;
        fillMap(holder, keys.inOrder);
        state.PauseTiming();
        holder.reset();
        state.ResumeTiming();
    }
    setItems(state);
}

void mapSizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->RangeMultiplier(10)->Range(1'000, 10'000'000)->Unit(benchmark::kMicrosecond);
}

using Number = std::uint32_t;
using StdMap = Standard<std::unordered_map<Number, unsigned int>>;
using StdTextMap = Standard<std::unordered_map<std::u16string, unsigned int>>;

void BM_TuMap_Find(benchmark::State& state) { findInMap<Ours<Number>, Number>(state); }
void BM_StdUnorderedMap_Find(benchmark::State& state) { findInMap<StdMap, Number>(state); }
void BM_TuMap_Insert(benchmark::State& state) { insertIntoMap<Ours<Number>, Number>(state); }
void BM_StdUnorderedMap_Insert(benchmark::State& state) { insertIntoMap<StdMap, Number>(state); }
void BM_TuMap_FindText(benchmark::State& state) { findInMap<Ours<CString>, CString>(state); }
void BM_StdUnorderedMap_FindText(benchmark::State& state)
{
    findInMap<StdTextMap, std::u16string>(state);
}
void BM_TuMap_InsertText(benchmark::State& state) { insertIntoMap<Ours<CString>, CString>(state); }
void BM_StdUnorderedMap_InsertText(benchmark::State& state)
{
    insertIntoMap<StdTextMap, std::u16string>(state);
}
BENCHMARK(BM_TuMap_Find)->Apply(mapSizes);
BENCHMARK(BM_StdUnorderedMap_Find)->Apply(mapSizes);
BENCHMARK(BM_TuMap_Insert)->Apply(mapSizes);
BENCHMARK(BM_StdUnorderedMap_Insert)->Apply(mapSizes);
BENCHMARK(BM_TuMap_FindText)->Apply(mapSizes);
BENCHMARK(BM_StdUnorderedMap_FindText)->Apply(mapSizes);
BENCHMARK(BM_TuMap_InsertText)->Apply(mapSizes);
BENCHMARK(BM_StdUnorderedMap_InsertText)->Apply(mapSizes);
#if defined(TA_PEER_ABSL)
using AbslMap = Standard<absl::flat_hash_map<Number, unsigned int>>;
using AbslTextMap = Standard<absl::flat_hash_map<std::u16string, unsigned int>>;

void BM_AbslFlatHashMap_Find(benchmark::State& state) { findInMap<AbslMap, Number>(state); }
void BM_AbslFlatHashMap_Insert(benchmark::State& state) { insertIntoMap<AbslMap, Number>(state); }
void BM_AbslFlatHashMap_FindText(benchmark::State& state)
{
    findInMap<AbslTextMap, std::u16string>(state);
}
void BM_AbslFlatHashMap_InsertText(benchmark::State& state)
{
    insertIntoMap<AbslTextMap, std::u16string>(state);
}
BENCHMARK(BM_AbslFlatHashMap_Find)->Apply(mapSizes);
BENCHMARK(BM_AbslFlatHashMap_Insert)->Apply(mapSizes);
BENCHMARK(BM_AbslFlatHashMap_FindText)->Apply(mapSizes);
BENCHMARK(BM_AbslFlatHashMap_InsertText)->Apply(mapSizes);
#endif

} // namespace
