#include "groundwork/tuarray.h"

#include "groundwork/cstring.h"
#include "groundwork/tuarraymanaged.h"
#include "groundwork/tustack.h"
#include "support/allocationlimit.h"
#include "support/expectfailure.h"
#include "support/testrandom.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <iterator>
#include <numeric>
#include <vector>

namespace {

static_assert(std::contiguous_iterator<TuArray<int>::iterator>);
static_assert(std::is_nothrow_move_constructible_v<TuArrayManaged<CString>>);

TEST(TuArrayTest, GrowsByDoublingFromOneOrByItsStep)
{
    TuArray<int> doubling;
    TuArray<CString> stepping;
    stepping.SetGrowBy(5);
    for (unsigned int size = 1; size <= 11; ++size) {
        EXPECT_EQ(doubling.Add(0), size == 1 || std::has_single_bit(size - 1));
        EXPECT_EQ(doubling.GetCapacity(), std::bit_ceil(size));
        EXPECT_EQ(stepping.Add(u"text"), size % 5 == 1);
        EXPECT_EQ(stepping.GetCapacity(), (size + 4) / 5 * 5);
    }
}

TEST(TuArrayTest, TheCapacityNeverWraps)
{
    const TuArray<long long> original{ 1 };
    TuArray<long long> array(original);
    array.SetGrowBy(0xFFFFFFFFu);
    const AllocationLimit limit(0);
    ExpectFailure<TuExceptionOutOfMemory>([&] { array.Add(2); });
    EXPECT_EQ(limit.GetLargest(), std::size_t{ 0xFFFFFFFFu } * sizeof(long long));
    ExpectFailure<TuExceptionOutOfMemory>([&] { array.SetSize(0xFFFFFFFFu); });
    EXPECT_EQ(array, original);
}

TEST(TuArrayTest, RefusesPlacesOutsideItself)
{
    using Array = TuArray<int>;
    void (*const outside[])(Array&) = { [](Array& array) { array.GetAt(2); },
        [](Array& array) { array.SetAt(2, 0); }, [](Array& array) { array.InsertAt(3, 0); },
        [](Array& array) { array.RemoveAt(1, 2); },
        [](Array& array) { array.RemoveAt(3, 0xFFFFFFFFu); }, [](Array&) { Array().GetLast(); },
        [](Array&) { Array().RemoveLast(); }, [](Array&) { TuStack<int>().Pop(); } };
    for (const auto action : outside) {
        Array array{ 1, 2 };
        ExpectFailure<TuExceptionPreconditionViolation>([&] { action(array); });
        EXPECT_EQ(array, (Array{ 1, 2 }));
    }
}

TEST(TuArrayTest, SortsInOrderNLogNWhateverTheInput)
{
    constexpr unsigned int kCount = 20'000;
    const double most = 10.0 * kCount * std::log2(kCount);
    std::mt19937_64 random = MakeTestRandom();

    // An opponent that decides the order while it is asked, so as to make each pivot a bad one.
    std::vector<unsigned int> decided(kCount, kCount);
    unsigned int next = 0;
    unsigned int candidate = 0;
    unsigned int asked = 0;
    const auto opponent = [&](unsigned int a, unsigned int b) {
        ++asked;
        if (decided[a] == kCount && decided[b] == kCount) {
            decided[a == candidate ? a : b] = next++;
        }
        if (decided[a] == kCount || decided[b] == kCount) {
            candidate = decided[a] == kCount ? a : b;
        }
        return decided[a] < decided[b];
    };
    TuArray<unsigned int> array;
    array.SetSize(kCount);
    std::iota(array.begin(), array.end(), 0u);
    array.Sort(opponent);
    EXPECT_LT(asked, most);

    for (const unsigned int distinct : { 1u, 2u, 100u, 1'000'000u }) {
        std::ranges::generate(
            array, [&] { return static_cast<unsigned int>(random() % distinct); });
        asked = 0;
        array.Sort([&](unsigned int a, unsigned int b) { return ++asked, a > b; });
        EXPECT_TRUE(std::ranges::is_sorted(array, std::greater<>()));
        EXPECT_LT(asked, most);
    }
}

TEST(TuArrayTest, SortKeepsAllElementsUnderAComparisonThatIsNoOrder)
{
    std::mt19937_64 random = MakeTestRandom();
    TuArray<CString> sorted; // of texts that are all different, and long
    for (char16_t unit = 1; unit <= 500; ++unit) {
        sorted.Add(CString(std::u16string(30, unit)));
    }
    for (const int answers : { 1, 100, 1000, 2000, 1'000'000 }) {
        TuArray<CString> array(sorted);
        std::ranges::shuffle(array, random);
        int left = answers;
        try {
            array.Sort([&](const CString&, const CString&) {
                return left-- > 0 ? random() % 2 == 0 : throw std::runtime_error("no answer");
            });
            EXPECT_GT(left, 0);
        } catch (const std::runtime_error&) {
            EXPECT_LT(left, 0);
        }
        array.Sort();
        EXPECT_EQ(array, sorted);
    }
}

} // namespace
