#include "groundwork/iextendable.h"
#include "groundwork/iserializable.h"
#include "groundwork/tuexceptions.h"
#include "groundwork/tuweakpointer.h"
#include "support/expectfailure.h"
#include "support/testlatch.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <optional>
#include <thread>
#include <vector>

namespace {

std::atomic<int> s_alive{ 0 };

template <class Counting> struct Object : public Counting
{
    Object() { ++s_alive; }
    ~Object() override { --s_alive; }
};
using Shared = Object<TuReferenceCounted>;

/// What counts where a class cannot derive from TuReferenceCounted.
struct OwnCounter : public virtual IReferenceCounted
{
    const TuReferenceCounter<unsigned int>& getReferenceCounter() const override { return counter; }

    TuReferenceCounter<unsigned int> counter;
};

template <class T> unsigned int countOf(const TuSmartPointer<T>& pointer)
{
    return pointer->getReferenceCounter().GetCount();
}

template <class Counting> class TuSmartPointerTest : public testing::Test
{
};
using Countings = testing::Types<TuReferenceCounted, OwnCounter>;
TYPED_TEST_SUITE(TuSmartPointerTest, Countings);

TYPED_TEST(TuSmartPointerTest, CountsItsReferencesAndTheLastDeletesTheObject)
{
    using Base = Object<TypeParam>;
    static_assert(sizeof(TuSmartPointer<Base>) == sizeof(void*));
    static_assert(!std::is_convertible_v<TuSmartPointer<const Base>, TuSmartPointer<Base>>);
    struct Derived : public Base
    {
    };
    TuSmartPointer<Derived> derived = new Derived;
    TuSmartPointer<Base> base = std::move(derived);
    EXPECT_TRUE(derived.IsNull()); // NOLINT(bugprone-use-after-move): null after a move is promised
    TuSmartPointer<Base>& same = base;
    base = same;
    base = std::move(same);
    ASSERT_FALSE(base.IsNull());
    EXPECT_EQ(countOf(base), 1u);

    TuSmartPointer<const Base> second = base;
    EXPECT_EQ(countOf(base), 2u);
    base.Reset();
    EXPECT_EQ(countOf(second), 1u);
    EXPECT_EQ(s_alive, 1);
    second.Reset();
    EXPECT_EQ(s_alive, 0);
}

TYPED_TEST(TuSmartPointerTest, WeakOnesLockWhileTheTargetLivesAndAreClearedWithIt)
{
    using Target = Object<TypeParam>;
    using Weak = TuWeakPointer<Target>;
    EXPECT_TRUE(Weak().Lock().IsNull());
    TuSmartPointer<Target> target = new Target;
    Weak first(target.Get());
    Weak second = first;
    std::optional<Weak> third(first); // in the middle of the list, and first to go
    const Weak fourth(target.Get());
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
    const TuSmartPointer<Target> next = new Target;
    second.Set(next.Get());
    EXPECT_EQ(second.Lock(), next);
}

TEST(TuReferenceCountedTest, CopiesOfAnObjectHaveCountersOfTheirOwn)
{
    struct Plain : public TuReferenceCounted
    {
    };
    const TuSmartPointer<Plain> original = new Plain;
    const TuSmartPointer<Plain> second = original;
    const TuWeakPointer<Plain> weak(original.Get());
    const TuSmartPointer<Plain> copy = new Plain(*original);
    EXPECT_EQ(countOf(copy), 1u);
    *copy = *original;
    EXPECT_EQ(countOf(copy), 1u);
    EXPECT_EQ(countOf(original), 2u);
    EXPECT_EQ(weak.Lock(), original);
}

#if !defined(NDEBUG)
TEST(TuReferenceCountedTest, AssertsThatADestroyedObjectIsNotReferredTo)
{
    static int s_reports = 0;
    const TuAssertHandler former = TuSetAssertHandler(
        [](const char*, const char*, const char*, unsigned int) { ++s_reports; });
    {
        Shared object;
        static_cast<void>(TuSmartPointer<Shared>(&object).Detach());
    }
    EXPECT_EQ(s_reports, 1);
    TuSetAssertHandler(former);
}
#endif

TEST(TuWeakPointerTest, ATargetThatNobodyHoldsIsNotRevivedButReachedOnceHeld)
{
    auto* bare = new Shared;
    const TuWeakPointer<Shared> weak(bare);
    EXPECT_TRUE(weak.Lock().IsNull());
    const TuWeakPointer<Shared> copy = weak;
    TuWeakPointer<Shared> assigned;
    assigned = weak;
    TuSmartPointer<Shared> held = bare;
    EXPECT_EQ(copy.Lock(), held);
    EXPECT_EQ(assigned.Lock(), held);
}

TEST(TuWeakPointerTest, LinksAndReferencesOfSeveralThreadsRaceAndLocksWithTheLastRelease)
{
    constexpr std::size_t kThreads = 4;
    for (int round = 0; round < 2'000; ++round) {
        TuSmartPointer<Shared> target = new Shared;
        std::array<TuWeakPointer<Shared>, kThreads> weak;
        TestLatch started(kThreads);
        TestLatch released(kThreads);
        const auto run = [&](std::size_t i) {
            started.arrive_and_wait();
            weak[i].Set(target.Get()); // one of them is the first link
            for (int step = 0; step < 10; ++step) {
                TuSmartPointer<Shared> copy = target;
                const TuSmartPointer<Shared> moved = std::move(copy);
            }
            released.arrive_and_wait();
            if (i == 0) {
                target.Reset();
            } else {
                EXPECT_TRUE(weak[0].Lock().IsNull() || s_alive == 1);
            }
        };
        std::vector<std::jthread> threads;
        for (std::size_t i = 0; i < kThreads; ++i) {
            threads.emplace_back(run, i);
        }
        threads.clear();
        for (const TuWeakPointer<Shared>& link : weak) {
            ASSERT_TRUE(link.Lock().IsNull());
        }
        ASSERT_EQ(s_alive, 0);
    }
}

class Document : public IExtendable, public TuReferenceCounted, public ISerializable
{
    TU_DECLARE_RTTI

public:
    void Serialize(TuStreamWriteBinary&) const override { }
    void Serialize(TuStreamReadBinary&) override { }
    TU_DECLARE_EXTENSIONS;
};
TU_DEFINE_RTTI_ROOT(Document, nullptr, nullptr);
constexpr unsigned int kLine = __LINE__ + 1;
TU_DEFINE_EXTENSIONS(Document, ISerializable)

TEST(IExtensionInterfaceTest, AnObjectOfSeveralInterfacesIsOneObjectAndAnswersForThem)
{
    const TuSmartPointer<Document> document = new Document;
    EXPECT_EQ(&document->GetRTTI(), &Document::RTTI);
    IExtendable& writing = *document;
    const IExtendable& reading = *document;
    EXPECT_EQ(&reading.getReferenceCounter(), &document->getReferenceCounter());
    const char* const name = ISerializable::kExtensionName;
    EXPECT_EQ(dynamic_cast<ISerializable*>(writing.GetExtension(name, true)), document.Get());
    EXPECT_EQ(reading.GetExtension("Groundwork.Serializable", true), &reading);
    EXPECT_EQ(writing.GetExtension("TaBase.Bitmap", false), nullptr);
    EXPECT_EQ(reading.GetExtension(nullptr, false), nullptr);
    ExpectFailure<TuExceptionUnknownExtension>([&] { reading.GetExtension("TaBase.Bitmap", true); },
        u"tests/groundwork/tusmartpointer_test", kLine);
}

} // namespace
