#include "support/testhandler.h"
#include "support/testlatch.h"
#include "support/testrandom.h"
#include "tabase/tamessageloop.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <optional>
#include <random>
#include <thread>

namespace {

constexpr unsigned int kSenders = 8;
constexpr unsigned int kSteps = 300; // of each sender
// The first is on the dispatcher's thread, the others are on theirs.
constexpr std::size_t kHandlers = 9;
constexpr std::size_t kStaying = 5; // those that stay subscribed
constexpr int kMostDepth = 6;

void check(bool isTrue, const char* promise)
{
    if (!isTrue) {
        ADD_FAILURE() << promise << " (TABASE_TEST_SEED is " << GetTestSeed() << ')';
    }
}

class StressMessage : public TaMessage
{
    TU_DECLARE_RTTI

public:
    unsigned int sender = 0;
    unsigned int number = 0; // of a post: grows with the posts of the sender
    int depth = 0; // how often it is to be sent on
    std::optional<unsigned int> posted; // how much the sender has posted to this handler before
};

TU_DEFINE_RTTI(StressMessage, TaMessage, nullptr, nullptr);

void toStress(TaMessageHandlerBase& handler) { handler.SubscribeMessage(StressMessage()); }

using Handlers = std::array<std::unique_ptr<TaMessageHandler>, kHandlers>;

long long answerOf(std::size_t handler) { return static_cast<long long>(handler) + 1; }

/// What a handler does, and what it sees to.
Handle receiver(const Handlers& handlers, std::size_t index)
{
    return [&handlers, index, random = std::mt19937_64(GetTestSeed() + index),
               last = std::array<unsigned int, kSenders>(),
               posted = std::array<unsigned int, kSenders>()](const TaMessage& any) mutable {
        const auto& message = dynamic_cast<const StressMessage&>(any);
        if (message.number != 0) {
            check(last[message.sender] < message.number, "posts come in their order, and once");
            last[message.sender] = message.number;
            ++posted[message.sender];
        } else if (message.posted.has_value()) {
            check(posted[message.sender] == *message.posted, "all posts come before the send");
        }
        if (message.depth > 0) {
            StressMessage next;
            next.depth = message.depth - 1;
            const std::size_t target = random() % kStaying;
            check(TaMessageDispatcher::SendMessage(next, *handlers[target]) == answerOf(target),
                "a handler's send is answered");
        }
        return answerOf(index);
    };
}

class Sender
{
public:
    Sender(const Handlers& handlers, unsigned int index)
        : m_handlers(handlers)
        , m_random(GetTestSeed() + 1000 + index)
        , m_index(index)
    {
    }

    void Run()
    {
        for (unsigned int step = 0; step < kSteps; ++step) {
            doStep();
        }
        for (std::size_t target = 0; target < kStaying; ++target) {
            sendTo(target, 0); // behind the last post
        }
    }

private:
    void doStep()
    {
        const std::size_t staying = m_random() % kStaying;
        TaMessageHandler& leaving = *m_handlers[kStaying + m_random() % (kHandlers - kStaying)];
        switch (m_random() % 12) {
        case 0:
            leaving.SubscribeMessage(StressMessage());
            break;
        case 1:
            leaving.UnsubscribeMessage(StressMessage());
            break;
        case 2:
            leaving.UnsubscribeAll();
            break;
        case 3: {
            const LocalHandler passing(u"here", receiver(m_handlers, kHandlers), toStress);
            sendToAll();
            check(TaMessageLoop::HandleWaiting(), "the loop of a sender goes on");
            break;
        }
        case 4: {
            const ThreadedHandler passing(u"there", receiver(m_handlers, kHandlers), toStress);
            sendToAll();
            break;
        }
        case 5:
            sendToAll();
            break;
        case 6:
            TaMessageDispatcher::SendMessage(StressMessage(), leaving);
            break;
        case 7:
            sendTo(staying, static_cast<int>(m_random() % kMostDepth));
            break;
        case 8:
            TaMessageDispatcher::PostMessage(makePost(), *m_handlers[staying]);
            ++m_posted[staying];
            break;
        default:
            TaMessageDispatcher::PostMessage(makePost());
            for (unsigned int& posted : m_posted) {
                ++posted;
            }
            break;
        }
    }

    TuSmartPointer<StressMessage> makePost()
    {
        auto message = TuMake<StressMessage>();
        message->sender = m_index;
        message->number = ++m_lastNumber;
        message->depth = m_random() % 8 == 0 ? 2 : 0;
        return message;
    }

    void sendTo(std::size_t target, int depth)
    {
        StressMessage message;
        message.sender = m_index;
        message.depth = depth;
        message.posted = m_posted[target];
        check(TaMessageDispatcher::SendMessage(message, *m_handlers[target]) == answerOf(target),
            "a send is answered by its target");
    }

    void sendToAll()
    {
        std::array<int, kHandlers + 1> answers{};
        for (const long long answer : SendToAll(StressMessage())) {
            ++answers.at(static_cast<std::size_t>(answer) - 1);
        }
        for (std::size_t i = 0; i < kHandlers; ++i) {
            check(answers[i] == 1 || (i >= kStaying && answers[i] == 0),
                "each handler answers a send to all once");
        }
    }

    const Handlers& m_handlers;
    std::mt19937_64 m_random;
    unsigned int m_index;
    unsigned int m_lastNumber = 0;
    std::array<unsigned int, kStaying> m_posted{};
};

TEST(MessagingStressTest, SendsAreAnsweredAndPostsArriveOnceAndInOrderWhileHandlersComeAndGo)
{
    Handlers handlers;
    handlers[0] = std::make_unique<DispatcherHandler>(u"0", receiver(handlers, 0), toStress);
    for (std::size_t i = 1; i < kHandlers; ++i) {
        handlers[i] = std::make_unique<ThreadedHandler>(u"", receiver(handlers, i), toStress);
    }
    TestLatch start(kSenders);
    std::vector<std::jthread> threads;
    for (unsigned int i = 0; i < kSenders; ++i) {
        threads.emplace_back([&, i] {
            start.arrive_and_wait();
            Sender(handlers, i).Run();
        });
    }
    threads.clear();
}

} // namespace
