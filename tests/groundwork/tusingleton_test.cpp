#include "groundwork/tusingleton.h"

#include "groundwork/tuevent.h"
#include "groundwork/tuloglistenermanager.h"
#include "groundwork/tuperformancecounter.h"
#include "platform/platformlibrary.h"
#include "platform/platformterminal.h"
#include "platform/platformtext.h"
#include "support/testlatch.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <set>
#include <thread>
#include <vector>

namespace {

constexpr unsigned int kPatienceMs = 60'000; // spent in full only by a failing test

class Raced : public TuSingleton<Raced>
{
public:
    static inline std::atomic<int> s_constructed = 0;

private:
    friend class TuSingleton<Raced>;
    Raced() { ++s_constructed; }
};

TEST(TuSingletonTest, SixteenThreadsAtOnceGetOneObject)
{
    EXPECT_FALSE(Raced::HasInstance());
    constexpr int kThreads = 16;
    TestLatch start(kThreads);
    std::vector<Raced*> found(kThreads);
    std::vector<std::jthread> threads;
    for (Raced*& instance : found) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            instance = &Raced::GetInstance();
        });
    }
    threads.clear();
    EXPECT_EQ(std::set<Raced*>(found.begin(), found.end()).size(), 1u);
    EXPECT_EQ(Raced::s_constructed, 1);
    EXPECT_TRUE(Raced::HasInstance());
}

/// Has a thread that asks for the object before the hook that started it has returned.
class WithThread : public TuSingleton<WithThread>
{
public:
    bool IsServed() const { return m_served; }

private:
    friend class TuSingleton<WithThread>;
    WithThread() = default;
    ~WithThread() override { m_thread.join(); }
    void onInstanceCreated() noexcept
    {
        m_thread = std::thread([this] {
            m_served = HasInstance() && &GetInstance() == this;
            m_ready.Set();
        });
        m_ready.Wait(kPatienceMs);
    }

    TuEvent m_ready{ true };
    std::atomic<bool> m_served = false;
    std::thread m_thread;
};

/// Makes the other one while its own constructor has the lock.
class AroundIt : public TuSingleton<AroundIt>
{
    friend class TuSingleton<AroundIt>;
    AroundIt() { WithThread::GetInstance(); }
};

TEST(TuSingletonTest, TheHookMayWaitForAThreadThatAsksForTheObject)
{
    AroundIt::GetInstance();
    EXPECT_TRUE(WithThread::GetInstance().IsServed());
}

class Fragile : public TuSingleton<Fragile>
{
public:
    static inline bool s_throws = true;

private:
    friend class TuSingleton<Fragile>;
    Fragile()
    {
        if (s_throws) {
            throw 1;
        }
    }
};

TEST(TuSingletonTest, AfterAConstructorThatThrewTheNextCallTriesAgain)
{
    EXPECT_THROW(Fragile::GetInstance(), int);
    EXPECT_FALSE(Fragile::HasInstance());
    Fragile::s_throws = false;
    Fragile::GetInstance();
    EXPECT_TRUE(Fragile::HasInstance());
}

TEST(TuSingletonTest, AllLibrariesSeeTheSameObject)
{
    platform::SharedLibrary library;
    ASSERT_TRUE(library.Load(platform::FromUtf8(TA_TEST_PLUGIN)));
    void* function = library.FindFunction("GetCounterOfPlugin");
    ASSERT_NE(function, nullptr);
    const auto getCounter = reinterpret_cast<const void* (*)()>(function);
    EXPECT_EQ(getCounter(), &TuPerformanceCounter::GetInstance());
    EXPECT_GT(TuPerformanceCounter::GetInstance().GetFrequency(), 1'000u);
}

void say(const char* text) { platform::WriteStandard(platform::eSS_Error, text); }

template <char Name> class Mortal : public TuSingleton<Mortal<Name>>
{
public:
    ~Mortal() override { say(std::string({ Name, ' ' }).c_str()); }
};

/// Registered before it makes `c`, and so deleted after it.
class User : public TuSingleton<User>
{
public:
    User() { Mortal<'c'>::GetInstance(); }
    ~User() override { say(Mortal<'c'>::HasInstance() ? "with c " : "without c "); }
};

class LastWords : public TuSingleton<LastWords>
{
public:
    ~LastWords() override
    {
        say(TuLogListenerManager::HasInstance() ? "log lives " : "log is gone ");
        say(Mortal<'b'>::HasInstance() ? "b lives " : "b is gone ");
        TuLogListenerManager::GetInstance().NotifyListeners(eLL_Error, u"here", 7, u"last words");
    }
};

TEST(TuSingletonDeathTest, AtExitTheyGoInTheReverseOrderOfTheirFirstUse)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            LastWords::GetInstance();
            TuLogListenerManager::GetInstance();
            User::GetInstance();
            Mortal<'a'>::GetInstance();
            Mortal<'b'>::GetInstance();
            Mortal<'a'>::GetInstance();
            std::exit(0);
        },
        testing::ExitedWithCode(0),
        "b a c without c log lives b is gone here\\(7\\): error: last words");
}

} // namespace
