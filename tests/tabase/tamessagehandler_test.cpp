#include "platform/platformlibrary.h"
#include "platform/platformtaskmemory.h"
#include "platform/platformtext.h"
#include "platform/platformthread.h"
#include "support/testhandler.h"
#include "tabase/tamessagecommand.h"
#include "tabase/tamessagecreatehwnd.h"
#include "tabase/tamessagehandlerthreaded.h"
#include "tabase/tamessageloop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <optional>
#include <thread>
#include <utility>

namespace {

void post(const TaMessageHandler& handler, unsigned int message, unsigned long long wParam = 0,
    long long lParam = 0)
{
    EXPECT_EQ(
        platform::PostToWindow(handler.GetHWND(), message, wParam, lParam), platform::eP_Posted);
}

/// Notes what becomes of it, and of messages to its window.
class WindowHandler : public TaMessageHandlerThreaded
{
public:
    explicit WindowHandler(Notes& notes)
        : TaMessageHandlerThreaded(u"window", eTP_Normal)
        , m_notes(notes)
    {
    }
    ~WindowHandler() override { StopAndWait(kPatienceMs); }

    bool refuses = false; // to have a window
    int handledFlag = 0;

protected:
    platform::WindowProcedure getWindowProc() override
    {
        return refuses ? nullptr : TaMessageHandlerThreaded::getWindowProc();
    }
    void onSubscribeMessages() override
    {
        m_notes.Add(GetHWND() != nullptr && GetThreadID() != 0 ? "subscribe" : "too early");
        SubscribeMessage(NumberMessage(0));
    }
    void onUnsubscribeMessages() override { m_notes.Add("unsubscribe"); }
    void onSystemWindowsMessage(
        unsigned int message, unsigned long long, long long, int& handled) override
    {
        if (message == platform::eWM_Create || message == platform::eWM_Destroy
            || message == platform::eWM_Command) {
            note("system", message);
        }
        EXPECT_EQ(handled, 0);
    }
    void onUserWindowsMessage(
        unsigned int message, unsigned long long, long long, int& handled) override
    {
        note("user", message);
        EXPECT_EQ(std::exchange(handled, handledFlag), 0);
    }
    long long handleWindowsMessage(
        unsigned int message, unsigned long long wParam, long long lParam) override
    {
        return note("app", message, wParam, lParam);
    }
    long long handleRegisteredMessage(
        unsigned int message, unsigned long long wParam, long long lParam) override
    {
        return note("registered", message, wParam, lParam);
    }
    long long handleMessage(const TaMessage& message) override
    {
        m_notes.Add(message.ToString().ToUtf8());
        return 1;
    }

private:
    int note(
        const char* what, unsigned int message, unsigned long long wParam = 0, long long lParam = 0)
    {
        m_notes.Add(what + std::to_string(message));
        EXPECT_TRUE(message < platform::eWM_FirstApp || (wParam == 20 && lParam == -3));
        return 1;
    }

    Notes& m_notes;
};

TEST(TaMessageHandlerTest, AThreadedOneStartsWithItsWindowEndsAndStartsAgain)
{
    Notes notes;
    WindowHandler handler(notes);
    EXPECT_EQ(handler.GetHWND(), nullptr);
    EXPECT_EQ(handler.GetThreadID(), 0u);
    EXPECT_TRUE(handler.StopAndWait(0));
    for (int round = 0; round < 2; ++round) {
        handler.refuses = true;
        EXPECT_FALSE(handler.StartAndWait()); // and does not wait for ever
        EXPECT_FALSE(handler.getEventReadyForMessages().IsSet());
        EXPECT_EQ(SendTo(handler, 0), 0);
        handler.refuses = false;
        ASSERT_TRUE(handler.StartAndWait());
        EXPECT_FALSE(handler.StartAndWait());
        EXPECT_TRUE(platform::IsMessageWindow(handler.GetHWND()));
        EXPECT_EQ(SendTo(handler, 1), 1);
        Post(2);
        WaitForDispatcher();
        ASSERT_TRUE(handler.StopAndWait(kPatienceMs));
        EXPECT_EQ(handler.GetHWND(), nullptr);
        EXPECT_TRUE(handler.IsSuccessful());
        Post(3); // still subscribed, but nobody is there
        EXPECT_EQ(SendTo(handler, 4), 0);
        EXPECT_EQ(
            notes.Take(), "subscribe system1 NumberMessage NumberMessage unsubscribe system2 ");
    }
}

TEST(TaMessageHandlerTest, WindowClassesAreNumberedOneByOneFailedOnesToo)
{
    const auto numberOfClass = [](const TaMessageHandler& handler) {
        const std::string name = platform::ToUtf8(platform::GetWindowClassName(handler.GetHWND()));
        EXPECT_TRUE(name.starts_with("TaMessageHandlerBase_"));
        return std::stoi(name.substr(name.find('_') + 1));
    };
    Notes notes;
    WindowHandler failing(notes);
    failing.refuses = true;
    TaMessageDispatcher::GetInstance(); // whose window takes a number, too
    const LocalHandler first(u"first");
    const LocalHandler second(u"second");
    EXPECT_FALSE(failing.StartAndWait());
    LocalHandler third(u"third");
    EXPECT_EQ(numberOfClass(second), numberOfClass(first) + 1);
    EXPECT_TRUE(third.initMessageHandler()); // it is there
    EXPECT_EQ(numberOfClass(third), numberOfClass(first) + 3);
    std::thread([&] {
        EXPECT_FALSE(third.initMessageHandler());
        EXPECT_FALSE(third.destroyMessageHandler());
    }).join();
    EXPECT_TRUE(third.destroyMessageHandler());
    EXPECT_FALSE(third.destroyMessageHandler());
}

TEST(TaMessageHandlerTest, WindowMessagesGoByTheirRangesButForTheNumbersOfItsOwn)
{
    Notes notes;
    WindowHandler handler(notes);
    ASSERT_TRUE(handler.StartAndWait());
    for (const int flag : { 0, 1 }) {
        handler.handledFlag = flag;
        notes.Take();
        for (const unsigned int message : { 273u, 1024u, 32'767u, 32'768u, 45'056u, 45'057u,
                 45'058u, 49'151u, 49'152u, 65'535u }) {
            post(handler, message, 20, -3);
        }
        post(handler, TaMessageHandlerBase::kStringMessage); // no text
        auto* const text = static_cast<char16_t*>(platform::AllocateTaskMemory(4));
        std::memcpy(text, u"t", 4);
        post(handler, 45'073, 0, reinterpret_cast<std::intptr_t>(text));
        ASSERT_TRUE(notes.WaitFor(9));
        EXPECT_EQ(notes.Take(),
            "system273 user1024 user32767 app32768 app45058 app49151 "
            "registered49152 registered65535 TaMessageString ");
    }
}

TEST(TaMessageHandlerTest, WhatNobodyTreatsIsReportedInGermanAndFails)
{
    const ThreadedHandler handler(u"Öfen");
    testing::internal::CaptureStderr();
    EXPECT_EQ(SendTo(handler, 0), TaMessageHandlerBase::kFail);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
        "ERROR: Fehlgeleitete Meldung: Empfänger 'Öfen', Meldung 'NumberMessage'\n");
}

TEST(TaMessageHandlerTest, AThreadWithALoopOfItsOwnHandlesWhatWaitsNow)
{
    Notes notes;
    const LocalHandler handler(u"local", [&](const TaMessage& message) {
        notes.Add(std::to_string(NumberOf(message)));
        if (NumberOf(message) == 1) {
            Post(3);
            WaitForDispatcher();
        }
        return 0LL;
    });
    Post(1);
    Post(2);
    WaitForDispatcher();
    EXPECT_TRUE(TaMessageLoop::HandleWaiting());
    EXPECT_EQ(notes.Take(), "1 2 ");
    post(handler, platform::eWM_Quit);
    Post(4);
    WaitForDispatcher();
    EXPECT_TRUE(TaMessageLoop::Run());
    EXPECT_EQ(notes.Take(), "3 "); // up to the quit message
    EXPECT_TRUE(TaMessageLoop::HandleWaiting());
    EXPECT_EQ(notes.Take(), "4 ");
}

/// Which wake-ups the system refuses.
std::atomic<HWND> s_refusedWindow{ nullptr };
std::atomic<int> s_refusals{ 0 }; // how many are left

bool refuse(HWND window, unsigned int message)
{
    const bool isWakeUp = message == TaMessageHandlerBase::kSendSignal
        || message == TaMessageHandlerBase::kPostSignal;
    return isWakeUp && window == s_refusedWindow && s_refusals.fetch_sub(1) > 0;
}

/// While it lives, `count` wake-ups to the handler are refused.
class Refusal
{
public:
    Refusal(const TaMessageHandler& handler, int count)
    {
        s_refusals = count;
        s_refusedWindow = handler.GetHWND();
        platform::SetPostRefusal(&refuse);
    }
    ~Refusal() { platform::SetPostRefusal(nullptr); }
};

TEST(TaMessageHandlerTest, ARefusedWakeUpLosesNothingAndBringsNothingTwice)
{
    Notes notes;
    const ThreadedHandler handler(u"refused", [&](const TaMessage& message) {
        notes.Add(std::to_string(NumberOf(message)));
        return 7LL;
    });
    const TaMessageHandler* const targets[] = { &handler, &TaMessageDispatcher::GetInstance() };
    for (const TaMessageHandler* const target : targets) {
        for (const int count : { 1, 3, 8 }) { // the send is refused in the last case, too
            {
                const Refusal refusal(*target, count);
                for (const int number : { 1, 2, 3, 4 }) {
                    Post(number);
                }
                EXPECT_EQ(SendTo(handler, 5), 7);
            }
            Post(6);
            EXPECT_EQ(SendTo(handler, 7), 7);
            EXPECT_EQ(notes.Take(), "1 2 3 4 5 6 7 ");
        }
    }
}

TEST(TaMessageHandlerTest, ARefusedWakeUpIsRepeatedWhileTheDispatchersThreadWaits)
{
    const ThreadedHandler handler(u"refused", Answering(7));
    const DispatcherHandler sender(
        u"sender", [&](const TaMessage&) { return SendTo(handler, 1); }, ToOthers);
    const Refusal refusal(handler, 3); // the dispatcher repeats the first at once
    EXPECT_EQ(TaMessageDispatcher::SendMessage(OtherMessage(), sender), 7);
}

TEST(TaMessageHandlerTest, AHandlerMayEndInTheMiddleOfItsMessageAndWhoWaitsForItIsLetGo)
{
    // On whose thread the others have their windows.
    std::optional<ThreadedHandler> host(std::in_place, u"host", Handle(), ToNothing);
    host->SubscribeMessage(TaMessageCreateHWND(*host));
    // What was sent to a handler that has ended may be gone when that returns: nobody looks at it.
    TaMessageTrace::SetHook([](const SMessageTrace& step) noexcept {
        EXPECT_FALSE(step.isSend && CString(step.messageClass) == u"NumberMessage"
            && step.step == SMessageTrace::eS_Answered);
    });
    for (const bool isSent : { false, true }) {
        SGate gate;
        LocalHandler* handler = nullptr;
        handler = new LocalHandler(
            u"ending",
            [&](const TaMessage&) {
                gate.Pass();
                delete handler;
                return 7LL;
            },
            ToNumbers, false);
        const TaMessageCreateHWND create(*handler);
        EXPECT_EQ(TaMessageDispatcher::SendMessage(create, *host), 1);
        EXPECT_EQ(TaMessageDispatcher::SendMessage(create, *host), 0);
        EXPECT_EQ(handler->GetThreadID(), host->GetThreadID());
        std::jthread first(
            [&] { isSent ? static_cast<void>(SendToAll(NumberMessage(1))) : Post(1); });
        ASSERT_TRUE(gate.WaitUntilEntered());
        Post(2);
        std::jthread second([&] { EXPECT_EQ(SendToAll(NumberMessage(3)).size(), 0u); });
        ASSERT_TRUE(WaitForDump(u"'ending': 1 sent, 1 posted"));
        gate.go.Set();
    }
    host.reset(); // behind the ends of both
    EXPECT_EQ(TaMessageDispatcher::FindMessageHandler(u"ending"), nullptr);
    EXPECT_EQ(SendToAll(NumberMessage(4)).size(), 0u);
    TaMessageTrace::SetHook(nullptr);
}

/// Uses the dispatcher when it goes, and waits for a thread that asks for its lock.
class LastMessage : public NumberMessage
{
public:
    LastMessage()
        : NumberMessage(1)
    {
    }
    ~LastMessage() override
    {
        Post(2); // to the handler that drops this one
        SendToAll(OtherMessage());
        std::jthread(DumpOfDispatcher).join();
    }
};

TEST(TaMessageHandlerTest, MessagesThatAreDroppedMaySendInTheirEnd)
{
    LocalHandler handler(u"dropping", Answering(0));
    const auto post = [] {
        TaMessageDispatcher::PostMessage(TuMake<LastMessage>());
        WaitForDispatcher();
    };
    post();
    handler.UnsubscribeMessage(NumberMessage(0));
    handler.SubscribeMessage(NumberMessage(0));
    post();
    EXPECT_TRUE(handler.destroyMessageHandler());
    post(); // to nobody
}

// Numbers of threads that have ended are given to new ones.
TEST(TaMessageHandlerTest, NothingReachesAHandlerWhoseThreadHasEnded)
{
    std::optional<LocalHandler> handler;
    TuEvent isThere(true);
    TuEvent end(true);
    std::thread owner([&] {
        handler.emplace(u"left", [](const TaMessage&) {
            ADD_FAILURE();
            return 7LL;
        });
        isThere.Set();
        end.Wait(kPatienceMs);
    });
    ASSERT_EQ(isThere.Wait(kPatienceMs), TuEvent::eWR_Signaled);
    std::jthread sender([&] { EXPECT_EQ(SendTo(*handler, 1), 0); });
    ASSERT_TRUE(WaitForDump(u"'left': 1 sent"));
    end.Set();
    owner.join();
    for (int round = 0; round < 20; ++round) {
        std::thread([&] {
            Post(2);
            EXPECT_EQ(SendTo(*handler, 3), 0);
        }).join();
    }
    handler.reset();
    sender.join();
}

TEST(TaMessageHandlerTest, APlugInWithHandlersComesAndGoes)
{
    for (int round = 0; round < 10; ++round) {
        platform::SharedLibrary plugin;
        ASSERT_TRUE(plugin.Load(platform::FromUtf8(TA_TEST_HANDLER_PLUGIN)));
        const auto begin
            = reinterpret_cast<long long (*)()>(plugin.FindFunction("BeginHandlerOfPlugin"));
        const auto end = reinterpret_cast<void (*)()>(plugin.FindFunction("EndHandlerOfPlugin"));
        ASSERT_TRUE(begin != nullptr && end != nullptr);
        EXPECT_EQ(begin(), 8);
        EXPECT_EQ(SendToAll(TaMessageCommand(5)), std::vector<long long>{ 9 });
        TaMessageDispatcher::PostMessage(TuMake<TaMessageCommand>(5u));
        end();
    }
    EXPECT_TRUE(SendToAll(TaMessageCommand(5)).empty());
    EXPECT_EQ(DumpOfDispatcher().Find(u"PluginMessage"), CString::npos);
}

} // namespace
