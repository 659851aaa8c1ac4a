#include "groundwork/iextendable.h"
#include "groundwork/tuboxed.h"
#include "groundwork/tuexceptions.h"
#include "groundwork/tuscopedpointer.h"
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
    Shared(const Shared& other)
        : TuReferenceCounted(other)
        , value(other.value)
    {
        ++s_alive;
    }
    Shared& operator=(const Shared&) = default;
    ~Shared() override { --s_alive; }

    int value;
};

struct Derived : public Shared
{
};

/// Shared without TuReferenceCounted, through an interface of its own.
struct OwnCounter : public IExtendable
{
    const TuReferenceCounter<unsigned int>& getReferenceCounter() const override { return counter; }
    const IExtensionInterface* GetExtension(const char*, bool) const override { return nullptr; }
    IExtensionInterface* GetExtension(const char*, bool) override { return nullptr; }

    TuReferenceCounter<unsigned int> counter;
};

template <class T> unsigned int countOf(const TuSmartPointer<T>& pointer)
{
    return pointer->getReferenceCounter().GetCount();
}

TEST(TuSmartPointerTest, TheLastPointerDeletesTheObjectThroughItsDestructor)
{
    {
        TuSmartPointer<Shared> first = new Derived;
        const TuSmartPointer<const Shared> second = first;
        EXPECT_EQ(countOf(first), 2u);
        EXPECT_EQ(first, second);
        first.Reset();
        EXPECT_TRUE(first.IsNull());
        EXPECT_EQ(countOf(second), 1u);
        EXPECT_EQ(s_alive, 1);
    }
    EXPECT_EQ(s_alive, 0);
}

TEST(TuSmartPointerTest, MovesHandTheReferenceOnAndSelfAssignmentKeepsIt)
{
    TuSmartPointer<Derived> derived = TuMake<Derived>();
    TuSmartPointer<Shared> base = std::move(derived);
    EXPECT_TRUE(derived.IsNull()); // NOLINT(bugprone-use-after-move): null after a move is promised
    EXPECT_EQ(countOf(base), 1u);
    TuSmartPointer<Shared>& same = base;
    base = same;
    base = std::move(same);
    ASSERT_FALSE(base.IsNull());
    EXPECT_EQ(countOf(base), 1u);
    const TuSmartPointer<Shared> other = TuMake<Shared>();
    EXPECT_NE(base, other);
    EXPECT_EQ(base < other, base.Get() < other.Get());
    static_assert(sizeof(TuSmartPointer<Shared>) == sizeof(void*));
    static_assert(!std::is_convertible_v<TuSmartPointer<const Shared>, TuSmartPointer<Shared>>);
}

TEST(TuSmartPointerTest, CopiesOfAnObjectHaveCountersOfTheirOwn)
{
    const TuSmartPointer<Shared> original = new Shared(5);
    const TuWeakPointer<Shared> weak(original.Get());
    const TuSmartPointer<Shared> copy = new Shared(*original);
    EXPECT_EQ(countOf(copy), 1u);
    const TuSmartPointer<Shared> third = original;
    *copy = *original;
    EXPECT_EQ(countOf(copy), 1u);
    EXPECT_EQ(countOf(original), 2u);
    EXPECT_EQ(weak.Lock(), original);
}

TEST(TuSmartPointerTest, WorksThroughTheInterfaceOfAClassWithItsOwnCounter)
{
    const TuSmartPointer<OwnCounter> object = new OwnCounter;
    const TuSmartPointer<IReferenceCounted> shared = object;
    EXPECT_EQ(countOf(object), 2u);
}

TEST(TuSmartPointerTest, ThreadsCountOneObjectTogether)
{
    constexpr int kThreads = 4;
    constexpr int kSteps = 20'000;
    {
        const TuSmartPointer<Shared> object = new Shared;
        std::latch start(kThreads);
        std::vector<std::jthread> threads;
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([&] {
                start.arrive_and_wait();
                for (int step = 0; step < kSteps; ++step) {
                    TuSmartPointer<Shared> copy = object;
                    const TuSmartPointer<Shared> moved = std::move(copy);
                }
            });
        }
        threads.clear();
        EXPECT_EQ(countOf(object), 1u);
    }
    EXPECT_EQ(s_alive, 0);
}

TEST(TuWeakPointerTest, LocksWhileTheTargetLivesAndIsClearedWithIt)
{
    TuWeakPointer<Shared> empty;
    EXPECT_TRUE(empty.Lock().IsNull());

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

TEST(TuWeakPointerTest, AnObjectWithoutStrongReferencesIsNotRevived)
{
    auto* bare = new Shared;
    const TuWeakPointer<Shared> weak(bare);
    EXPECT_TRUE(weak.Lock().IsNull());
    delete bare; // and the destructor clears the link
    EXPECT_TRUE(weak.Lock().IsNull());
}

TEST(TuWeakPointerTest, LocksInTheTargetsDestructorGiveNothing)
{
    struct Observer : public Shared
    {
        ~Observer() override { sawNothing = weak->Lock().IsNull(); }
        TuWeakPointer<Observer>* weak = nullptr;
        bool& sawNothing;
        explicit Observer(bool& flag)
            : sawNothing(flag)
        {
        }
    };
    bool sawNothing = false;
    TuSmartPointer<Observer> target = new Observer(sawNothing);
    TuWeakPointer<Observer> weak(target.Get());
    target->weak = &weak;
    target.Reset();
    EXPECT_TRUE(sawNothing);
}

TEST(TuWeakPointerTest, LockingRacesWithTheLastReleaseAndNeverRevives)
{
    constexpr int kRounds = 2'000;
    constexpr int kLockers = 3;
    for (int round = 0; round < kRounds; ++round) {
        TuSmartPointer<Shared> target = new Shared(round);
        const TuWeakPointer<Shared> weak(target.Get());
        std::atomic<bool> go{ false };
        std::atomic<int> wrong{ 0 };
        {
            std::vector<std::jthread> lockers;
            for (int i = 0; i < kLockers; ++i) {
                lockers.emplace_back([&] {
                    go.wait(false);
                    const TuSmartPointer<Shared> locked = weak.Lock();
                    wrong += !locked.IsNull() && locked->value != round;
                });
            }
            go = true;
            go.notify_all();
            target.Reset();
        }
        ASSERT_EQ(wrong, 0);
        ASSERT_TRUE(weak.Lock().IsNull());
        ASSERT_EQ(s_alive, 0);
    }
}

TEST(TuScopedPointerTest, OwnsOneObject)
{
    {
        TuScopedPointer<Shared> pointer(new Shared(1));
        TuScopedPointer<Shared> moved = std::move(pointer);
        EXPECT_FALSE(pointer); // NOLINT(bugprone-use-after-move): null after a move is promised
        EXPECT_EQ(moved->value, 1);
        moved.Reset(new Shared(2));
        EXPECT_EQ(s_alive, 1);
        delete moved.Detach();
    }
    EXPECT_EQ(s_alive, 0);
}

TEST(IExtensionInterfaceTest, AnObjectAnswersForTheInterfacesThatItImplements)
{
    TuInt32 number(3);
    const TuInt32& reading = number;
    EXPECT_NE(dynamic_cast<ISerializable*>(number.GetExtension("Groundwork.Serializable", true)),
        nullptr);
    EXPECT_NE(reading.GetExtension("Groundwork.Serializable", true), nullptr);
    EXPECT_EQ(number.GetExtension("TaBase.Bitmap", false), nullptr);
    EXPECT_THROW(reading.GetExtension("TaBase.Bitmap", true), TuExceptionUnknownExtension);
}

TEST(TuWeakPointerTest, ACopyReachesATargetThatNobodyHoldsYet)
{
    auto* bare = new Shared;
    const TuWeakPointer<Shared> weak(bare);
    const TuWeakPointer<Shared> copy = weak;
    TuWeakPointer<Shared> assigned;
    assigned = weak;
    const TuSmartPointer<Shared> held = bare;
    EXPECT_EQ(copy.Lock(), held);
    EXPECT_EQ(assigned.Lock(), held);
}

} // namespace
