#include "groundwork/tucriticalsection.h"
#include "groundwork/tuevent.h"
#include "groundwork/tuthread.h"
#include "rawfutex.h"

#include <benchmark/benchmark.h>
#if defined(TA_PEER_QT)
#include <QMutex>
#endif

#include <atomic>
#include <cstdint>
#include <mutex>
#include <thread>

namespace {

// Locks that nobody else wants, entered once and entered again inside.

template <class Enter, class Leave>
void enterAndLeave(benchmark::State& state, Enter enter, Leave leave)
{
    long long counter = 0;
    for (auto _ : state) {
        enter();
        benchmark::DoNotOptimize(++counter);
        leave();
    }
}

void BM_TuCriticalSection_EnterAndLeave(benchmark::State& state)
{
    TuCriticalSection lock;
    enterAndLeave(
        state, [&] { lock.Enter(); }, [&] { lock.Leave(); });
}
BENCHMARK(BM_TuCriticalSection_EnterAndLeave);

void BM_TuCriticalSection_EnterAgain(benchmark::State& state)
{
    TuCriticalSection lock;
    const TuCriticalSectionAuto outer(lock);
    enterAndLeave(
        state, [&] { lock.Enter(); }, [&] { lock.Leave(); });
}
BENCHMARK(BM_TuCriticalSection_EnterAgain);

void BM_StdRecursiveMutex_EnterAndLeave(benchmark::State& state)
{
    std::recursive_mutex lock;
    enterAndLeave(
        state, [&] { lock.lock(); }, [&] { lock.unlock(); });
}
BENCHMARK(BM_StdRecursiveMutex_EnterAndLeave);

void BM_StdRecursiveMutex_EnterAgain(benchmark::State& state)
{
    std::recursive_mutex lock;
    const std::lock_guard outer(lock);
    enterAndLeave(
        state, [&] { lock.lock(); }, [&] { lock.unlock(); });
}
BENCHMARK(BM_StdRecursiveMutex_EnterAgain);

#if defined(TA_PEER_QT)
void BM_QRecursiveMutex_EnterAndLeave(benchmark::State& state)
{
    QRecursiveMutex lock;
    enterAndLeave(
        state, [&] { lock.lock(); }, [&] { lock.unlock(); });
}
BENCHMARK(BM_QRecursiveMutex_EnterAndLeave);

void BM_QRecursiveMutex_EnterAgain(benchmark::State& state)
{
    QRecursiveMutex lock;
    const QMutexLocker outer(&lock);
    enterAndLeave(
        state, [&] { lock.lock(); }, [&] { lock.unlock(); });
}
BENCHMARK(BM_QRecursiveMutex_EnterAgain);
#endif

// Two threads that wake each other in turn: each measured step is there and back.

class Event
{
public:
    void Set() { m_event.Set(); }
    void Wait() { m_event.Wait(TuEvent::kInfinite); }

private:
    TuEvent m_event{ false };
};

template <class Flag> void pingPong(benchmark::State& state)
{
    Flag there;
    Flag back;
    std::atomic<bool> done = false;
    std::thread partner([&] {
        for (;;) {
            there.Wait();
            if (done) {
                return;
            }
            back.Set();
        }
    });
    for (auto _ : state) {
        there.Set();
        back.Wait();
    }
    done = true;
    there.Set();
    partner.join();
}

void BM_TuEvent_PingPong(benchmark::State& state) { pingPong<Event>(state); }
BENCHMARK(BM_TuEvent_PingPong)->UseRealTime();

void BM_RawFutex_PingPong(benchmark::State& state) { pingPong<RawFutex>(state); }
BENCHMARK(BM_RawFutex_PingPong)->UseRealTime();

void BM_TuEvent_SetAndAsk(benchmark::State& state)
{
    TuEvent event(false);
    for (auto _ : state) {
        event.Set();
        benchmark::DoNotOptimize(event.IsSet());
    }
}
BENCHMARK(BM_TuEvent_SetAndAsk);

// A thread that does nothing.

struct Idler
{
    TuCheckReturn<bool> Work() { return true; }
};

void BM_TuThread_StartAndJoin(benchmark::State& state)
{
    Idler idler;
    for (auto _ : state) {
        TuThread<Idler> thread(idler, &Idler::Work, u"idler", eTP_Normal);
        benchmark::DoNotOptimize(thread.Start());
        thread.WaitUntilTerminate(TuEvent::kInfinite).MarkRead();
    }
}
BENCHMARK(BM_TuThread_StartAndJoin)->UseRealTime();

void BM_StdThread_StartAndJoin(benchmark::State& state)
{
    for (auto _ : state) {
        std::thread thread([] {});
        thread.join();
    }
}
BENCHMARK(BM_StdThread_StartAndJoin)->UseRealTime();

} // namespace
