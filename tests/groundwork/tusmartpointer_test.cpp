#include "groundwork/tuboxed.h"
#include "groundwork/tuexceptions.h"
#include "groundwork/tuweakpointer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <optional>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

std::atomic<int> s_alive{ 0 };

struct Shared : public TuReferenceCounted
{
    explicit Shared(int number = 0)
        : value(number)
    {
        ++s_alive;
    }
    ~Shared() override { --s_alive; }

    int value;
};

template <class T> unsigned int countOf(const TuSmartPointer<T>& pointer)
{
    return pointer->getReferenceCounter().GetCount();
}

TEST(TuSmartPointerTest, CountsItsReferencesAndTheLastDeletesTheObject)
{
    static_assert(sizeof(TuSmartPointer<Shared>) == sizeof(void*));
    static_assert(!std::is_convertible_v<TuSmartPointer<const Shared>, TuSmartPointer<Shared>>);
    struct Derived : public Shared
    {
    };
    TuSmartPointer<Derived> derived = new Derived;
    TuSmartPointer<Shared> base = std::move(derived);
    EXPECT_TRUE(derived.IsNull()); // NOLINT(bugprone-use-after-move): null after a move is promised
    TuSmartPointer<Shared>& same = base;
    base = same;
    base = std::move(same);
    ASSERT_FALSE(base.IsNull());
    EXPECT_EQ(countOf(base), 1u);

    TuSmartPointer<const Shared> second = base;
    EXPECT_EQ(countOf(base), 2u);
    base.Reset();
    EXPECT_EQ(countOf(second), 1u);
    EXPECT_EQ(s_alive, 1);
    second.Reset();
    EXPECT_EQ(s_alive, 0);
}

TEST(TuSmartPointerTest, CopiesOfAnObjectHaveCountersOfTheirOwn)
{
    struct Plain : public TuReferenceCounted
    {
    };
    const TuSmartPointer<Plain> original = new Plain;
    const TuWeakPointer<Plain> weak(original.Get());
    const TuSmartPointer<Plain> copy = new Plain(*original);
    EXPECT_EQ(countOf(copy), 1u);
    const TuSmartPointer<Plain> third = original;
    *copy = *original;
    EXPECT_EQ(countOf(copy), 1u);
    EXPECT_EQ(countOf(original), 2u);
    EXPECT_EQ(weak.Lock(), original);
}

TEST(TuSmartPointerTest, ThreadsCountOneObjectTogether)
{
    const TuSmartPointer<Shared> object = new Shared;
    std::latch start(4);
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            for (int step = 0; step < 20'000; ++step) {
                TuSmartPointer<Shared> copy = object;
                const TuSmartPointer<Shared> moved = std::move(copy);
            }
        });
    }
    threads.clear();
    EXPECT_EQ(countOf(object), 1u);
}

TEST(TuWeakPointerTest, LocksWhileTheTargetLivesAndIsClearedWithIt)
{
    EXPECT_TRUE(TuWeakPointer<Shared>().Lock().IsNull());
    TuSmartPointer<Shared> target = new Shared;
    TuWeakPointer<Shared> first(target.Get());
    TuWeakPointer<Shared> second = first;
    std::optional<TuWeakPointer<Shared>> third(first); // in the middle of the list, and first to go
    TuWeakPointer<Shared> fourth(target.Get());
    third.reset();
    EXPECT_EQ(first.Lock(), target);
    EXPECT_EQ(countOf(target), 1u);
    first.Clear();
    EXPECT_TRUE(first.Lock().IsNull());
    EXPECT_EQ(second.Lock(), target);
    target.Reset();
    EXPECT_EQ(s_alive, 0);
    EXPECT_TRUE(second.Lock().IsNull());
    EXPECT_TRUE(fourth.Lock().IsNull());
    const TuSmartPointer<Shared> next = new Shared;
    second.Set(next.Get());
    EXPECT_EQ(second.Lock(), next);
}

TEST(TuWeakPointerTest, ATargetThatNobodyHoldsIsNotRevivedButReachedOnceHeld)
{
    auto* bare = new Shared;
    TuWeakPointer<Shared> weak(bare);
    delete bare; // clears the link
    EXPECT_TRUE(weak.Lock().IsNull());
    bare = new Shared;
    weak.Set(bare);
    EXPECT_TRUE(weak.Lock().IsNull());
    const TuWeakPointer<Shared> copy = weak;
    TuWeakPointer<Shared> assigned;
    assigned = weak;
    TuSmartPointer<Shared> held = bare;
    EXPECT_EQ(copy.Lock(), held);
    EXPECT_EQ(assigned.Lock(), held);
}

TEST(TuWeakPointerTest, LocksInTheTargetsDestructorGiveNothing)
{
    struct Observer : public TuReferenceCounted
    {
        ~Observer() override { *sawNothing = weak->Lock().IsNull(); }
        TuWeakPointer<Observer>* weak = nullptr;
        bool* sawNothing = nullptr;
    };
    bool sawNothing = false;
    TuSmartPointer<Observer> target = new Observer;
    TuWeakPointer<Observer> weak(target.Get());
    target->weak = &weak;
    target->sawNothing = &sawNothing;
    target.Reset();
    EXPECT_TRUE(sawNothing);
}

TEST(TuWeakPointerTest, LockingRacesWithTheLastReleaseAndNeverRevives)
{
    for (int round = 0; round < 2'000; ++round) {
        TuSmartPointer<Shared> target = new Shared(round);
        const TuWeakPointer<Shared> weak(target.Get());
        std::latch start(4);
        std::atomic<int> wrong{ 0 };
        {
            std::vector<std::jthread> lockers;
            for (int i = 0; i < 3; ++i) {
                lockers.emplace_back([&] {
                    start.arrive_and_wait();
                    const TuSmartPointer<Shared> locked = weak.Lock();
                    wrong += !locked.IsNull() && locked->value != round;
                });
            }
            start.arrive_and_wait();
            target.Reset();
        }
        ASSERT_EQ(wrong, 0);
        ASSERT_TRUE(weak.Lock().IsNull());
        ASSERT_EQ(s_alive, 0);
    }
}

TEST(IExtensionInterfaceTest, AnObjectAnswersForTheInterfacesThatItImplements)
{
    TuInt32 number(3);
    const TuInt32& reading = number;
    EXPECT_NE(dynamic_cast<ISerializable*>(number.GetExtension("Groundwork.Serializable", true)),
        nullptr);
    EXPECT_EQ(number.GetExtension("TaBase.Bitmap", false), nullptr);
    EXPECT_THROW(reading.GetExtension("TaBase.Bitmap", true), TuExceptionUnknownExtension);
}

} // namespace
