// A message handler on a thread whose loop is another library's: GLib's main loop, as it runs in
// many user interfaces, watches the descriptor of the thread and lets the handlers work.
//
// A thread counts down and posts each number; the handler lives on the main thread, beside a timer
// of GLib's, and ends the loop at zero.

#include "tabase/tamessagedispatcher.h"
#include "tabase/tamessageloop.h"

#include <glib-unix.h>

#include <iostream>
#include <thread>

namespace {

class CountDown : public TaMessage
{
    TU_DECLARE_RTTI

public:
    explicit CountDown(int left)
        : m_left(left)
    {
    }
    int GetLeft() const { return m_left; }

private:
    int m_left;
};
TU_DEFINE_RTTI(CountDown, TaMessage, nullptr, nullptr);

class Display : public TaMessageHandler
{
public:
    explicit Display(GMainLoop* loop)
        : TaMessageHandler(u"Display")
        , m_loop(loop)
    {
    }
    ~Display() override { destroyMessageHandler().MarkRead(); }

    int GetSeen() const { return m_seen; }

private:
    void onSubscribeMessages() override { SubscribeMessage(CountDown(0)); }
    long long handleMessage(const TaMessage& message) override
    {
        if (!message.IsKindOf(CountDown::RTTI)) {
            return TaMessageHandler::handleMessage(message);
        }
        const int left = dynamic_cast<const CountDown&>(message).GetLeft();
        std::cout << left << '\n';
        ++m_seen;
        if (left == 0) {
            g_main_loop_quit(m_loop);
        }
        return 0;
    }

    GMainLoop* m_loop;
    int m_seen = 0;
};

/// What GLib calls when messages wait for the thread.
gboolean handleWaiting(gint, GIOCondition, gpointer)
{
    return TaMessageLoop::HandleWaiting() ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
}

gboolean giveUp(gpointer loop)
{
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_REMOVE;
}

} // namespace

int main()
{
    constexpr guint kPatienceSeconds = 30;
    GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
    int seen = 0;
    {
        Display display(loop);
        if (!display.initMessageHandler()) {
            std::cerr << "glibloop: the system has no window left\n";
            return 1;
        }
        g_unix_fd_add(TaMessageLoop::GetDescriptor(), G_IO_IN, handleWaiting, nullptr);
        g_timeout_add_seconds(kPatienceSeconds, giveUp, loop);
        const std::jthread counter([] {
            for (int left = 9; left >= 0; --left) {
                TaMessageDispatcher::PostMessage(TuMake<CountDown>(left));
            }
        });
        g_main_loop_run(loop);
        seen = display.GetSeen();
    }
    g_main_loop_unref(loop);
    return seen == 10 ? 0 : 1;
}
