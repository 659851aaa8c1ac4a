// Messages between threads: a worker squares numbers on a thread of its own, and reports each to
// the main thread, which has nothing but the loop of its handlers.
//
// It shows a message class of one's own, a handler with a thread and one without, a send (which
// waits for the answer), posts (which do not), and how both threads end.

#include "tabase/tamessagedispatcher.h"
#include "tabase/tamessageloop.h"

#include <iostream>

namespace {

/// The worker's result.
class Squared : public TaMessage
{
    TU_DECLARE_RTTI

public:
    Squared(int number, int square)
        : m_number(number)
        , m_square(square)
    {
    }
    int GetNumber() const { return m_number; }
    int GetSquare() const { return m_square; }

private:
    int m_number;
    int m_square;
};
TU_DEFINE_RTTI(Squared, TaMessage, nullptr, nullptr);

/// What the worker is to do; sent, it answers how many squares it will report.
class SquareUpTo : public TaMessage
{
    TU_DECLARE_RTTI

public:
    explicit SquareUpTo(int last)
        : m_last(last)
    {
    }
    int GetLast() const { return m_last; }

private:
    int m_last;
};
TU_DEFINE_RTTI(SquareUpTo, TaMessage, nullptr, nullptr);

class Worker : public TaMessageHandlerThreaded
{
public:
    Worker()
        : TaMessageHandlerThreaded(u"Worker", eTP_Normal)
    {
    }
    ~Worker() override { StopAndWait(TuEvent::kInfinite); }

private:
    void onSubscribeMessages() override { SubscribeMessage(SquareUpTo(0)); }
    long long handleMessage(const TaMessage& message) override
    {
        if (!message.IsKindOf(SquareUpTo::RTTI)) {
            return TaMessageHandlerThreaded::handleMessage(message);
        }
        const int last = dynamic_cast<const SquareUpTo&>(message).GetLast();
        for (int number = 1; number <= last; ++number) {
            TaMessageDispatcher::PostMessage(TuMake<Squared>(number, number * number));
        }
        return last;
    }
};

/// Lives on the main thread, and so may print without a lock.
class Printer : public TaMessageHandler
{
public:
    Printer()
        : TaMessageHandler(u"Printer")
    {
    }
    ~Printer() override { destroyMessageHandler().MarkRead(); }

    void PrintNext(long long count)
    {
        for (m_left += count; m_left > 0;) {
            TaMessageLoop::WaitAndHandle();
        }
    }

private:
    void onSubscribeMessages() override { SubscribeMessage(Squared(0, 0)); }
    long long handleMessage(const TaMessage& message) override
    {
        if (!message.IsKindOf(Squared::RTTI)) {
            return TaMessageHandler::handleMessage(message);
        }
        const auto& squared = dynamic_cast<const Squared&>(message);
        std::cout << squared.GetNumber() << " x " << squared.GetNumber() << " = "
                  << squared.GetSquare() << '\n';
        --m_left;
        return 0;
    }

    long long m_left = 0;
};

} // namespace

int main()
{
    Printer printer;
    Worker worker;
    if (!printer.initMessageHandler() || !worker.StartAndWait()) {
        std::cerr << "messages: the system has no window or no thread left\n";
        return 1;
    }
    const long long count = TaMessageDispatcher::SendMessage(SquareUpTo(5), worker);
    std::cout << "the worker will report " << count << " squares\n";
    printer.PrintNext(count);
    return count == 5 ? 0 : 1;
}
