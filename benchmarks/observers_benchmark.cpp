#include "tabase/taobserver.h"

#include <benchmark/benchmark.h>
#if defined(TA_PEER_BOOST)
#include <boost/signals2.hpp>
#endif

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

constexpr auto kType = TaObservableMessage::eMT_1;

/// What is done with a message: little, and out of the compiler's sight.
[[gnu::noinline]] void count(std::uint64_t& calls, void* parameter)
{
    benchmark::DoNotOptimize(parameter);
    ++calls;
}

class CountingObserver : public TaObserver
{
public:
    std::uint64_t calls = 0;

protected:
    void onNotify(TaObservable&, const TaObservableMessage&, void* parameter) override
    {
        count(calls, parameter);
    }
};

void setItems(benchmark::State& state)
{
    state.SetItemsProcessed(state.range(0) * static_cast<std::int64_t>(state.iterations()));
}

#define NOTIFY_BENCHMARK(name) BENCHMARK(name)->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->Arg(10000)

void BM_TaObservable_Notify(benchmark::State& state)
{
    TaObservable observable;
    std::vector<CountingObserver> observers(static_cast<std::size_t>(state.range(0)));
    for (CountingObserver& observer : observers) {
        observer.Observe(observable, kType);
    }
    for (auto _ : state) {
        observable.NotifyObservers(kType, &state);
    }
    benchmark::DoNotOptimize(observers.front().calls);
    setItems(state);
}
NOTIFY_BENCHMARK(BM_TaObservable_Notify);

/// The life of many observers of one object: both ends of it search lists.
void BM_TaObserver_ObserveAndUnobserve(benchmark::State& state)
{
    TaObservable observable;
    std::vector<CountingObserver> observers(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        for (CountingObserver& observer : observers) {
            observer.Observe(observable, kType);
        }
        for (auto it = observers.rbegin(); it != observers.rend(); ++it) {
            it->Unobserve(observable, kType);
        }
    }
    setItems(state);
}
NOTIFY_BENCHMARK(BM_TaObserver_ObserveAndUnobserve);

#if defined(TA_PEER_BOOST)
using Signature = void(const TaObservableMessage&, void*);
using Signal = boost::signals2::signal<Signature>;
// Without its locks, which ours does not have, either.
using UnlockedSignal = boost::signals2::signal_type<Signature,
    boost::signals2::keywords::mutex_type<boost::signals2::dummy_mutex>>::type;

template <class Peer> void notifyPeer(benchmark::State& state)
{
    Peer signal;
    std::vector<std::uint64_t> calls(static_cast<std::size_t>(state.range(0)));
    for (std::uint64_t& called : calls) {
        signal.connect(
            [&called](const TaObservableMessage&, void* parameter) { count(called, parameter); });
    }
    for (auto _ : state) {
        signal(TaObservableMessage(kType, nullptr), &state);
    }
    benchmark::DoNotOptimize(calls.front());
    setItems(state);
}

void BM_BoostSignals2_Notify(benchmark::State& state) { notifyPeer<Signal>(state); }
NOTIFY_BENCHMARK(BM_BoostSignals2_Notify);

void BM_BoostSignals2Unlocked_Notify(benchmark::State& state) { notifyPeer<UnlockedSignal>(state); }
NOTIFY_BENCHMARK(BM_BoostSignals2Unlocked_Notify);

void BM_BoostSignals2_ObserveAndUnobserve(benchmark::State& state)
{
    Signal signal;
    std::uint64_t calls = 0;
    std::vector<boost::signals2::connection> connections(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        for (boost::signals2::connection& connection : connections) {
            connection = signal.connect(
                [&calls](const TaObservableMessage&, void* parameter) { count(calls, parameter); });
        }
        for (auto it = connections.rbegin(); it != connections.rend(); ++it) {
            it->disconnect();
        }
    }
    setItems(state);
}
NOTIFY_BENCHMARK(BM_BoostSignals2_ObserveAndUnobserve);
#endif

} // namespace
