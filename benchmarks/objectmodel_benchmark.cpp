#include "groundwork/iobject.h"
#include "groundwork/tusmartpointer.h"

#include <benchmark/benchmark.h>
#if defined(TA_PEER_BOOST)
#include <boost/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>
#endif

#include <array>
#include <memory>
#include <random>
#include <vector>

namespace {

// Counted pointers: an object of 16 bytes of its own, with a virtual destructor everywhere.

struct Counted : public TuReferenceCounted
{
    long long payload[2]{};
};

struct Plain
{
    virtual ~Plain() = default;
    long long payload[2]{};
};

/// A function of its own, as in most programs: inlined into the measuring loop, the same
/// instructions cost up to a tenth more or less by where the compiler happens to put them.
template <class Pointer> [[gnu::noinline]] void copyOnce(const Pointer& pointer)
{
    Pointer copy(pointer);
    benchmark::DoNotOptimize(copy);
}

template <class Pointer> void copyAndDestroy(benchmark::State& state, const Pointer& pointer)
{
    for (auto _ : state) {
        copyOnce(pointer);
    }
}

void BM_TuSmartPointer_CopyAndDestroy(benchmark::State& state)
{
    copyAndDestroy(state, TuSmartPointer<Counted>(new Counted));
}
BENCHMARK(BM_TuSmartPointer_CopyAndDestroy);

void BM_StdShared_CopyAndDestroy(benchmark::State& state)
{
    copyAndDestroy(state, std::make_shared<Plain>());
}
BENCHMARK(BM_StdShared_CopyAndDestroy);

template <class Make> void makeAndDestroy(benchmark::State& state, Make make)
{
    for (auto _ : state) {
        auto pointer = make();
        benchmark::DoNotOptimize(pointer);
    }
}

void BM_TuSmartPointer_MakeAndDestroy(benchmark::State& state)
{
    makeAndDestroy(state, [] { return TuMake<Counted>(); });
}
BENCHMARK(BM_TuSmartPointer_MakeAndDestroy);

void BM_StdShared_MakeAndDestroy(benchmark::State& state)
{
    makeAndDestroy(state, [] { return std::make_shared<Plain>(); });
}
BENCHMARK(BM_StdShared_MakeAndDestroy);

#if defined(TA_PEER_BOOST)
struct BoostCounted : public boost::intrusive_ref_counter<BoostCounted>
{
    virtual ~BoostCounted() = default;
    long long payload[2]{};
};

void BM_BoostIntrusive_CopyAndDestroy(benchmark::State& state)
{
    copyAndDestroy(state, boost::intrusive_ptr<BoostCounted>(new BoostCounted));
}
BENCHMARK(BM_BoostIntrusive_CopyAndDestroy);

void BM_BoostIntrusive_MakeAndDestroy(benchmark::State& state)
{
    makeAndDestroy(state, [] { return boost::intrusive_ptr<BoostCounted>(new BoostCounted); });
}
BENCHMARK(BM_BoostIntrusive_MakeAndDestroy);
#endif

// Kind tests: classes at depth 4, asked for a base that most of them have.

#define TA_BENCHMARK_CLASS(Class, Base)                                                            \
    struct Class : public Base                                                                     \
    {                                                                                              \
        TU_DECLARE_RTTI                                                                            \
    };                                                                                             \
    TU_DEFINE_RTTI(Class, Base, nullptr, nullptr)

struct Level0 : public virtual IObject
{
    TU_DECLARE_RTTI
};
TU_DEFINE_RTTI_ROOT(Level0, nullptr, nullptr);
TA_BENCHMARK_CLASS(Level1, Level0);
TA_BENCHMARK_CLASS(Level2, Level1);
TA_BENCHMARK_CLASS(Level3, Level2);
TA_BENCHMARK_CLASS(Level4a, Level3);
TA_BENCHMARK_CLASS(Level4b, Level3);
TA_BENCHMARK_CLASS(Other3, Level2);
TA_BENCHMARK_CLASS(Level4c, Other3);
TA_BENCHMARK_CLASS(Level4d, Level3);

/// 1,024 objects in random order, of four classes or of one.
std::vector<std::unique_ptr<Level0>> makeObjects(bool mixed)
{
    constexpr std::size_t kObjects = 1024;
    std::mt19937 random(1); // NOLINT(cert-msc51-cpp): the same objects in every run
    std::vector<std::unique_ptr<Level0>> objects;
    for (std::size_t i = 0; i < kObjects; ++i) {
        switch (mixed ? random() % 4 : 0) {
        case 0:
            objects.push_back(std::make_unique<Level4a>());
            break;
        case 1:
            objects.push_back(std::make_unique<Level4b>());
            break;
        case 2:
            objects.push_back(std::make_unique<Level4c>());
            break;
        default:
            objects.push_back(std::make_unique<Level4d>());
            break;
        }
    }
    return objects;
}

template <class Test> void testKinds(benchmark::State& state, bool mixed, Test test)
{
    const auto objects = makeObjects(mixed);
    for (auto _ : state) {
        int found = 0;
        for (const auto& object : objects) {
            found += test(*object) ? 1 : 0;
        }
        benchmark::DoNotOptimize(found);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(objects.size()));
}

// Objects of a type, so that the loops hold the questions themselves.
constexpr auto isKindOfLevel3 = [](const Level0& object) { return object.IsKindOf(Level3::RTTI); };
constexpr auto castsToLevel3
    = [](const Level0& object) { return dynamic_cast<const Level3*>(&object) != nullptr; };

void BM_IsKindOf_FourClasses(benchmark::State& state) { testKinds(state, true, isKindOfLevel3); }
BENCHMARK(BM_IsKindOf_FourClasses);

void BM_DynamicCast_FourClasses(benchmark::State& state) { testKinds(state, true, castsToLevel3); }
BENCHMARK(BM_DynamicCast_FourClasses);

void BM_IsKindOf_OneClass(benchmark::State& state) { testKinds(state, false, isKindOfLevel3); }
BENCHMARK(BM_IsKindOf_OneClass);

void BM_DynamicCast_OneClass(benchmark::State& state) { testKinds(state, false, castsToLevel3); }
BENCHMARK(BM_DynamicCast_OneClass);

} // namespace
