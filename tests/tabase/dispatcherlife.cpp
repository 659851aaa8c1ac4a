#include "platform/threadsanitizer.h"
#include "support/testhandler.h"
#include "support/testlatch.h"
#include "tabase/tamessagetrace.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <thread>
#include <utility>

// One life of the dispatcher: a process has one, which does not come back. The argument says which;
// the exit code, whether all was as promised.

namespace {

std::atomic<int> s_failures{ 0 };

void expect(bool isTrue, const char* promise)
{
    if (!isTrue) {
        std::fprintf(stderr, "not so: %s\n", promise);
        ++s_failures;
    }
}

int exitCode()
{
    // The shared helpers tell their failures to GoogleTest.
    const bool isGood
        = s_failures == 0 && !testing::UnitTest::GetInstance()->ad_hoc_test_result().Failed();
    return isGood ? 0 : 1;
}

/// What is left of the operations when the dispatcher has ended.
void expectNoDispatcher()
{
    Notes notes;
    ThreadedHandler handler(u"late", Noting(notes));
    handler.SubscribeMessage(OtherMessage());
    expect(SendTo(handler, 1) == 0, "a send returns 0");
    expect(SendToAll(NumberMessage(1)).empty(), "a send to all has no results");
    expect(TaMessageDispatcher::SendPrivateMessage(TaMessage()) == 0, "a private send returns 0");
    Post(2);
    handler.UnsubscribeAll();
    expect(TaMessageDispatcher::FindMessageHandler(u"late") == nullptr, "no name is entered");
    expect(handler.StopAndWait(kPatienceMs), "handlers end");
    expect(notes.Take().empty(), "nothing is delivered");
    expect(TaMessageDispatcher::ShutdownAndWait(0), "a second call is true at once");
}

/// Made before the dispatcher, and so destroyed after it, but for systems on which the objects of
/// libraries end later than those of the program: there, this sees that all goes on until then.
struct SAfterwards
{
    ~SAfterwards()
    {
        if (sleeper.joinable()) {
            gate.go.Set();
            sleeper.join();
        }
        if (isWatching) {
            if (!TA_TEST_LIBRARIES_END_LATER) {
                expect(!TaMessageDispatcher::HasInstance(), "it goes at the exit of the process");
                expectNoDispatcher();
            }
            if (exitCode() != 0) {
                std::_Exit(1);
            }
        }
    }
    bool isWatching = false;
    SGate gate; // a handler is still in it at the exit of the process
    std::thread sleeper; // that waits for its answer
} s_afterwards;

void endWithoutShutdown()
{
    s_afterwards.isWatching = true;
    const ThreadedHandler handler(u"user", Answering(7));
    Post(1);
    expect(SendTo(handler, 2) == 7, "it is there when it is needed");
}

void endAfterShutdown()
{
    expect(TaMessageDispatcher::ShutdownAndWait(0), "what nobody has used has ended");
    endWithoutShutdown();
    const ThreadedHandler survivor(u"survivor", Answering(7));
    expect(TaMessageDispatcher::ShutdownAndWait(kPatienceMs), "it ends in time");
    expect(!TaMessageDispatcher::GetInstance().IsRunning(), "its thread has ended");
    expect(SendTo(survivor, 1) == 0, "subscribers of before are reached no more");
    expectNoDispatcher();
}

/// Many threads come at once, and the dispatcher goes while they send.
void race()
{
    constexpr int kThreads = 8;
    TestLatch start(kThreads + 2);
    std::vector<std::jthread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            long long answer = 7;
            const ThreadedHandler handler(u"racer", Answering(7));
            while (answer == 7) {
                Post(1);
                answer = SendTo(handler, 2);
            }
            expect(answer == 0, "no send waits for a dispatcher that goes");
        });
    }
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            for (int round = 0; round < 100; ++round) {
                SendToAll(OtherMessage());
            }
            expect(TaMessageDispatcher::ShutdownAndWait(kPatienceMs), "all who end it see its end");
        });
    }
}

/// The first use is that of a handler's constructor.
void startInConstructor()
{
    struct SEager : LocalHandler
    {
        SEager()
            : LocalHandler(u"eager", Answering(7), ToNumbers, false)
        {
            SubscribeMessage(NumberMessage(0));
            expect(TaMessageDispatcher::FindMessageHandler(u"eager") == this, "it has the name");
        }
    };
    const SEager handler;
    expect(SendTo(handler, 1) == 0, "a handler without a window answers nothing");
}

void shutDownOnItsThread()
{
    const DispatcherHandler handler(u"ender", [](const TaMessage&) {
        expect(!TaMessageDispatcher::ShutdownAndWait(kPatienceMs), "it only ends the loop");
        return SendToAll(OtherMessage()).empty() ? 7LL : 0LL; // and its thread does not hang
    });
    expect(SendTo(handler, 1) == 7, "the handler that ends it returns");
    expect(TaMessageDispatcher::ShutdownAndWait(kPatienceMs), "then it has ended");
    expectNoDispatcher();
}

/// A sender waits for a handler, and other messages for the dispatcher, when that ends.
void endWhileSomebodyWaits()
{
    SGate gate;
    const ThreadedHandler slow(u"slow", Passing(gate, 7));
    const std::jthread sender(
        [&] { expect(SendTo(slow, 1) == 7, "the answer comes all the same"); });
    expect(gate.WaitUntilEntered(), "the handler is at it");
    Post(2);
    expect(TaMessageDispatcher::ShutdownAndWait(kPatienceMs), "it does not wait for handlers");
    gate.go.Set();
}

[[noreturn]] long long leaveInMessage(const TaMessage&) { std::exit(exitCode()); }

/// A thread sleeps in a send while the process exits.
void exitWhileSomebodyWaits()
{
    s_afterwards.isWatching = true;
    static const auto* const s_handler
        = new ThreadedHandler(u"slow", Passing(s_afterwards.gate, 7));
    s_afterwards.sleeper
        = std::thread([] { expect(SendTo(*s_handler, 1) == 7, "an answer after the end"); });
    expect(s_afterwards.gate.WaitUntilEntered(), "the handler is at it");
}

/// A thread is on its way into the dispatcher's queue while the process exits.
void exitWhileSomebodySends()
{
    s_afterwards.isWatching = true;
    static const auto* const s_handler = new ThreadedHandler(u"late", Answering(7));
    static std::atomic<std::thread::id> s_sender;
    s_afterwards.sleeper = std::thread([] {
        s_sender = std::this_thread::get_id();
        TaMessageTrace::SetHook([](const SMessageTrace& trace) noexcept {
            // No lock is held yet.
            if (trace.step == SMessageTrace::eS_Queued
                && std::this_thread::get_id() == s_sender.exchange({})) {
                s_afterwards.gate.Pass();
            }
        });
        expect(SendTo(*s_handler, 1) == (TA_TEST_LIBRARIES_END_LATER ? 7 : 0),
            "it finds the dispatcher as it was, but for its thread");
    });
    expect(s_afterwards.gate.WaitUntilEntered(), "the sender is at it");
}

/// A handler ends the process, and so is never destroyed itself.
void exitOf(const TaMessageHandler& handler)
{
    TaMessageDispatcher::PostMessage(TuMake<NumberMessage>(1), handler);
    const TuEvent never(true);
    never.Wait(kPatienceMs);
    expect(false, "the process ends");
}

void exitOfHandler()
{
    s_afterwards.isWatching = true;
    exitOf(*new ThreadedHandler(u"leaver", leaveInMessage));
}

void exitOfHandlerOnItsThread() { exitOf(*new DispatcherHandler(u"leaver", leaveInMessage)); }

/// What a killed thread owned is lost, so nobody is to look for leaks afterwards.
void killHandler()
{
#if !defined(TA_THREAD_SANITIZER) // which delays the signal
    SGate gate;
    std::optional<ThreadedHandler> handler;
    handler.emplace(u"killed", [&](const TaMessage& message) {
        if (NumberOf(message) == 1) {
            gate.Pass();
        }
        return 7LL;
    });
    std::jthread first([&] { expect(SendToAll(NumberMessage(1)).empty(), "it never answers"); });
    expect(gate.WaitUntilEntered(), "the handler is at it");
    std::jthread second([&] { expect(SendToAll(NumberMessage(2)).empty(), "nor this one"); });
    expect(WaitForDump(u"'killed': 1 sent"), "the second message waits");
    handler->Terminate();
    expect(SendTo(*handler, 3) == 0, "who sends now does not wait");
    expect(handler->StartAndWait(), "the handler can start again");
    second.join(); // what waited for the former thread is not for the new one
    expect(SendTo(*handler, 4) == 7, "the new thread answers");
    handler.reset();
    first.join(); // the end of the handler lets go who waits for the killed thread itself
#endif
    std::_Exit(exitCode());
}

constexpr std::pair<const char*, void (*)()> kModes[] = {
    { "without_shutdown", &endWithoutShutdown },
    { "after_shutdown", &endAfterShutdown },
    { "race", &race },
    { "in_constructor", &startInConstructor },
    { "shutdown_on_its_thread", &shutDownOnItsThread },
    { "while_somebody_waits", &endWhileSomebodyWaits },
    { "exit_of_handler", &exitOfHandler },
    { "exit_of_handler_on_its_thread", &exitOfHandlerOnItsThread },
    { "exit_while_somebody_waits", &exitWhileSomebodyWaits },
    { "exit_while_somebody_sends", &exitWhileSomebodySends },
    { "killed_handler", &killHandler },
};

} // namespace

int main(int argc, char** argv)
{
    for (const auto& [mode, run] : kModes) {
        if (argc == 2 && std::strcmp(argv[1], mode) == 0) {
            run();
            return exitCode();
        }
    }
    std::fprintf(stderr, "one of the modes at the end of the source, please\n");
    return 2;
}
