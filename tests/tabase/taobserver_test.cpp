#include "tabase/taobserver.h"

#include "support/allocationlimit.h"
#include "support/expectfailure.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>

namespace {

using EMessageType = TaObservableMessage::EMessageType;

constexpr auto kGone = TaObservableMessage::eMT_Destroyed;
constexpr auto kMoved = TaObservableMessage::eMT_1;
constexpr auto kTurned = TaObservableMessage::eMT_21;

/// Writes down the messages that it gets, by its name and their type, and then does something.
class Listener : public TaObserver
{
public:
    Listener(char name, std::string& calls)
        : m_name(name)
        , m_calls(calls)
    {
    }

    std::function<void()> action;
    std::tuple<const TaObservableMessage*, void*, void*> last; // with the data and the parameter

protected:
    void onNotify(TaObservable&, const TaObservableMessage& message, void* parameter) override
    {
        last = { &message, message.GetUserData(), parameter };
        m_calls += m_name + std::to_string(message.GetType()) + " ";
        if (const auto run = action) { // the action may destroy this object
            run();
        }
    }

private:
    char m_name;
    std::string& m_calls;
};

/// Three listeners of one observable, all on the heap, so that any of them can go.
class TaObserverTest : public testing::Test
{
protected:
    void observe(EMessageType type, int oneShot = 0)
    {
        for (const auto* listener : { &a, &b, &c }) {
            (*listener)->Observe(*shape, type, oneShot);
        }
    }
    std::string notify(EMessageType type)
    {
        calls.clear();
        shape->NotifyObservers(type, nullptr);
        return calls;
    }

    std::string calls;
    std::unique_ptr<TaObservable> shape = std::make_unique<TaObservable>();
    std::unique_ptr<Listener> a = std::make_unique<Listener>('a', calls);
    std::unique_ptr<Listener> b = std::make_unique<Listener>('b', calls);
    std::unique_ptr<Listener> c = std::make_unique<Listener>('c', calls);
};

// A number in the place of a type would become null user data.
template <class Type>
concept IsSubscribable = requires(TaObserver& observer, TaObservable& observable, Type type)
{
    observer.Observe(observable, type, 1);
};
static_assert(IsSubscribable<EMessageType> && IsSubscribable<void*>);
static_assert(!IsSubscribable<int>);

TEST_F(TaObserverTest, ListsAreInOrderOfComingAndOfOneTypeEach)
{
    EXPECT_TRUE(shape->GetObserverList(kMoved).IsEmpty());
    const std::uint64_t unobserved = shape->GetMemoryUsage();
    observe(kMoved);
    a->Observe(*shape); // to all types
    EXPECT_EQ(notify(kMoved), "a1 b1 c1 ");
    EXPECT_EQ(notify(kTurned), "a21 ");
    EXPECT_EQ(shape->GetObserverCount(kMoved), 3u);
    EXPECT_EQ(a->GetObservableCount(), 23u);
    EXPECT_GE(shape->GetMemoryUsage(), unobserved + 24 * sizeof(TaObservable::TaObserverInfo));
    const auto wrong = static_cast<EMessageType>(TaObservableMessage::kTypeCount);
    ExpectFailure<TuExceptionPreconditionViolation>([&] { a->Observe(*shape, wrong); });
    ExpectFailure<TuExceptionPreconditionViolation>([&] { notify(wrong); });
    EXPECT_EQ(a->GetObservableCount(), 23u);
}

TEST_F(TaObserverTest, UserDataAndOneShotFlagAreThoseOfTheFirstTimeAndForNotifyObserversAlone)
{
    int first = 0;
    int second = 0;
    a->Observe(*shape, kMoved, &first, 1);
    a->Observe(*shape, kMoved, &second, 0);
    const TaObservableMessage message(kMoved, &second);
    shape->SendMessage(message, &first);
    EXPECT_EQ(a->last, std::tuple(&message, &second, &first));
    EXPECT_TRUE(shape->IsObserver(*a, kMoved));
    shape->NotifyObservers(kMoved, &second);
    EXPECT_EQ(std::get<1>(a->last), &first);
    EXPECT_EQ(std::get<2>(a->last), &second);
    EXPECT_FALSE(shape->IsObserver(*a));
    EXPECT_EQ(a->GetObservableCount(), 1u);
}

TEST_F(TaObserverTest, OneShotObserversGetOneMessageUnlessTheyComeAgainForTheNext)
{
    observe(kMoved, 1);
    a->action = [this] {
        a->Observe(*shape, kMoved, 1);
        a->action = nullptr;
        shape->NotifyObservers(kMoved, nullptr); // which is the next
    };
    EXPECT_EQ(notify(kMoved), "a1 b1 c1 a1 ");
    EXPECT_EQ(shape->GetObserverCount(kMoved), 0u);
    a->Observe(*shape, kMoved, 1);
    a->action = [this] { a->Observe(*shape, kMoved, 1); };
    EXPECT_EQ(notify(kMoved), "a1 "); // not for ever
    EXPECT_EQ(notify(kMoved), "a1 ");
}

TEST_F(TaObserverTest, WhoGoesDuringANotificationCountsUntilTheOutermostOfTheTypeEnds)
{
    observe(kMoved);
    observe(kTurned);
    b->action = [this] {
        b->action = nullptr;
        b->Unobserve();
        c->Unobserve(*shape);
        shape->NotifyObservers(kMoved, nullptr);
        EXPECT_EQ(shape->GetObserverCount(kMoved), 3u);
        EXPECT_FALSE(shape->IsObserver(*b));
    };
    EXPECT_EQ(notify(kMoved), "a1 b1 a1 ");
    EXPECT_EQ(shape->GetObserverCount(kMoved), 1u);
    EXPECT_EQ(shape->GetObserverCount(kTurned), 3u);
    EXPECT_FALSE(shape->IsObserver(*c, kTurned));
    b->Observe(*shape, kTurned); // an entry of its own, not the former one
    EXPECT_EQ(notify(kTurned), "a21 b21 ");
    EXPECT_EQ(shape->GetObserverCount(kTurned), 2u);
}

TEST_F(TaObserverTest, MayBeDestroyedInsideANotification)
{
    for (const int oneShot : { 0, 1 }) {
        a = std::make_unique<Listener>('a', calls);
        b = std::make_unique<Listener>('b', calls);
        observe(kMoved, oneShot);
        a->action = [this] {
            a.reset();
            b.reset();
        };
        EXPECT_EQ(notify(kMoved), "a1 c1 ");
        EXPECT_EQ(shape->GetObserverCount(kMoved), oneShot == 0 ? 1u : 0u);
        c->Unobserve();
    }
}

TEST_F(TaObserverTest, TheObservableMayBeDestroyedInsideItsNotifications)
{
    observe(kMoved);
    observe(kTurned, 1);
    c->Observe(*shape, kGone);
    a->action = [this] { shape->NotifyObservers(kTurned, nullptr); };
    b->action = [this] { shape.reset(); }; // two notifications deep
    a->Unobserve(kTurned);
    EXPECT_EQ(notify(kMoved), "a1 b21 c0 ");
    EXPECT_EQ(a->GetObservableCount() + b->GetObservableCount() + c->GetObservableCount(), 0u);
}

TEST_F(TaObserverTest, NobodyRefersToADestroyedObservable)
{
    observe(kMoved);
    a->Observe(*shape, kMoved);
    a->Unobserve(*shape, kMoved); // the entry is gone, a record stays
    EXPECT_EQ(a->GetObservableCount(), 1u);
    EXPECT_FALSE(shape->IsObserver(*a));
    b->Observe(*shape, kGone);
    b->action = [this, dying = shape.get()] { c->Observe(*dying); }; // with the last message
    shape.reset();
    EXPECT_EQ(calls, "b0 ");
    EXPECT_EQ(a->GetObservableCount() + b->GetObservableCount() + c->GetObservableCount(), 0u);
}

TEST_F(TaObserverTest, AFailureSkipsOnlyTheObserverThatThrows)
{
    observe(kMoved);
    a->action = [] { throw std::runtime_error("this observer fails"); };
    b->action = [] { throw 1; };
    EXPECT_EQ(notify(kMoved), "a1 b1 c1 ");
    a->Unobserve(); // no notification is in progress any more: at once
    EXPECT_EQ(shape->GetObserverCount(kMoved), 2u);
}

TEST_F(TaObserverTest, UnobserveSaysWhetherItEndedASubscription)
{
    TaObservable other;
    a->Observe(*shape, kMoved);
    a->Observe(*shape, kMoved);
    EXPECT_FALSE(a->Unobserve(*shape, kTurned));
    EXPECT_FALSE(a->Unobserve(other, kMoved));
    EXPECT_TRUE(a->Unobserve(*shape, kMoved));
    a->Observe(*shape, kMoved); // behind the record that has lost its entry
    EXPECT_TRUE(shape->IsObserver(*a, kMoved));
    EXPECT_TRUE(a->Unobserve(*shape, kMoved));
    EXPECT_FALSE(shape->IsObserver(*a, kMoved));
    EXPECT_TRUE(a->Unobserve(*shape, kMoved));
    EXPECT_FALSE(a->Unobserve(*shape, kMoved));

    a->Observe(*shape);
    a->Observe(other);
    EXPECT_TRUE(a->Unobserve(kMoved));
    EXPECT_FALSE(a->Unobserve(kMoved));
    EXPECT_TRUE(a->Unobserve(other));
    EXPECT_FALSE(a->Unobserve(other));
    EXPECT_EQ(a->GetObservableCount(), 21u);
    EXPECT_TRUE(a->Unobserve());
    EXPECT_FALSE(a->Unobserve());
    EXPECT_FALSE(shape->IsObserver(*a));
}

TEST_F(TaObserverTest, UnobserveEndsNeitherSubscriptionsOfOthersNorToOthers)
{
    TaObservable other;
    a->Observe(other, kMoved);
    observe(kMoved);
    EXPECT_TRUE(a->Unobserve(*shape, kMoved)); // a has fewer subscriptions than the observable
    EXPECT_TRUE(other.IsObserver(*a, kMoved));
    c->Observe(other, kMoved);
    a->Observe(*shape); // and now a has more
    EXPECT_TRUE(a->Unobserve(other));
    EXPECT_TRUE(other.IsObserver(*c, kMoved));
    EXPECT_EQ(a->GetObservableCount(), 22u);
}

TEST_F(TaObserverTest, SubscribesToAllTypesOrToNoneWhereMemoryRunsOut)
{
    a->Observe(*shape, kMoved);
    const unsigned int failures = FailEachAllocation([&](unsigned int allowed) {
        const AllocationLimit limit(allowed);
        TaObservable fresh;
        try {
            b->Observe(fresh);
            a->Observe(*shape);
            return true;
        } catch (const TuExceptionOutOfMemory&) {
            EXPECT_FALSE(shape->IsObserver(*a, kTurned));
            EXPECT_EQ(a->GetObservableCount(), 1u);
            EXPECT_EQ(b->GetObservableCount(), fresh.IsObserver(*b) != 0 ? 22u : 0u);
            return false;
        }
    });
    EXPECT_GT(failures, 5u);
}

} // namespace
