#include "platform/platforminterrupt.h"

#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <thread>
#include <utility>

namespace platform {
namespace {

    /// There is one signal to be told of, and so one watch.
    std::atomic<bool> s_isWatched{ false };

    sigset_t getInterrupt()
    {
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGINT);
        return signals;
    }

    bool isIgnored()
    {
        struct sigaction action
        {
        };
        return sigaction(SIGINT, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
    }

} // namespace

struct InterruptWatch::SState
{
    std::function<void()> onInterrupt;
    std::atomic<bool> isEnding{ false }; // stored before the signal that wakes the thread
    sigset_t formerMask{};
    std::thread thread;

    void Run() const
    {
        const sigset_t signals = getInterrupt();
        for (int signal = 0; sigwait(&signals, &signal) == 0;) {
            if (isEnding) {
                return;
            }
            onInterrupt();
        }
    }
};

InterruptWatch::InterruptWatch(std::function<void()> onInterrupt)
{
    if (isIgnored() || s_isWatched.exchange(true)) {
        return;
    }
    const sigset_t signals = getInterrupt();
    sigset_t formerMask;
    pthread_sigmask(SIG_BLOCK, &signals, &formerMask);
    try {
        auto state = std::make_unique<SState>();
        state->onInterrupt = std::move(onInterrupt);
        state->formerMask = formerMask;
        state->thread = std::thread([watch = state.get()] { watch->Run(); });
        m_state = std::move(state);
    } catch (const std::exception&) { // no memory, no thread
        pthread_sigmask(SIG_SETMASK, &formerMask, nullptr);
        s_isWatched = false;
    }
}

InterruptWatch::~InterruptWatch()
{
    if (m_state != nullptr) {
        m_state->isEnding = true;
        pthread_kill(m_state->thread.native_handle(), SIGINT);
        m_state->thread.join();
        pthread_sigmask(SIG_SETMASK, &m_state->formerMask, nullptr);
        s_isWatched = false;
    }
}

} // namespace platform
