#include "groundwork/tuevent.h"
#include "rawfutex.h"
#include "tabase/tamessagedispatcher.h"

#include <benchmark/benchmark.h>
#if defined(TA_PEER_BOOST)
#include <boost/asio.hpp>
#endif
#if defined(TA_PEER_GLIB)
#include <glib.h>
#endif
#if defined(TA_PEER_QT)
#include <QCoreApplication>
#include <QObject>
#include <QThread>
#endif
#include <sched.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace {

/// What travels, with all peers: an object with one number, made for each message.
class Tick : public TaMessage
{
    TU_DECLARE_RTTI

public:
    explicit Tick(std::uint64_t number)
        : m_number(number)
    {
    }
    std::uint64_t GetNumber() const { return m_number; }

private:
    std::uint64_t m_number;
};
TU_DEFINE_RTTI(Tick, TaMessage, nullptr, nullptr);

/// Keeps all threads of the process on one core, those, too, that are started meanwhile.
class OnOneCore
{
public:
    OnOneCore()
    {
        cpu_set_t one;
        CPU_ZERO(&one);
        sched_getaffinity(0, sizeof(m_all), &m_all);
        CPU_SET(0, &one);
        apply(one);
    }
    ~OnOneCore() { apply(m_all); }
    OnOneCore(const OnOneCore&) = delete;
    OnOneCore& operator=(const OnOneCore&) = delete;

private:
    static void apply(const cpu_set_t& cores)
    {
        for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
            const int id = std::stoi(thread.path().filename());
            sched_setaffinity(id, sizeof(cores), &cores);
        }
    }

    cpu_set_t m_all{};
};

/// Counts what has been handled, and wakes who waits for a certain number.
class Counter
{
public:
    void Add(std::uint64_t count)
    {
        if (m_count.fetch_add(count, std::memory_order_acq_rel) + count == m_expected) {
            m_reached.Set();
        }
    }
    /// Before that many are on their way.
    void Expect(std::uint64_t more) { m_expected += more; }
    void Wait() { m_reached.Wait(); }

private:
    std::atomic<std::uint64_t> m_count{ 0 };
    std::atomic<std::uint64_t> m_expected{ 0 };
    RawFutex m_reached;
};

// The post offices. Each has a thread that only passes on, and one that handles; Post returns at
// once, and Send when the message has been handled.

class Receiver : public TaMessageHandlerThreaded
{
public:
    Receiver()
        : TaMessageHandlerThreaded(u"receiver", eTP_Normal)
    {
    }
    ~Receiver() override { StopAndWait(TuEvent::kInfinite); }

    Counter handled;

protected:
    void onSubscribeMessages() override { SubscribeMessage(Tick(0)); }
    long long handleMessage(const TaMessage& message) override
    {
        handled.Add(static_cast<const Tick&>(message).GetNumber());
        return 1;
    }
};

class OurOffice
{
public:
    OurOffice() { m_receiver.StartAndWait().MarkRead(); }
    void Post() { TaMessageDispatcher::PostMessage(TuMake<Tick>(1u)); }
    void Send() { TaMessageDispatcher::SendMessage(Tick(1)); }
    Counter& GetHandled() { return m_receiver.handled; }

private:
    Receiver m_receiver;
};

#if defined(TA_PEER_BOOST)
/// A thread that runs a context of Boost.Asio.
class AsioThread
{
public:
    ~AsioThread()
    {
        m_work.reset();
        m_thread.join();
    }
    boost::asio::io_context context{ 1 };

private:
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> m_work{
        context.get_executor()
    };
    std::thread m_thread{ [this] { context.run(); } };
};

class AsioOffice
{
public:
    void Post()
    {
        boost::asio::post(
            m_first.context, [this, message = std::make_shared<const std::uint64_t>(1)] {
                boost::asio::post(m_second.context, [this, message] { m_handled.Add(*message); });
            });
    }
    void Send()
    {
        boost::asio::post(m_first.context, [this] {
            boost::asio::post(m_second.context, [this] {
                m_handled.Add(1);
                m_done.Set();
            });
        });
        m_done.Wait();
    }
    Counter& GetHandled() { return m_handled; }

private:
    Counter m_handled;
    RawFutex m_done;
    AsioThread m_second;
    AsioThread m_first;
};
#endif

#if defined(TA_PEER_GLIB)
/// A thread that runs a main context of GLib.
class GlibThread
{
public:
    ~GlibThread()
    {
        g_main_loop_quit(m_loop);
        m_thread.join();
        g_main_loop_unref(m_loop);
        g_main_context_unref(m_context);
    }
    /// Calls `work()` on the thread.
    template <class Work> void Post(Work work)
    {
        GSource* const source = g_idle_source_new();
        g_source_set_priority(source, G_PRIORITY_DEFAULT);
        g_source_set_callback(
            source,
            [](gpointer data) -> gboolean {
                (*static_cast<Work*>(data))();
                return G_SOURCE_REMOVE;
            },
            new Work(std::move(work)), [](gpointer data) { delete static_cast<Work*>(data); });
        g_source_attach(source, m_context);
        g_source_unref(source);
    }

private:
    GMainContext* m_context = g_main_context_new();
    GMainLoop* m_loop = g_main_loop_new(m_context, FALSE);
    std::thread m_thread{ [this] { g_main_loop_run(m_loop); } };
};

class GlibOffice
{
public:
    void Post()
    {
        m_first.Post([this, message = std::make_shared<const std::uint64_t>(1)] {
            m_second.Post([this, message] { m_handled.Add(*message); });
        });
    }
    Counter& GetHandled() { return m_handled; }

private:
    Counter m_handled;
    GlibThread m_second;
    GlibThread m_first;
};
#endif

#if defined(TA_PEER_QT)
/// A thread that serves an object of Qt.
class QtThread
{
public:
    QtThread()
    {
        object.moveToThread(&m_thread);
        m_thread.start();
    }
    ~QtThread()
    {
        m_thread.quit();
        m_thread.wait();
    }
    QObject object;

private:
    QThread m_thread;
};

class QtOffice
{
public:
    QtOffice()
    {
        static int s_count = 1;
        static char s_name[] = "messages_benchmark";
        static char* s_names[] = { s_name, nullptr };
        static const QCoreApplication s_application(s_count, s_names); // loops ask for it
    }
    void Post()
    {
        QMetaObject::invokeMethod(
            &m_first.object,
            [this, message = std::make_shared<const std::uint64_t>(1)] {
                QMetaObject::invokeMethod(
                    &m_second.object, [this, message] { m_handled.Add(*message); },
                    Qt::QueuedConnection);
            },
            Qt::QueuedConnection);
    }
    void Send()
    {
        QMetaObject::invokeMethod(
            &m_first.object,
            [this] {
                QMetaObject::invokeMethod(
                    &m_second.object, [this] { m_handled.Add(1); }, Qt::BlockingQueuedConnection);
            },
            Qt::BlockingQueuedConnection);
    }
    Counter& GetHandled() { return m_handled; }

private:
    Counter m_handled;
    QtThread m_second;
    QtThread m_first;
};
#endif

// Posts: a step is all of them, from the first one to the last that is handled.

template <class Office> void postMany(benchmark::State& state)
{
    constexpr std::uint64_t kPosts = 200'000;
    const auto producers = static_cast<std::uint64_t>(state.range(0));
    Office office;
    for (auto _ : state) {
        office.GetHandled().Expect(kPosts);
        {
            std::vector<std::jthread> threads;
            for (std::uint64_t i = 0; i < producers; ++i) {
                threads.emplace_back([&] {
                    for (std::uint64_t posts = kPosts / producers; posts > 0; --posts) {
                        office.Post();
                    }
                });
            }
        }
        office.GetHandled().Wait();
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(kPosts) * state.iterations());
}

#define POST_BENCHMARK(name) BENCHMARK(name)->Arg(1)->Arg(4)->UseRealTime()

void BM_TaMessageDispatcher_Post(benchmark::State& state) { postMany<OurOffice>(state); }
POST_BENCHMARK(BM_TaMessageDispatcher_Post);

// Sends: a step is there and back.

template <class Office> void sendMany(benchmark::State& state)
{
    Office office;
    std::optional<OnOneCore> pinned;
    if (state.range(0) == 1) {
        pinned.emplace();
    }
    for (auto _ : state) {
        office.Send();
    }
}

#define SEND_BENCHMARK(name) BENCHMARK(name)->ArgName("cores")->Arg(1)->Arg(2)->UseRealTime()

void BM_TaMessageDispatcher_Send(benchmark::State& state) { sendMany<OurOffice>(state); }
SEND_BENCHMARK(BM_TaMessageDispatcher_Send);

#if defined(TA_PEER_BOOST)
void BM_BoostAsio_Post(benchmark::State& state) { postMany<AsioOffice>(state); }
POST_BENCHMARK(BM_BoostAsio_Post);

void BM_BoostAsio_Send(benchmark::State& state) { sendMany<AsioOffice>(state); }
SEND_BENCHMARK(BM_BoostAsio_Send);
#endif

#if defined(TA_PEER_GLIB)
void BM_GMainContext_Post(benchmark::State& state) { postMany<GlibOffice>(state); }
POST_BENCHMARK(BM_GMainContext_Post);
#endif

#if defined(TA_PEER_QT)
void BM_QInvokeMethod_Post(benchmark::State& state) { postMany<QtOffice>(state); }
POST_BENCHMARK(BM_QInvokeMethod_Post);

void BM_QInvokeMethod_Send(benchmark::State& state) { sendMany<QtOffice>(state); }
SEND_BENCHMARK(BM_QInvokeMethod_Send);
#endif

/// Threads in a ring that wake each other: what `hops` changes of threads cost at least.
void ringOfFutexes(benchmark::State& state, std::size_t hops)
{
    std::vector<RawFutex> flags(hops);
    std::atomic<bool> done = false;
    std::vector<std::jthread> others;
    for (std::size_t i = 0; i + 1 < hops; ++i) {
        others.emplace_back([&, i] {
            while (!done) {
                flags[i].Wait();
                flags[i + 1].Set();
            }
        });
    }
    {
        std::optional<OnOneCore> pinned;
        if (state.range(0) == 1) {
            pinned.emplace();
        }
        for (auto _ : state) {
            flags.front().Set();
            flags.back().Wait();
        }
        done = true;
        for (RawFutex& flag : flags) {
            flag.Set();
        }
    }
}

void BM_RawFutex_Ring3(benchmark::State& state) { ringOfFutexes(state, 3); }
SEND_BENCHMARK(BM_RawFutex_Ring3);

void BM_RawFutex_Ring2(benchmark::State& state) { ringOfFutexes(state, 2); }
SEND_BENCHMARK(BM_RawFutex_Ring2);

/// A handler on the sending thread: there is only the dispatcher's thread to wait for.
class OwnReceiver : public TaMessageHandler
{
public:
    OwnReceiver()
        : TaMessageHandler(u"own")
    {
    }
    ~OwnReceiver() override { destroyMessageHandler().MarkRead(); }

protected:
    void onSubscribeMessages() override { SubscribeMessage(Tick(0)); }
    long long handleMessage(const TaMessage& message) override
    {
        return static_cast<const Tick&>(message).GetNumber() == 1 ? 1 : 0;
    }
};

class OwnOffice
{
public:
    OwnOffice() { m_receiver.initMessageHandler().MarkRead(); }
    void Send() { TaMessageDispatcher::SendMessage(Tick(1), m_receiver); }

private:
    OwnReceiver m_receiver;
};

void BM_TaMessageDispatcher_SendToOwnThread(benchmark::State& state) { sendMany<OwnOffice>(state); }
SEND_BENCHMARK(BM_TaMessageDispatcher_SendToOwnThread);

} // namespace
