#include "tabase/tamessagedispatcher.h"

#include "platform/platformthread.h"
#include "support/testhandler.h"
#include "tabase/tamessagecommand.h"
#include "tabase/tamessageloop.h"
#include "tabase/tamessagestring.h"
#include "tabase/tamessagesubscription.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <optional>
#include <stdexcept>
#include <thread>

namespace {

using Subscription = TaMessageSubscription;
using Results = std::vector<long long>;

constexpr long long kFail = -2147467259; // 0x80004005, extended by its sign

/// For answers of several threads.
Results sorted(Results results)
{
    std::sort(results.begin(), results.end());
    return results;
}

Subscribe to(const TuRTTI& type)
{
    return [&type](TaMessageHandlerBase& handler) {
        EXPECT_EQ(TaMessageDispatcher::SendPrivateMessage(
                      Subscription(handler, Subscription::eA_SubscribeType, type)),
            0);
    };
}

TEST(TaMessageDispatcherTest, AMessageReachesEachSubscriberOfItsClassAndItsBasesOnce)
{
    const ThreadedHandler base(u"base", Answering(1));
    const ThreadedHandler derived(u"derived", Answering(2), to(DerivedMessage::RTTI));
    ThreadedHandler both(u"both", Answering(3), to(DerivedMessage::RTTI));
    both.SubscribeMessage(NumberMessage(0));
    both.SubscribeMessage(NumberMessage(0));
    EXPECT_EQ(sorted(SendToAll(DerivedMessage(0))), (Results{ 1, 2, 3 }));
    EXPECT_EQ(SendTo(both, 0), 3);
    EXPECT_EQ(SendTo(derived, 0), 0); // a base of what it has subscribed to
    EXPECT_EQ(SendToAll(OtherMessage()), Results());
    both.UnsubscribeMessage(NumberMessage(0));
    EXPECT_EQ(SendToAll(NumberMessage(0)), Results{ 1 });
    EXPECT_EQ(TaMessageDispatcher::SendMessage(DerivedMessage(0), both), 3);
    both.UnsubscribeAll();
    EXPECT_EQ(TaMessageDispatcher::SendMessage(DerivedMessage(0), both), 0);
}

TEST(TaMessageDispatcherTest, ACommandReachesWhoWantsItsNumberAndWhoWantsItsClass)
{
    // All on this thread, so that the order of their answers is that of the subscriptions.
    const LocalHandler windows(u"windows", Answering(1), to(TaMessageWindows::RTTI));
    LocalHandler number(u"number", Answering(2), ToCommand(5));
    const LocalHandler commands(u"commands", Answering(3), to(TaMessageCommand::RTTI));
    const LocalHandler sample(u"sample", Answering(4), [](TaMessageHandlerBase& handler) {
        handler.SubscribeMessage(TaMessageCommand(5));
        handler.SubscribeMessage(TaMessageCommand(6));
        handler.UnsubscribeMessage(TaMessageCommand(6));
    });
    EXPECT_EQ(SendToAll(TaMessageCommand(5)), (Results{ 3, 1, 2, 4 }));
    EXPECT_EQ(SendToAll(TaMessageCommand(6)), (Results{ 3, 1 }));
    EXPECT_EQ(SendToAll(TaMessageWindows(273, 5, 0)), (Results{ 1 }));
    number.UnsubscribeCommand(5);
    EXPECT_EQ(SendToAll(TaMessageCommand(5)), (Results{ 3, 1, 4 }));
}

TEST(TaMessageDispatcherTest, ResultsAreAppendedInTheOrderOfTheAnswers)
{
    SGate gate;
    const ThreadedHandler late(u"late", Passing(gate, 1));
    const ThreadedHandler early(u"early", Answering(2));
    // Runs in the sending thread when `early` may still be at it.
    const std::jthread opener([&] {
        EXPECT_TRUE(gate.WaitUntilEntered());
        SendTo(early, 0); // behind the message to all
        gate.go.Set();
    });
    TuList<long long> results{ 7 };
    TaMessageDispatcher::SendMessage(NumberMessage(0), results);
    EXPECT_EQ(Results(results.begin(), results.end()), (Results{ 7, 2, 1 }));
}

TEST(TaMessageDispatcherTest, PrivateMessagesAreForTheDispatcherAloneWhichIsNoSubscriber)
{
    Notes notes;
    const ThreadedHandler a(u"a", Noting(notes));
    LocalHandler b(u"b", Answering(5), ToNothing);
    TaMessageDispatcher& dispatcher = TaMessageDispatcher::GetInstance();
    testing::internal::CaptureStderr(); // which reports both as misrouted
    EXPECT_EQ(TaMessageDispatcher::SendPrivateMessage(NumberMessage(1)), kFail);
    EXPECT_EQ(SendTo(dispatcher, 2), kFail);
    testing::internal::GetCapturedStderr();
    TaMessageDispatcher::PostMessage(
        TuMake<Subscription>(b, Subscription::eA_SubscribeType, NumberMessage::RTTI), dispatcher);
    EXPECT_EQ(SendTo(b, 3), 5);
    EXPECT_EQ(notes.Take(), "");

    dispatcher.SubscribeMessage(OtherMessage());
    dispatcher.SubscribeCommand(5);
    EXPECT_EQ(SendToAll(OtherMessage()), Results());
    EXPECT_EQ(SendToAll(TaMessageCommand(5)), Results());
}

TEST(TaMessageDispatcherTest, ANameBelongsToWhoSubscribedUnderItFirst)
{
    const auto find = [] { return TaMessageDispatcher::FindMessageHandler(u"name"); };
    {
        LocalHandler first(u"name", {}, ToNothing);
        EXPECT_EQ(find(), nullptr);
        first.SubscribeMessage(NumberMessage(0));
        LocalHandler second(u"name");
        EXPECT_EQ(find(), &first);
        second.UnsubscribeAll();
        EXPECT_EQ(find(), &first);
        first.UnsubscribeAll();
        EXPECT_EQ(find(), nullptr);
        second.SubscribeCommand(1);
        EXPECT_EQ(find(), &second);
    }
    EXPECT_EQ(find(), nullptr);
}

TEST(TaMessageDispatcherTest, WhatWaitsIsDroppedWhenItsSubscriptionGoes)
{
    SGate gate;
    Notes notes;
    ThreadedHandler handler(
        u"busy",
        [&](const TaMessage& message) {
            notes.Add(message.ToString().ToUtf8());
            if (message.Is(OtherMessage::RTTI)) {
                gate.Pass();
            }
            return 1LL;
        },
        ToOthers);
    handler.SubscribeMessage(NumberMessage(0));
    handler.SubscribeMessage(DerivedMessage(0));
    handler.SubscribeCommand(5);
    handler.SubscribeCommand(6);
    TaMessageDispatcher::PostMessage(TuMake<OtherMessage>());
    ASSERT_TRUE(gate.WaitUntilEntered());
    TaMessageDispatcher::PostMessage(TuMake<TaMessageCommand>(5u));
    TaMessageDispatcher::PostMessage(TuMake<TaMessageCommand>(6u));
    Post(0);
    TaMessageDispatcher::PostMessage(TuMake<DerivedMessage>(0));
    Results results{ 7 };
    std::jthread sender([&] { results = SendToAll(DerivedMessage(0)); });
    ASSERT_TRUE(WaitForDump(u"'busy': 1 sent, 4 posted"));
    handler.UnsubscribeMessage(NumberMessage(0)); // and of what derives from it
    sender.join();
    EXPECT_EQ(results, Results()); // released without an answer
    handler.UnsubscribeCommand(5);
    gate.go.Set();
    EXPECT_EQ(TaMessageDispatcher::SendMessage(DerivedMessage(0), handler), 1);
    EXPECT_EQ(notes.Take(), "OtherMessage TaMessageCommand (Message 273 [6, 0]) DerivedMessage ");
}

TEST(TaMessageDispatcherTest, UnsubscribingAllDropsAllThatWaits)
{
    for (const bool isEverybody : { false, true }) {
        SGate gate;
        ThreadedHandler handler(u"busy", Passing(gate, 1));
        Post(1);
        ASSERT_TRUE(gate.WaitUntilEntered());
        std::jthread sender([&] { EXPECT_TRUE(SendToAll(NumberMessage(2)).empty()); });
        ASSERT_TRUE(WaitForDump(u"'busy': 1 sent"));
        isEverybody ? TaMessageDispatcher::GetInstance().UnsubscribeAll()
                    : handler.UnsubscribeAll();
        sender.join();
        EXPECT_EQ(SendTo(handler, 3), 0);
        gate.go.Set();
    }
}

TEST(TaMessageDispatcherTest, APostedTextGoesToItsWindowAndASentOneToSubscribers)
{
    Notes notes;
    const Handle note = [&](const TaMessage& message) {
        const auto& text = dynamic_cast<const TaMessageString&>(message);
        notes.Add(text.GetMessageString().ToUtf8());
        EXPECT_NE(text.GetHWND(), nullptr);
        return reinterpret_cast<long long>(text.GetHWND());
    };
    const LocalHandler window(u"window", note, ToNothing);
    const ThreadedHandler subscriber(u"subscriber", note, to(TaMessageString::RTTI));
    const HWND handle = window.GetHWND();
    TaMessageDispatcher::PostMessage(TuMake<TaMessageString>(handle, u"ä\U0001F600"), subscriber);
    TaMessageDispatcher::PostMessage(TuMake<TaMessageString>(handle, CString()));
    TaMessageDispatcher::PostMessage(TuMake<TaMessageString>(nullptr, u"nowhere"));
    WaitForDispatcher();
    EXPECT_EQ(notes.Take(), "");
    EXPECT_TRUE(TaMessageLoop::HandleWaiting());
    EXPECT_EQ(notes.Take(), "ä\U0001F600  ");
    EXPECT_EQ(SendToAll(TaMessageString(handle, u"sent")),
        Results{ reinterpret_cast<long long>(handle) });
    EXPECT_EQ(notes.Take(), "sent ");
}

TEST(TaMessageDispatcherTest, HandlersOfTheSendingThreadRunInTheCallBehindTheirPosts)
{
    Notes here;
    Notes there;
    const unsigned int self = platform::GetCurrentThreadId();
    const LocalHandler local(u"local", [&](const TaMessage& message) {
        EXPECT_EQ(platform::GetCurrentThreadId(), self);
        here.Add(std::to_string(NumberOf(message)));
        return NumberOf(message) == 2 ? SendTo(local, 3) : 1LL; // a send in a send
    });
    const ThreadedHandler remote(u"remote", Noting(there));
    EXPECT_EQ(local.GetThreadID(), self);
    Post(1);
    EXPECT_EQ(SendTo(local, 2), 1);
    EXPECT_EQ(SendToAll(NumberMessage(4)).size(), 2u);
    EXPECT_EQ(here.Take(), "1 2 3 4 ");
    Post(5);
    SendTo(remote, 6);
    EXPECT_EQ(here.Take(), "");
    EXPECT_TRUE(TaMessageLoop::HandleWaiting()); // wake-ups that find nothing, too
    EXPECT_EQ(here.Take(), "5 ");
    EXPECT_EQ(there.Take(), "1 4 5 6 ");
}

TEST(TaMessageDispatcherTest, WhoLeavesBeforeItIsItsTurnOnTheSendingThreadIsNotReached)
{
    std::optional<LocalHandler> second;
    const std::function<void()> leave[] = {
        [&] { second->UnsubscribeMessage(NumberMessage(0)); },
        [&] { EXPECT_TRUE(second->destroyMessageHandler()); },
        [&] { second.reset(); },
    };
    for (const auto& leaves : leave) {
        {
            const LocalHandler first(u"first", [&](const TaMessage&) {
                leaves();
                return 1LL;
            });
            second.emplace(u"second", Answering(2));
            EXPECT_EQ(SendToAll(NumberMessage(0)), Results{ 1 });
        }
        second.emplace(u"second", [&](const TaMessage& message) { // or in its own turn
            EXPECT_TRUE(message.Is(DerivedMessage::RTTI)); // which comes first
            leaves();
            return 2LL;
        });
        const LocalHandler third(u"third", Answering(3));
        TaMessageDispatcher::PostMessage(TuMake<DerivedMessage>(0), *second);
        EXPECT_EQ(SendToAll(NumberMessage(0)), Results{ 3 });
    }
}

TEST(TaMessageDispatcherTest, WhoThrowsAnswersThatItFailed)
{
    const auto fail = [](const TaMessage&) -> long long { throw std::runtime_error("handler"); };
    const LocalHandler local(u"local", fail);
    const ThreadedHandler remote(u"remote", fail);
    const DispatcherHandler onDispatcher(u"onDispatcher", fail);
    Post(0);
    EXPECT_EQ(SendToAll(NumberMessage(0)), Results(3, kFail));
}

TEST(TaMessageDispatcherTest, TheDispatchersThreadSendsWithoutWaitingForItself)
{
    Notes notes;
    const unsigned int thread = TaMessageDispatcher::GetInstance().GetThreadID();
    const ThreadedHandler remote(u"remote", [&](const TaMessage& message) {
        notes.Add("remote" + std::to_string(NumberOf(message)));
        return SendToAll(OtherMessage())[0] + 1; // back to the thread that waits for this one
    });
    const DispatcherHandler second(
        u"second",
        [&](const TaMessage&) {
            EXPECT_EQ(platform::GetCurrentThreadId(), thread);
            notes.Add("second");
            return 1LL;
        },
        ToOthers);
    const DispatcherHandler first(
        u"first",
        [&](const TaMessage&) {
            EXPECT_EQ(platform::GetCurrentThreadId(), thread);
            // Starts a thread that subscribes, and ends it.
            const ThreadedHandler passing(u"passing", Answering(0));
            EXPECT_EQ(TaMessageDispatcher::FindMessageHandler(u"passing"), &passing);
            Post(7);
            return SendTo(remote, 8);
        },
        ToCommand(5));
    EXPECT_EQ(SendToAll(TaMessageCommand(5)), Results{ 2 });
    EXPECT_EQ(notes.Take(), "remote7 second remote8 second ");
}

// What was left behind by a send that needed its wake-up no more once let the next send overtake.
TEST(TaMessageDispatcherTest, WakeUpsWithoutAMessageDoNotPutASendBeforeAnEarlierPost)
{
    Notes notes;
    SGate gate;
    ThreadedHandler handler(u"handler", [&](const TaMessage& message) {
        notes.Add(std::to_string(NumberOf(message)));
        if (NumberOf(message) == 0) {
            gate.Pass();
        }
        return 0LL;
    });
    handler.SubscribeMessage(OtherMessage());
    Post(0);
    ASSERT_TRUE(gate.WaitUntilEntered());
    {
        const std::jthread sender([] { SendToAll(OtherMessage()); });
        ASSERT_TRUE(WaitForDump(u"'handler': 1 sent"));
        handler.UnsubscribeMessage(OtherMessage());
    }
    const std::jthread sender([&] {
        Post(1);
        SendTo(handler, 2);
    });
    ASSERT_TRUE(WaitForDump(u"'handler': 1 sent, 1 posted"));
    gate.go.Set();
    EXPECT_TRUE(notes.WaitFor(3));
    EXPECT_EQ(notes.Take(), "0 1 2 ");
}

TEST(TaMessageDispatcherTest, SendsOfTheDispatchersThreadDoNotPutASendBeforeAnEarlierPost)
{
    Notes notes;
    SGate gate;
    const ThreadedHandler handler(u"handler", Noting(notes));
    const DispatcherHandler onDispatcher(
        u"onDispatcher",
        [&](const TaMessage&) {
            SendToAll(TaMessage());
            gate.Pass();
            return 0LL;
        },
        ToOthers);
    TaMessageDispatcher::PostMessage(TuMake<OtherMessage>());
    ASSERT_TRUE(gate.WaitUntilEntered());
    const std::jthread sender([&] {
        Post(1);
        SendTo(handler, 2);
    });
    ASSERT_TRUE(WaitForDump(u"'TaMessageDispatcher': 1 sent, 1 posted"));
    gate.go.Set();
    EXPECT_TRUE(notes.WaitFor(2));
    EXPECT_EQ(notes.Take(), "1 2 ");
}

TEST(TaMessageDispatcherTest, ARingReturnsHoweverOftenItGoesRoundAndPostsComeBeforeItsSends)
{
    Notes notes;
    std::optional<LocalHandler> a;
    std::optional<ThreadedHandler> b;
    a.emplace(u"a", [&](const TaMessage& message) {
        EXPECT_EQ(platform::GetCurrentThreadId(), a->GetThreadID());
        notes.Add("a" + std::to_string(NumberOf(message)));
        return NumberOf(message) > 0 ? SendTo(*b, NumberOf(message) - 1) + 1 : 0;
    });
    b.emplace(u"b", [&](const TaMessage& message) {
        EXPECT_EQ(platform::GetCurrentThreadId(), b->GetThreadID());
        notes.Add("b" + std::to_string(NumberOf(message)));
        TaMessageDispatcher::PostMessage(nullptr, *a);
        TaMessageDispatcher::PostMessage(TuMake<NumberMessage>(-2), *a);
        return SendTo(*a, NumberOf(message) - 1) + 1;
    });
    EXPECT_EQ(SendTo(*b, 5), 5);
    EXPECT_EQ(notes.Take(), "b5 a-2 a4 b3 a-2 a2 b1 a-2 a0 ");
}

TEST(TaMessageDispatcherTest, ARingIsClosedThroughAnOuterSendWhileAnInnerOneWaits)
{
    SGate gate; // that only the ring opens
    const ThreadedHandler inner(u"inner", Passing(gate, 1), ToOthers);
    const LocalHandler opener(
        u"opener",
        [&](const TaMessage&) {
            gate.go.Set();
            return 2LL;
        },
        ToCommand(5));
    const ThreadedHandler closer(u"closer", [&](const TaMessage&) {
        EXPECT_TRUE(gate.WaitUntilEntered());
        return TaMessageDispatcher::SendMessage(TaMessageCommand(5), opener);
    });
    const LocalHandler nester(
        u"nester", [&](const TaMessage&) { return SendToAll(OtherMessage())[0]; });
    EXPECT_EQ(sorted(SendToAll(NumberMessage(0))), (Results{ 1, 2 }));
}

TEST(TaMessageDispatcherTest, AThreadThatWaitsForOthersIsNotMadeToRunWhatIsNotItsRing)
{
    Notes notes;
    SGate gate;
    const ThreadedHandler last(u"last", Passing(gate), ToOthers);
    const ThreadedHandler waiting(u"waiting", [&](const TaMessage& message) {
        notes.Add("begin" + std::to_string(NumberOf(message)));
        SendToAll(OtherMessage());
        notes.Add("end");
        return 0LL;
    });
    Post(1);
    ASSERT_TRUE(gate.WaitUntilEntered());
    {
        const std::jthread sender([&] { SendTo(waiting, 2); });
        ASSERT_TRUE(WaitForDump(u"'waiting': 1 sent"));
        gate.go.Set();
    }
    EXPECT_EQ(notes.Take(), "begin1 end begin2 end ");
}

Notes s_trace;
std::atomic<unsigned int> s_tracedThread{ 0 };

void trace(const SMessageTrace& step) noexcept
{
    static const char* const s_steps[] = { "queued", "delivered", "answered", "dropped" };
    if (CString(step.messageClass) == u"NumberMessage") {
        s_trace.Add(s_steps[step.step] + std::string(step.isSend ? "-sent-" : "-posted-")
            + step.handler->ToUtf8() + '-' + CString(step.source.file).ToUtf8()
            + std::to_string(step.source.line));
        s_tracedThread = step.threadID;
    }
}

TEST(TaMessageDispatcherTest, AHookSeesEveryStepOfAMessageAndWhereItCameFrom)
{
    const ThreadedHandler handler(u"h", Answering(1));
    TuList<long long> results;
    ASSERT_EQ(TaMessageTrace::SetHook(&trace), nullptr);
    TaMessageDispatcher::SendMessage(u"f", 1, NumberMessage(0));
    EXPECT_EQ(s_tracedThread, handler.GetThreadID());
    EXPECT_EQ(s_trace.Take(),
        "queued-sent-TaMessageDispatcher-f1 delivered-sent-TaMessageDispatcher-f1 "
        "queued-sent-h-f1 delivered-sent-h-f1 answered-sent-h-f1 ");
    const LocalHandler local(u"l", Answering(1));
    TaMessageDispatcher::SendMessage(u"f", 2, NumberMessage(0), results);
    TaMessageDispatcher::SendMessage(u"f", 3, NumberMessage(0), local);
    TaMessageDispatcher::PostMessage(u"f", 4, TuMake<NumberMessage>(0));
    TaMessageDispatcher::PostMessage(u"f", 5, TuMake<NumberMessage>(0), handler);
    TaMessageDispatcher::SendMessage(u"f", 6, NumberMessage(0), handler); // behind both
    WaitForDispatcher();
    EXPECT_EQ(TaMessageTrace::SetHook(nullptr), &trace);
    const std::string all = s_trace.Take();
    for (const char* const part :
        { "queued-sent-h-f2 ", "queued-sent-l-f3 delivered-sent-l-f3 ", "queued-posted-h-f4 ",
            "queued-posted-h-f5 ", "delivered-posted-h-f4 answered-posted-h-f4 ",
            "delivered-posted-h-f5 answered-posted-h-f5 " }) {
        EXPECT_NE(all.find(part), std::string::npos) << all;
    }
}

TEST(TaMessageDispatcherTest, ItsDumpSaysWhoHasSubscribedWhatWaitsAndWhoWaitsForWhom)
{
    SGate gate;
    const ThreadedHandler handler(u"busy", Passing(gate));
    const LocalHandler other(u"other", {}, ToCommand(5));
    std::jthread sender([] { TaMessageDispatcher::SendMessage(u"file", 12, NumberMessage(0)); });
    ASSERT_TRUE(gate.WaitUntilEntered());
    Post(0);
    WaitForDispatcher();
    const std::string thread = std::to_string(handler.GetThreadID());
    const std::string dump = DumpOfDispatcher().ToUtf8();
    for (const std::string& part :
        { std::string("  type NumberMessage: 'busy'\n"), std::string("  command 5: 'other'\n"),
            "  'busy': 0 sent, 1 posted, thread " + thread + "\n",
            std::string(" sends NumberMessage from file:12\n    waits for 'busy' on thread ")
                + thread + "\n" }) {
        EXPECT_NE(dump.find(part), std::string::npos) << part << dump;
    }
    gate.go.Set();
    sender.join();
    EXPECT_EQ(DumpOfDispatcher().Find(u"sends"), CString::npos);
}

} // namespace
