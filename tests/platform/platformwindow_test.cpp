#include "platform/platformwindow.h"

#include "platform/platformclock.h"
#include "platform/platformerror.h"
#include "platform/platformevent.h"
#include "platform/platformtaskmemory.h"
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
#include <initializer_list>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using platform::Event;
using platform::SWindowMessage;
using Numbers = std::vector<unsigned long long>;

constexpr unsigned int kPatienceMs = 60'000; // spent in full only by a failing test
constexpr unsigned int kUser = platform::eWM_FirstUser;

/// A window that notes the first parameters of its users' messages, and then does what the test
/// asks for.
class NotingWindow
{
public:
    using Reaction = std::function<void(unsigned int message, unsigned long long wParam)>;

    explicit NotingWindow(Reaction reaction = nullptr)
        : m_reaction(std::move(reaction))
        , m_window(platform::CreateMessageWindow(MakeClassName().c_str(), &receive, this))
    {
    }
    ~NotingWindow()
    {
        if (platform::IsMessageWindow(m_window)) {
            EXPECT_TRUE(platform::DestroyMessageWindow(m_window));
        }
    }
    NotingWindow(const NotingWindow&) = delete;
    NotingWindow& operator=(const NotingWindow&) = delete;

    static std::u16string MakeClassName()
    {
        static std::atomic<int> s_count = 0;
        const std::string number = std::to_string(++s_count);
        return u"NotingWindow" + std::u16string(number.begin(), number.end());
    }

    HWND Get() const { return m_window; }
    platform::EPost Post(unsigned long long number, unsigned int message = kUser) const
    {
        return platform::PostToWindow(m_window, message, number, 0);
    }
    const Numbers& GetNoted() const { return m_noted; }

private:
    static long long receive(
        HWND window, unsigned int message, unsigned long long wParam, long long lParam)
    {
        if (message == platform::eWM_Create) {
            platform::SetWindowValue(window, platform::GetCreationParameter(lParam));
        }
        auto* const self = static_cast<NotingWindow*>(platform::GetWindowValue(window));
        if (message < kUser || self == nullptr) {
            return platform::PassToDefault(window, message, wParam, lParam);
        }
        EXPECT_TRUE(self->m_window == window);
        self->m_noted.push_back(wParam);
        if (self->m_reaction) {
            self->m_reaction(message, wParam);
        }
        return 0;
    }

    Reaction m_reaction;
    Numbers m_noted;
    HWND m_window;
};

/// The loop of a thread: false where it did not end with a quit message.
bool runLoop()
{
    SWindowMessage message;
    platform::EGetMessage result{};
    while ((result = platform::WaitForMessage(message)) == platform::eGM_Message) {
        platform::DispatchToWindow(message);
    }
    return result == platform::eGM_Quit;
}

/// A thread with a window and a loop.
class LoopThread
{
public:
    explicit LoopThread(NotingWindow::Reaction reaction)
        : m_thread([this, reaction = std::move(reaction)] {
            const NotingWindow window(reaction);
            m_window = &window;
            m_ready.Set();
            EXPECT_TRUE(runLoop());
        })
    {
        EXPECT_EQ(m_ready.Wait(kPatienceMs), platform::eW_Signaled);
    }
    ~LoopThread() { EXPECT_EQ(m_window->Post(0, platform::eWM_Quit), platform::eP_Posted); }

    const NotingWindow* operator->() const { return m_window; }

private:
    Event m_ready{ true };
    const NotingWindow* m_window = nullptr;
    std::jthread m_thread;
};

TEST(PlatformWindowTest, AWindowIsMadeAndDestroyedOnItsThread)
{
    struct SSeen
    {
        unsigned int message;
        HWND window;
    };
    static std::vector<SSeen> s_seen;
    s_seen.clear();
    int parameter = 0;
    const auto procedure = [](HWND window, unsigned int message, unsigned long long wParam,
                               long long lParam) -> long long {
        if (message == platform::eWM_Create) {
            ++*static_cast<int*>(platform::GetCreationParameter(lParam));
        }
        if (message == platform::eWM_Create || message == platform::eWM_Destroy) {
            EXPECT_TRUE(platform::IsMessageWindow(window));
            s_seen.push_back({ message, window });
        }
        return platform::PassToDefault(window, message, wParam, lParam);
    };
    for (const bool asksToClose : { false, true }) { // the class goes, too: its name is free again
        s_seen.clear();
        const HWND window
            = platform::CreateMessageWindow(u"Gr\u00fc\u00dfe \u4e2d", procedure, &parameter);
        ASSERT_NE(window, nullptr);
        EXPECT_EQ(parameter, asksToClose ? 2 : 1);
        EXPECT_EQ(platform::GetWindowClassName(window), u"Gr\u00fc\u00dfe \u4e2d");
        EXPECT_EQ(platform::GetWindowValue(window), nullptr);
        platform::SetWindowValue(window, &parameter);
        std::jthread([&] {
            EXPECT_EQ(platform::GetWindowValue(window), &parameter);
            EXPECT_TRUE(platform::IsMessageWindow(window));
            EXPECT_FALSE(platform::DestroyMessageWindow(window)); // it is another's
        }).join();
        ASSERT_EQ(s_seen.size(), 1u);
        if (asksToClose) {
            platform::PassToDefault(window, platform::eWM_Close, 0, 0);
        } else {
            EXPECT_TRUE(platform::DestroyMessageWindow(window));
        }
        ASSERT_EQ(s_seen.size(), 2u);
        EXPECT_EQ(s_seen[0].message, platform::eWM_Create);
        EXPECT_EQ(s_seen[1].message, platform::eWM_Destroy);
        EXPECT_TRUE(s_seen[0].window == window && s_seen[1].window == window);
        EXPECT_FALSE(platform::IsMessageWindow(window));
        EXPECT_EQ(platform::GetWindowClassName(window), u"");
        EXPECT_EQ(platform::GetWindowValue(window), nullptr);
        EXPECT_FALSE(platform::DestroyMessageWindow(window));
        EXPECT_NE(platform::GetLastSystemError().number, 0u);
        EXPECT_EQ(platform::PostToWindow(window, kUser, 0, 0), platform::eP_NoWindow);
    }
    EXPECT_EQ(platform::PostToWindow(nullptr, kUser, 0, 0), platform::eP_NoWindow);
}

TEST(PlatformWindowTest, ItsProcedureMayDoAwayWithAWindow)
{
    const std::u16string name = NotingWindow::MakeClassName();
    const auto create = [&](platform::WindowProcedure procedure) {
        return platform::CreateMessageWindow(name.c_str(), procedure, nullptr);
    };
    using Ull = unsigned long long;
    EXPECT_EQ(create([](HWND window, unsigned int message, Ull wParam, long long lParam) {
        return message != platform::eWM_Create
            ? platform::PassToDefault(window, message, wParam, lParam)
            : -1; // it refuses
    }),
        nullptr);
    EXPECT_EQ(create([](HWND window, unsigned int message, Ull wParam, long long lParam) {
        if (message == platform::eWM_Create) {
            EXPECT_TRUE(platform::DestroyMessageWindow(window));
            return 0ll;
        }
        return platform::PassToDefault(window, message, wParam, lParam);
    }),
        nullptr);
    const HWND window = create([](HWND own, unsigned int message, Ull wParam, long long lParam) {
        if (message == kUser) {
            EXPECT_TRUE(platform::DestroyMessageWindow(own));
            EXPECT_FALSE(platform::IsMessageWindow(own));
            return 0ll;
        }
        EXPECT_LT(message, kUser);
        return platform::PassToDefault(own, message, wParam, lParam);
    });
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(platform::PostToWindow(window, kUser, 0, 0), platform::eP_Posted);
    EXPECT_EQ(platform::PostToWindow(window, kUser + 1, 0, 0), platform::eP_Posted);
    EXPECT_TRUE(platform::HandleWaitingMessages());
    EXPECT_FALSE(platform::IsMessageWindow(window));
    SWindowMessage message;
    EXPECT_EQ(platform::TakeMessage(message), platform::eGM_None);
}

TEST(PlatformWindowTest, MessagesToAThreadKeepTheirOrderAndAllTheirBits)
{
    const NotingWindow windows[] = { NotingWindow(), NotingWindow() };
    SWindowMessage message;
    EXPECT_EQ(platform::TakeMessage(message), platform::eGM_None);
    constexpr unsigned int kNumbers[] = { platform::eWM_Command, kUser, platform::eWM_FirstApp,
        platform::eWM_FirstRegistered, 65'535 };
    constexpr unsigned long long kWide = 0xFEDCBA98'76543210;
    for (std::size_t i = 0; i < std::size(kNumbers); ++i) {
        ASSERT_EQ(platform::PostToWindow(windows[i % 2].Get(), kNumbers[i], kWide + i,
                      -static_cast<long long>(kWide >> i)),
            platform::eP_Posted);
    }
    for (std::size_t i = 0; i < std::size(kNumbers); ++i) {
        ASSERT_EQ(i % 2 == 0 ? platform::WaitForMessage(message) : platform::TakeMessage(message),
            platform::eGM_Message);
        EXPECT_TRUE(message.window == windows[i % 2].Get());
        EXPECT_EQ(message.message, kNumbers[i]);
        EXPECT_EQ(message.wParam, kWide + i);
        EXPECT_EQ(message.lParam, -static_cast<long long>(kWide >> i));
    }
    EXPECT_EQ(platform::TakeMessage(message), platform::eGM_None);
}

/// The thread falls asleep again and again, as the posters wait for it after each row.
TEST(PlatformWindowTest, NoWakingIsLostAndEachPosterKeepsItsOrder)
{
    constexpr std::size_t kPosters = 3;
    constexpr unsigned int kRows = 1'000;
    Event handled[kPosters] = { Event(false), Event(false), Event(false) };
    unsigned long long next[kPosters] = {};
    constexpr unsigned int kRowEnds = kUser + 100;
    const LoopThread thread([&](unsigned int message, unsigned long long number) {
        const std::size_t poster = (message - kUser) % 100;
        EXPECT_EQ(number, next[poster]++);
        if (message >= kRowEnds) {
            handled[poster].Set();
        }
    });
    std::vector<std::jthread> posters;
    for (unsigned int poster = 0; poster < kPosters; ++poster) {
        posters.emplace_back([&, poster] {
            unsigned long long number = 0;
            for (unsigned int row = 0; row < kRows; ++row) {
                for (unsigned int i = 0; i < row % 4; ++i) {
                    ASSERT_EQ(thread->Post(number++, kUser + poster), platform::eP_Posted);
                }
                ASSERT_EQ(thread->Post(number++, kRowEnds + poster), platform::eP_Posted);
                ASSERT_EQ(handled[poster].Wait(kPatienceMs), platform::eW_Signaled);
            }
        });
    }
}

TEST(PlatformWindowTest, AWindowTakesItsMessagesWithItAndLeavesThemToNoOther)
{
    const NotingWindow stays;
    auto goes = std::make_unique<NotingWindow>();
    for (unsigned int i = 0; i < 5; ++i) {
        ASSERT_EQ(i % 2 == 0 ? goes->Post(i) : stays.Post(i), platform::eP_Posted);
    }
    SWindowMessage taken;
    ASSERT_EQ(platform::TakeMessage(taken), platform::eGM_Message); // and the others are in reach
    ASSERT_EQ(goes->Post(5), platform::eP_Posted);
    ASSERT_EQ(stays.Post(6), platform::eP_Posted);
    std::vector<HWND> gone{ goes->Get() };
    goes.reset();
    platform::DispatchToWindow(taken);
    for (int i = 0; i < 1'000; ++i) {
        auto another = std::make_unique<NotingWindow>();
        EXPECT_EQ(std::count(gone.begin(), gone.end(), another->Get()), 0);
        EXPECT_EQ(another->Post(7), platform::eP_Posted);
        gone.push_back(another->Get());
    }
    const NotingWindow last;
    for (const HWND window : gone) {
        EXPECT_EQ(platform::PostToWindow(window, kUser, 8, 0), platform::eP_NoWindow);
    }
    EXPECT_TRUE(platform::HandleWaitingMessages());
    EXPECT_EQ(stays.GetNoted(), (Numbers{ 1, 3, 6 }));
    EXPECT_EQ(last.GetNoted(), Numbers());
}

/// Each message says which window it is for, and the windows come and go.
TEST(PlatformWindowTest, APostThatRacesWithTheEndReachesNoOtherWindow)
{
    std::atomic<HWND> current = nullptr;
    std::atomic<unsigned long long> posted = 0;
    std::atomic<int> running = 2;
    const auto post = [&] {
        while (running != 0) {
            const HWND window = current;
            if (window != nullptr
                && platform::PostToWindow(
                       window, kUser, reinterpret_cast<std::uintptr_t>(window), 0)
                    == platform::eP_Posted) {
                ++posted;
            }
            (void)platform::GetWindowClassName(window);
            (void)platform::GetWindowValue(window);
        }
    };
    const auto live = [&] {
        for (int i = 0; i < 500; ++i) {
            const NotingWindow window;
            current = window.Get();
            const unsigned long long before = posted;
            while (posted < before + 3 && running == 2) {
                EXPECT_TRUE(platform::HandleWaitingMessages());
            }
            for (const unsigned long long meant : window.GetNoted()) {
                EXPECT_EQ(meant, reinterpret_cast<std::uintptr_t>(window.Get()));
            }
        }
        --running;
    };
    const std::jthread threads[]
        = { std::jthread(post), std::jthread(post), std::jthread(live), std::jthread(live) };
}

/// Makes a window that nobody destroys, and ends in one of several ways.
struct SMortal
{
    static HWND Make()
    {
        return platform::CreateMessageWindow(
            NotingWindow::MakeClassName().c_str(), &platform::PassToDefault, nullptr);
    }
    static unsigned int Run(void* mortal)
    {
        auto* const self = static_cast<SMortal*>(mortal);
        self->window = Make();
        EXPECT_EQ(platform::PostToWindow(self->window, kUser, 0, 0), platform::eP_Posted);
        self->ready.Set();
        self->end(*self);
        return 0;
    }
    void ExpectEnd(bool isKilled)
    {
        ASSERT_TRUE(thread.Create(Run, this, u"mortal"));
        ASSERT_TRUE(thread.Resume());
        ASSERT_EQ(ready.Wait(kPatienceMs), platform::eW_Signaled);
        if (isKilled) {
            ASSERT_TRUE(thread.Kill(3));
        }
        ASSERT_EQ(thread.WaitForEnd(kPatienceMs), platform::eW_Signaled);
        EXPECT_EQ(platform::PostToWindow(window, kUser, 1, 0), platform::eP_NoWindow);
        EXPECT_NE(platform::GetLastSystemError().number, 0u);
        EXPECT_FALSE(platform::IsMessageWindow(window));
        const NotingWindow later; // perhaps with what the dead has left
        EXPECT_TRUE(platform::HandleWaitingMessages());
        EXPECT_EQ(later.GetNoted(), Numbers());
    }

    void (*end)(SMortal& self);
    HWND window = nullptr;
    Event ready{ false };
    Event never{ false };
    platform::Thread thread{};
};

TEST(PlatformWindowTest, PostingToAThreadThatHasEndedFails)
{
    SMortal{ [](SMortal&) {} }.ExpectEnd(false);
    HWND window = nullptr;
    std::jthread([&] { window = SMortal::Make(); }).join();
    EXPECT_EQ(platform::PostToWindow(window, kUser, 1, 0), platform::eP_NoWindow);
}

TEST(PlatformWindowTest, PostingToAThreadThatWasKilledFails)
{
    SKIP_IF_SIGNALS_ARE_DELAYED();
    SMortal{ [](SMortal& self) { (void)self.thread.Kill(3); } }.ExpectEnd(false);
    SMortal{ [](SMortal& self) { (void)self.never.Wait(platform::kWaitForever); } }.ExpectEnd(true);
#if !defined(_WIN32) // there a thread may be killed in one of the system's locks
    SMortal{ [](SMortal&) { (void)runLoop(); } }.ExpectEnd(true);
#endif
}

#if !defined(_WIN32)
/// A thread that stands still amidst its work with windows must not stop the others.
TEST(PlatformWindowTest, AStoppedThreadStopsNoOther)
{
    SKIP_IF_SIGNALS_ARE_DELAYED();
    const NotingWindow window;
    SMortal busy{ [](SMortal& self) {
        for (;;) {
            const platform::WakeLater later;
            (void)platform::PostToWindow(self.window, kUser, 0, 0);
            (void)platform::GetWindowClassName(self.window);
            platform::SetWindowValue(self.window, nullptr);
            EXPECT_TRUE(platform::DestroyMessageWindow(SMortal::Make()));
            SWindowMessage message;
            (void)platform::TakeMessageOf(self.window, kUser, message);
        }
    } };
    ASSERT_TRUE(busy.thread.Create(SMortal::Run, &busy, u"busy"));
    ASSERT_TRUE(busy.thread.Resume());
    ASSERT_EQ(busy.ready.Wait(kPatienceMs), platform::eW_Signaled);
    for (int i = 0; i < 1'000; ++i) {
        ASSERT_TRUE(busy.thread.Suspend());
        EXPECT_EQ(platform::PostToWindow(busy.window, kUser, 0, 0), platform::eP_Posted);
        platform::SetWindowValue(busy.window, &busy);
        const HWND own = SMortal::Make();
        EXPECT_NE(platform::GetWindowClassName(own), u"");
        EXPECT_TRUE(platform::DestroyMessageWindow(own));
        ASSERT_TRUE(busy.thread.Resume());
    }
    ASSERT_TRUE(busy.thread.Kill(3));
}
#endif

TEST(PlatformWindowTest, AQuitMessageKeepsItsPlaceAndThoseBehindItWait)
{
    const NotingWindow window;
    const auto post = [&] {
        EXPECT_EQ(window.Post(1), platform::eP_Posted);
        EXPECT_EQ(window.Post(0, platform::eWM_Quit), platform::eP_Posted);
        EXPECT_EQ(window.Post(2), platform::eP_Posted);
        EXPECT_EQ(window.Post(3, kUser + 1), platform::eP_Posted);
        SWindowMessage message;
        EXPECT_TRUE(platform::TakeMessageOf(window.Get(), kUser + 1, message));
        EXPECT_EQ(message.wParam, 3u);
    };
    post();
    EXPECT_TRUE(runLoop());
    EXPECT_EQ(window.GetNoted(), Numbers{ 1 });
    post();
    EXPECT_FALSE(platform::HandleWaitingMessages() && platform::HandleWaitingMessages());
    EXPECT_EQ(window.GetNoted(), (Numbers{ 1, 2, 1 }));
    EXPECT_TRUE(platform::HandleWaitingMessages());
    EXPECT_EQ(window.GetNoted(), (Numbers{ 1, 2, 1, 2 }));
}

TEST(PlatformWindowTest, HandlingWhatWaitsLeavesWhatComesMeanwhile)
{
    auto goes = std::make_unique<NotingWindow>();
    NotingWindow* self = nullptr;
    NotingWindow window([&](unsigned int message, unsigned long long number) {
        EXPECT_EQ(self->Post(number + 10), platform::eP_Posted);
        if (message == kUser + 1) { // takes away what would have been next
            goes.reset();
        } else if (message == kUser + 2) { // in a loop of its own, which handles its own post, too
            EXPECT_TRUE(platform::HandleWaitingMessages());
        } else if (message == kUser + 3) {
            EXPECT_EQ(self->Post(0, platform::eWM_Quit), platform::eP_Posted);
            EXPECT_TRUE(runLoop());
        }
    });
    self = &window;
    const auto handle = [&](std::initializer_list<unsigned int> messages) {
        unsigned int number = 0;
        for (const unsigned int message : messages) {
            ++number;
            EXPECT_EQ(message != 0 ? window.Post(number, message) : goes->Post(number),
                platform::eP_Posted);
        }
        EXPECT_TRUE(platform::HandleWaitingMessages());
    };
    handle({ kUser + 1, 0, 0, kUser });
    EXPECT_EQ(window.GetNoted(), (Numbers{ 1, 4 }));
    handle({ kUser + 2, kUser, kUser });
    EXPECT_EQ(window.GetNoted(), (Numbers{ 1, 4, 11, 14, 1, 2, 3, 21, 24, 11 }));
    handle({});
    EXPECT_EQ(window.GetNoted().size(), 15u); // 12, 13, 31, 34, 21
    SWindowMessage message;
    while (platform::TakeMessage(message) != platform::eGM_None) { }
    handle({ kUser + 3, kUser });
    Numbers last(window.GetNoted().begin() + 15, window.GetNoted().end());
    EXPECT_EQ(last, (Numbers{ 1, 2, 11 }));
    EXPECT_EQ(platform::TakeMessage(message), platform::eGM_Message);
    EXPECT_EQ(message.wParam, 12u);
}

TEST(PlatformWindowTest, TheDescriptorIsReadableWhileMessagesWait)
{
#if defined(_WIN32)
    EXPECT_EQ(platform::GetMessageDescriptor(), -1);
    GTEST_SKIP() << "the system has no descriptors";
#else
    std::jthread([] { // which has not had one before
        auto goes = std::make_unique<NotingWindow>();
        const NotingWindow window;
        EXPECT_EQ(window.Post(1), platform::eP_Posted);
        const int descriptor = platform::GetMessageDescriptor();
        const auto isReadable = [&](int milliseconds = 0) {
            pollfd poll{ descriptor, POLLIN, 0 };
            return ::poll(&poll, 1, milliseconds) == 1;
        };
        EXPECT_TRUE(isReadable());
        EXPECT_EQ(window.Post(2), platform::eP_Posted);
        EXPECT_EQ(window.Post(3, kUser + 1), platform::eP_Posted);
        SWindowMessage message;
        for (int left = 3; left > 0; --left) {
            EXPECT_EQ(platform::GetMessageDescriptor(), descriptor);
            EXPECT_TRUE(isReadable());
            EXPECT_EQ(platform::TakeMessage(message), platform::eGM_Message);
        }
        EXPECT_FALSE(isReadable());
        for (int i = 0; i < 2; ++i) { // one is in reach, one is not
            EXPECT_EQ(window.Post(4), platform::eP_Posted);
            EXPECT_EQ(goes->Post(5), platform::eP_Posted);
        }
        EXPECT_EQ(platform::TakeMessage(message), platform::eGM_Message);
        EXPECT_TRUE(platform::TakeMessageOf(window.Get(), kUser, message));
        EXPECT_TRUE(isReadable());
        goes.reset();
        EXPECT_FALSE(isReadable());
        EXPECT_EQ(window.Post(6), platform::eP_Posted);
        EXPECT_TRUE(platform::TakeMessageOf(window.Get(), kUser, message));
        EXPECT_FALSE(isReadable());
        for (unsigned long long i = 1; i <= 1'000; ++i) {
            const std::jthread poster([&] { EXPECT_EQ(window.Post(i), platform::eP_Posted); });
            ASSERT_TRUE(isReadable(kPatienceMs));
            ASSERT_TRUE(platform::HandleWaitingMessages());
            ASSERT_EQ(window.GetNoted().size(), i);
            ASSERT_FALSE(isReadable());
        }
    })
        .join();
    int ofThread = -1;
    std::jthread([&] { ofThread = platform::GetMessageDescriptor(); }).join();
    ASSERT_NE(ofThread, -1);
    EXPECT_EQ(::fcntl(ofThread, F_GETFD), -1); // closed with its thread
#endif
}

TEST(PlatformWindowTest, AMessageIsTakenByNumberOutOfOrder)
{
    const NotingWindow windows[] = { NotingWindow(), NotingWindow() };
    SWindowMessage message;
    EXPECT_EQ(windows[0].Post(0), platform::eP_Posted);
    EXPECT_EQ(windows[1].Post(1, kUser + 1), platform::eP_Posted);
    EXPECT_EQ(windows[0].Post(2, kUser + 1), platform::eP_Posted);
    EXPECT_EQ(platform::TakeMessage(message), platform::eGM_Message);
    EXPECT_EQ(windows[0].Post(3, kUser + 1), platform::eP_Posted);
    EXPECT_EQ(windows[0].Post(4), platform::eP_Posted);
    for (const unsigned long long number : { 2u, 3u }) { // in reach or not
        EXPECT_TRUE(platform::TakeMessageOf(windows[0].Get(), kUser + 1, message));
        EXPECT_TRUE(message.window == windows[0].Get());
        EXPECT_EQ(message.wParam, number);
    }
    EXPECT_FALSE(platform::TakeMessageOf(windows[0].Get(), kUser + 1, message));
    EXPECT_TRUE(platform::HandleWaitingMessages());
    EXPECT_EQ(windows[1].GetNoted(), Numbers{ 1 });
    EXPECT_EQ(windows[0].GetNoted(), Numbers{ 4 });
}

/// Who puts off waking a thread keeps nobody else from waking it.
TEST(PlatformWindowTest, AThreadIsWokenLaterUnlessAnotherWakesIt)
{
    constexpr int kRounds = 300;
    Event handled[] = { Event(false), Event(false), Event(false) };
    const auto note = [&](unsigned int, unsigned long long number) { handled[number].Set(); };
    const LoopThread threads[] = { LoopThread(note), LoopThread(note) };
    for (int i = 0; i < kRounds; ++i) {
        {
            const platform::WakeLater later;
            ASSERT_EQ(threads[0]->Post(0), platform::eP_Posted);
            {
                const platform::WakeLater nested;
                ASSERT_EQ(threads[i % 2]->Post(1), platform::eP_Posted);
                ASSERT_EQ(threads[1 - i % 2]->Post(1), platform::eP_Posted);
            }
            std::jthread([&] {
                ASSERT_EQ(threads[0]->Post(2), platform::eP_Posted);
                ASSERT_EQ(handled[2].Wait(kPatienceMs), platform::eW_Signaled) << i;
            }).join();
        }
        ASSERT_EQ(handled[0].Wait(kPatienceMs), platform::eW_Signaled) << i;
        ASSERT_EQ(handled[1].Wait(kPatienceMs), platform::eW_Signaled) << i;
        {
            const platform::WakeLater later;
            const platform::WakeLater nested;
            ASSERT_EQ(threads[1]->Post(0), platform::eP_Posted);
        }
        ASSERT_EQ(handled[0].Wait(kPatienceMs), platform::eW_Signaled) << i;
    }
}

TEST(PlatformWindowTest, TestsRefuseMessages)
{
    const NotingWindow window;
    platform::SetPostRefusal([](HWND, unsigned int message) { return message == kUser + 1; });
    EXPECT_EQ(window.Post(1), platform::eP_Posted);
    EXPECT_EQ(window.Post(2, kUser + 1), platform::eP_Full);
    EXPECT_NE(platform::GetLastSystemError().number, 0u);
    platform::SetPostRefusal(nullptr);
    EXPECT_EQ(window.Post(3, kUser + 1), platform::eP_Posted);
    EXPECT_TRUE(platform::HandleWaitingMessages());
    EXPECT_EQ(window.GetNoted(), (Numbers{ 1, 3 }));
}

TEST(PlatformWindowTest, TaskMemoryGoesWithAMessage)
{
    const LoopThread thread([](unsigned int, unsigned long long block) {
        auto* const text = reinterpret_cast<char*>(static_cast<std::uintptr_t>(block));
        EXPECT_STREQ(text, "text");
        platform::FreeTaskMemory(text);
    });
    auto* const block = static_cast<char*>(platform::AllocateTaskMemory(5));
    ASSERT_NE(block, nullptr);
    std::char_traits<char>::copy(block, "text", 5);
    ASSERT_EQ(thread->Post(reinterpret_cast<std::uintptr_t>(block)), platform::eP_Posted);
    platform::FreeTaskMemory(nullptr);
}

} // namespace
