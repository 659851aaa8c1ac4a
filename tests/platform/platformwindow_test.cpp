#include "platform/platformwindow.h"

#include "platform/platformclock.h"
#include "platform/platformevent.h"
#include "platform/platformthread.h"
#include "support/killedthreads.h"

#include <gtest/gtest.h>
#if !defined(_WIN32)
#include <fcntl.h>
#include <poll.h>
#endif

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace platform;
using Numbers = std::vector<unsigned long long>;

constexpr unsigned int kPatienceMs = 60'000; // spent in full only by a failing test
constexpr unsigned int kUser = eWM_FirstUser;

/// A window that notes the numbers of its users' messages, and then does what a test asks for.
class NotingWindow
{
public:
    using Reaction = std::function<void(unsigned int message, unsigned long long number)>;

    explicit NotingWindow(Reaction reaction = nullptr, const std::u16string& name = MakeName())
        : m_reaction(std::move(reaction))
        , m_window(CreateMessageWindow(name.c_str(), &receive, this))
    {
        EXPECT_NE(m_window, nullptr);
    }
    ~NotingWindow() { EXPECT_TRUE(!IsMessageWindow(m_window) || DestroyMessageWindow(m_window)); }
    NotingWindow(const NotingWindow&) = delete;
    NotingWindow& operator=(const NotingWindow&) = delete;

    static std::u16string MakeName()
    {
        static std::atomic<int> s_count = 0;
        const std::string number = std::to_string(++s_count);
        return u"Noting" + std::u16string(number.begin(), number.end());
    }
    HWND Get() const { return m_window; }
    void Post(unsigned long long number, unsigned int message = kUser) const
    {
        EXPECT_EQ(PostToWindow(m_window, message, number, 0), eP_Posted);
    }
    const Numbers& GetNoted() const { return m_noted; }
    bool IsAlive() const { return m_isAlive; }

private:
    static long long receive(
        HWND window, unsigned int message, unsigned long long wParam, long long lParam)
    {
        if (message == eWM_Create) {
            SetWindowValue(window, GetCreationParameter(lParam));
        }
        auto* const self = static_cast<NotingWindow*>(GetWindowValue(window));
        if (message == eWM_Create || message == eWM_Destroy) {
            self->m_isAlive = message == eWM_Create;
        } else if (message >= kUser) {
            EXPECT_TRUE(self->m_window == window);
            self->m_noted.push_back(wParam);
            if (self->m_reaction != nullptr) {
                self->m_reaction(message, wParam);
            }
        }
        return PassToDefault(window, message, wParam, lParam);
    }

    Reaction m_reaction;
    Numbers m_noted;
    bool m_isAlive = false; // as its procedure has been told
    HWND m_window; // last: it uses the others
};

/// The loop of a thread; false where it did not end with a quit message.
bool runLoop()
{
    SWindowMessage message;
    EGetMessage result{};
    while ((result = WaitForMessage(message)) == eGM_Message) {
        DispatchToWindow(message);
    }
    return result == eGM_Quit;
}

/// A thread with a window and a loop.
class LoopThread
{
public:
    explicit LoopThread(const NotingWindow::Reaction& reaction)
        : m_thread([this, reaction] {
            const NotingWindow window(reaction);
            m_window = &window;
            m_ready.Set();
            EXPECT_TRUE(runLoop());
        })
    {
        EXPECT_EQ(m_ready.Wait(kPatienceMs), eW_Signaled);
    }
    ~LoopThread() { m_window->Post(0, eWM_Quit); }

    const NotingWindow* operator->() const { return m_window; }

private:
    Event m_ready{ true };
    const NotingWindow* m_window = nullptr;
    std::jthread m_thread;
};

TEST(PlatformWindowTest, AWindowIsMadeAndDestroyedOnItsThread)
{
    const std::u16string name = u"Gr\u00fc\u00dfe \u4e2d";
    for (const bool isAsked : { false, true }) { // the class goes, too: its name is free again
        NotingWindow noting(nullptr, name);
        const HWND window = noting.Get();
        EXPECT_EQ(GetWindowClassName(window), name);
        std::jthread([&] {
            EXPECT_TRUE(IsMessageWindow(window));
            EXPECT_EQ(GetWindowValue(window), &noting);
            EXPECT_FALSE(DestroyMessageWindow(window)); // it is another's
        }).join();
        EXPECT_TRUE(noting.IsAlive());
        if (isAsked) {
            noting.Post(0, eWM_Close);
        }
        EXPECT_TRUE(isAsked ? HandleWaitingMessages() : DestroyMessageWindow(window));
        EXPECT_FALSE(noting.IsAlive());
        EXPECT_FALSE(IsMessageWindow(window) || DestroyMessageWindow(window));
        EXPECT_EQ(GetWindowClassName(window), u"");
        EXPECT_EQ(GetWindowValue(window), nullptr);
    }
    EXPECT_EQ(PostToWindow(nullptr, kUser, 0, 0), eP_NoWindow);
}

TEST(PlatformWindowTest, ItsProcedureMayDoAwayWithAWindow)
{
    const WindowProcedure refuse
        = [](HWND window, unsigned int message, unsigned long long wParam, long long lParam) {
              return message == eWM_Create ? -1 : PassToDefault(window, message, wParam, lParam);
          };
    EXPECT_EQ(CreateMessageWindow(u"Refused", refuse, nullptr), nullptr);
    const WindowProcedure destroy
        = [](HWND window, unsigned int message, unsigned long long wParam, long long lParam) {
              EXPECT_TRUE(message != eWM_Create || DestroyMessageWindow(window));
              return PassToDefault(window, message, wParam, lParam);
          };
    EXPECT_EQ(CreateMessageWindow(u"Destroyed", destroy, nullptr), nullptr);
    const NotingWindow window(
        [&](unsigned int, unsigned long long) { EXPECT_TRUE(DestroyMessageWindow(window.Get())); });
    window.Post(1);
    window.Post(2);
    EXPECT_TRUE(HandleWaitingMessages());
    EXPECT_FALSE(IsMessageWindow(window.Get()));
    EXPECT_EQ(window.GetNoted(), Numbers{ 1 });
}

TEST(PlatformWindowTest, MessagesKeepTheirOrderAndAllTheirBits)
{
    const NotingWindow windows[2];
    constexpr unsigned long long kWide = 0xFEDCBA98'76543210;
    for (unsigned int i = 0; i < 9; ++i) {
        EXPECT_EQ(PostToWindow(windows[i % 2].Get(), 65'535 - i, kWide + i, -7ll << 56), eP_Posted);
    }
    SWindowMessage taken;
    for (unsigned int i = 0; i < 9; ++i) {
        EXPECT_EQ(i < 4 ? TakeMessage(taken) : WaitForMessage(taken), eGM_Message);
        EXPECT_TRUE(taken.window == windows[i % 2].Get());
        EXPECT_EQ(taken.message, 65'535 - i);
        EXPECT_EQ(taken.wParam, kWide + i);
        EXPECT_EQ(taken.lParam, -7ll << 56);
    }
    EXPECT_EQ(TakeMessage(taken), eGM_None);
}

TEST(PlatformWindowTest, AWindowTakesItsMessagesWithItAndLeavesThemToNoOther)
{
    const NotingWindow stays;
    auto goes = std::make_unique<NotingWindow>();
    for (unsigned int i = 0; i < 5; ++i) {
        (i % 2 == 0 ? *goes : stays).Post(i);
    }
    SWindowMessage taken;
    EXPECT_EQ(TakeMessage(taken), eGM_Message); // the others are in reach now
    goes->Post(5);
    stays.Post(6);
    std::vector<HWND> gone{ goes->Get() };
    goes = nullptr;
    DispatchToWindow(taken);
    for (int i = 0; i < 1'000; ++i) {
        const NotingWindow another;
        EXPECT_EQ(std::count(gone.begin(), gone.end(), another.Get()), 0);
        another.Post(7);
        gone.push_back(another.Get());
    }
    const NotingWindow last;
    for (const HWND window : gone) {
        EXPECT_EQ(PostToWindow(window, kUser, 8, 0), eP_NoWindow);
    }
    EXPECT_TRUE(HandleWaitingMessages());
    EXPECT_EQ(stays.GetNoted(), (Numbers{ 1, 3, 6 }));
    EXPECT_EQ(last.GetNoted(), Numbers());
}

/// Each message says which window it is for, while the windows of two threads come and go.
TEST(PlatformWindowTest, APostThatRacesWithTheEndReachesNoOtherWindow)
{
    std::atomic<HWND> current = nullptr;
    std::atomic<unsigned int> posted = 0;
    std::atomic<bool> done = false;
    const auto post = [&] {
        while (!done) {
            const HWND window = current;
            (void)GetWindowClassName(window);
            const auto meant
                = static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(window));
            posted += PostToWindow(window, kUser, meant, 0) == eP_Posted ? 1 : 0;
        }
    };
    const auto live = [&] {
        for (int i = 0; i < 200; ++i) {
            const NotingWindow window;
            current = window.Get();
            for (const unsigned int before = posted; posted - before < 3 && !done;) {
                EXPECT_TRUE(HandleWaitingMessages());
            }
            for (const unsigned long long meant : window.GetNoted()) {
                EXPECT_EQ(meant, reinterpret_cast<std::uintptr_t>(window.Get()));
            }
        }
        done = true;
    };
    const std::jthread threads[]
        = { std::jthread(post), std::jthread(post), std::jthread(live), std::jthread(live) };
}

/// A thread with a window that it does not destroy.
struct SMortal
{
    static unsigned int Run(void* mortal)
    {
        auto& self = *static_cast<SMortal*>(mortal);
        self.MakeWindow();
        EXPECT_EQ(PostToWindow(self.window, kUser, 0, 0), eP_Posted);
        self.ready.Set();
        self.live(self);
        return 0;
    }
    void MakeWindow()
    {
        window = CreateMessageWindow(NotingWindow::MakeName().c_str(), &PassToDefault, nullptr);
    }
    void Start()
    {
        ASSERT_TRUE(thread.Create(Run, this, u"mortal"));
        ASSERT_TRUE(thread.Resume());
        ASSERT_EQ(ready.Wait(kPatienceMs), eW_Signaled);
    }
    void ExpectEnd()
    {
        ASSERT_EQ(thread.WaitForEnd(kPatienceMs), eW_Signaled);
        EXPECT_EQ(PostToWindow(window, kUser, 1, 0), eP_NoWindow);
        const NotingWindow later; // perhaps with what the dead has left
        EXPECT_TRUE(HandleWaitingMessages());
        EXPECT_EQ(later.GetNoted(), Numbers());
    }

    void (*live)(SMortal& self);
    HWND window = nullptr;
    Event ready{ true };
    Thread thread{};
};

TEST(PlatformWindowTest, PostingToAThreadThatHasEndedFails)
{
    SMortal ends{ [](SMortal&) {} };
    ends.Start();
    ends.ExpectEnd();
    std::jthread([&] { ends.MakeWindow(); }).join();
    ends.ExpectEnd();
}

TEST(PlatformWindowTest, PostingToAThreadThatWasKilledFails)
{
    SKIP_IF_SIGNALS_ARE_DELAYED();
    SMortal killsItself{ [](SMortal& self) { (void)self.thread.Kill(3); } };
    killsItself.Start();
    killsItself.ExpectEnd();
#if defined(_WIN32) // a thread may not be killed in one of the system's locks
    SMortal isKilled{ [](SMortal&) { (void)Event(false).Wait(kWaitForever); } };
#else
    SMortal isKilled{ [](SMortal&) { (void)runLoop(); } };
#endif
    isKilled.Start();
    ASSERT_TRUE(isKilled.thread.Kill(3));
    isKilled.ExpectEnd();
}

#if !defined(_WIN32)
/// A thread that stands still amidst its work with windows must not stop the others.
TEST(PlatformWindowTest, AStoppedThreadStopsNoOther)
{
    SKIP_IF_SIGNALS_ARE_DELAYED();
    static const auto s_use = [](HWND window) {
        EXPECT_EQ(PostToWindow(window, kUser, 0, 0), eP_Posted);
        SetWindowValue(window, nullptr);
        // Of a short name, for a thread may be killed in the memory allocator.
        const HWND another = CreateMessageWindow(u"Short", &PassToDefault, nullptr);
        EXPECT_EQ(GetWindowClassName(another), u"Short");
        EXPECT_TRUE(DestroyMessageWindow(another));
    };
    SMortal busy{ [](SMortal& self) {
        for (SWindowMessage message;; (void)TakeMessageOf(self.window, kUser, message)) {
            s_use(self.window);
        }
    } };
    busy.Start();
    for (int i = 0; i < 1'000; ++i) {
        ASSERT_TRUE(busy.thread.Suspend());
        s_use(busy.window);
        ASSERT_TRUE(busy.thread.Resume());
    }
    ASSERT_TRUE(busy.thread.Kill(3));
    busy.ExpectEnd();
}
#endif

TEST(PlatformWindowTest, AQuitMessageKeepsItsPlaceAndThoseBehindItWait)
{
    const NotingWindow window;
    for (const bool waits : { true, false }) {
        window.Post(1);
        window.Post(0, eWM_Quit);
        window.Post(2);
        window.Post(3, kUser + 1);
        SWindowMessage message;
        EXPECT_TRUE(TakeMessageOf(window.Get(), kUser + 1, message));
        EXPECT_TRUE(waits ? runLoop() : !HandleWaitingMessages());
        EXPECT_EQ(window.GetNoted().back(), 1u);
        EXPECT_TRUE(HandleWaitingMessages());
        EXPECT_EQ(window.GetNoted().back(), 2u);
    }
    EXPECT_EQ(window.GetNoted().size(), 4u);
}

/// Every message posts another, and some do more.
TEST(PlatformWindowTest, HandlingWhatWaitsLeavesWhatComesMeanwhile)
{
    constexpr unsigned int kDestroys = kUser + 1;
    constexpr unsigned int kHandles = kUser + 2;
    constexpr unsigned int kLoops = kUser + 3;
    auto goes = std::make_unique<NotingWindow>();
    const NotingWindow window([&](unsigned int message, unsigned long long number) {
        window.Post(number + 10);
        if (message == kDestroys) {
            goes = nullptr;
        } else if (message == kHandles) {
            EXPECT_TRUE(HandleWaitingMessages());
        } else if (message == kLoops) {
            window.Post(0, eWM_Quit);
            EXPECT_TRUE(runLoop());
        }
    });
    window.Post(1, kDestroys);
    goes->Post(2);
    window.Post(3);
    EXPECT_TRUE(HandleWaitingMessages()); // 1, 3
    EXPECT_TRUE(HandleWaitingMessages()); // 11, 13
    window.Post(4, kHandles);
    window.Post(5);
    EXPECT_TRUE(HandleWaitingMessages()); // up to 4; in it, up to 14
    window.Post(6, kLoops);
    EXPECT_TRUE(HandleWaitingMessages()); // up to 6; in it, up to 16
    EXPECT_TRUE(HandleWaitingMessages());
    EXPECT_EQ(window.GetNoted(),
        (Numbers{ 1, 3, 11, 13, 21, 23, 4, 5, 31, 33, 14, 15, 41, 43, 24, 6, 25, 51, 53, 34, 16, 35,
            61, 63, 44, 26 }));
}

TEST(PlatformWindowTest, OfEqualMessagesThoseThatComeMeanwhileAreLeft)
{
    const NotingWindow window([&](unsigned int, unsigned long long number) {
        if (number == 1) {
            window.Post(2);
        }
    });
    SWindowMessage message;
    window.Post(0);
    window.Post(1);
    EXPECT_EQ(TakeMessage(message), eGM_Message);
    window.Post(2);
    EXPECT_TRUE(HandleWaitingMessages());
    EXPECT_EQ(window.GetNoted(), (Numbers{ 1, 2 }));
    EXPECT_TRUE(HandleWaitingMessages());
    EXPECT_EQ(window.GetNoted(), (Numbers{ 1, 2, 2 }));
}

TEST(PlatformWindowTest, TheDescriptorIsReadableWhileMessagesWait)
{
#if defined(_WIN32)
    EXPECT_EQ(GetMessageDescriptor(), -1);
    GTEST_SKIP() << "Windows tells of messages by no descriptor: any loop that serves windows "
                    "serves these, and the function answers -1, which is checked above";
#else
    int descriptor = -1;
    std::jthread([&] { // a thread that has not had one before
        auto goes = std::make_unique<NotingWindow>();
        const NotingWindow window;
        window.Post(1);
        descriptor = GetMessageDescriptor();
        const auto isReadable = [&](int milliseconds = 0) {
            pollfd poll{ descriptor, POLLIN, 0 };
            return ::poll(&poll, 1, milliseconds) == 1;
        };
        window.Post(2);
        SWindowMessage message;
        for (int taken = 0; taken < 2; ++taken) {
            EXPECT_TRUE(isReadable());
            EXPECT_EQ(TakeMessage(message), eGM_Message);
        }
        EXPECT_FALSE(isReadable());
        window.Post(3);
        goes->Post(4);
        EXPECT_TRUE(TakeMessageOf(window.Get(), kUser, message));
        EXPECT_TRUE(isReadable());
        goes = nullptr;
        EXPECT_FALSE(isReadable());
        for (unsigned int i = 1; i <= 300; ++i) {
            const std::jthread poster([&] { window.Post(i); });
            ASSERT_TRUE(isReadable(kPatienceMs));
            ASSERT_TRUE(HandleWaitingMessages());
            ASSERT_EQ(window.GetNoted().size(), i);
            ASSERT_FALSE(isReadable());
        }
    })
        .join();
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1); // closed with its thread
#endif
}

TEST(PlatformWindowTest, AMessageIsTakenByNumberOutOfOrder)
{
    const NotingWindow windows[2];
    SWindowMessage message;
    windows[0].Post(0);
    windows[1].Post(1, kUser + 1);
    windows[0].Post(2, kUser + 1);
    EXPECT_EQ(TakeMessage(message), eGM_Message);
    windows[0].Post(3, kUser + 1); // farther away than those before
    windows[0].Post(4);
    for (const unsigned int number : { 2u, 3u }) {
        EXPECT_TRUE(TakeMessageOf(windows[0].Get(), kUser + 1, message));
        EXPECT_TRUE(message.window == windows[0].Get() && message.message == kUser + 1);
        EXPECT_EQ(message.wParam, number);
    }
    EXPECT_FALSE(TakeMessageOf(windows[0].Get(), kUser + 1, message));
    EXPECT_TRUE(HandleWaitingMessages());
    EXPECT_EQ(windows[0].GetNoted(), Numbers{ 4 });
    EXPECT_EQ(windows[1].GetNoted(), Numbers{ 1 });
}

TEST(PlatformWindowTest, AThreadIsWokenLaterUnlessAnotherWakesItBefore)
{
    Event handled[] = { Event(false), Event(false), Event(false), Event(false) };
    const auto wait = [&](std::size_t number) {
        EXPECT_EQ(handled[number].Wait(kPatienceMs), eW_Signaled) << number;
    };
    const auto note = [&](unsigned int, unsigned long long number) { handled[number].Set(); };
    const LoopThread first(note);
    const LoopThread second(note);
    for (int i = 0; i < 1'000 && !HasFailure(); ++i) {
        {
            const WakeLater later;
            if (i % 3 != 0) {
                (i % 3 == 1 ? first : second)->Post(0);
            }
            {
                const WakeLater nested;
                first->Post(1);
                second->Post(2);
            }
            std::jthread([&] {
                first->Post(3);
                wait(3);
            }).join();
        }
        wait(1);
        wait(2);
        if (i % 3 != 0) {
            wait(0);
        }
    }
}

TEST(PlatformWindowTest, AThreadIsWokenBeforeTheLoopEndsThatPutThisOff)
{
    Event handled(false);
    const LoopThread other([&](unsigned int, unsigned long long) { handled.Set(); });
    const NotingWindow window([&](unsigned int, unsigned long long number) {
        const WakeLater later(eWU_NextRow);
        other->Post(number);
    });
    for (unsigned int i = 0; i < 300 && !HasFailure(); ++i) {
        window.Post(i);
        window.Post(0, eWM_Quit);
        EXPECT_TRUE(runLoop());
        EXPECT_EQ(handled.Wait(kPatienceMs), eW_Signaled) << i;
    }
}

TEST(PlatformWindowTest, TestsRefuseMessages)
{
    const NotingWindow window;
    SetPostRefusal([](HWND, unsigned int message) { return message == kUser + 1; });
    window.Post(1);
    EXPECT_EQ(PostToWindow(window.Get(), kUser + 1, 2, 0), eP_Full);
    SetPostRefusal(nullptr);
    window.Post(3, kUser + 1);
    EXPECT_TRUE(HandleWaitingMessages());
    EXPECT_EQ(window.GetNoted(), (Numbers{ 1, 3 }));
}

} // namespace
