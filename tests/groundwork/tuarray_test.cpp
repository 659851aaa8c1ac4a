#include "groundwork/tuarray.h"

#include "containercases.h"
#include "groundwork/cstring.h"
#include "groundwork/tuarraymanaged.h"
#include "support/expectfailure.h"
#include "support/testrandom.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>
#include <type_traits>
#include <vector>

namespace {

TEST(TuArrayTest, GrowsByDoublingFromOneOrByItsStep)
{
    TuArray<int> doubling;
    for (const unsigned int expected : { 1u, 2u, 4u, 4u, 8u, 8u }) {
        const unsigned int before = doubling.GetCapacity();
        EXPECT_EQ(doubling.Add(0), expected != before);
        EXPECT_EQ(doubling.GetCapacity(), expected);
    }

    TuArray<CString> stepping;
    stepping.SetGrowBy(5);
    for (unsigned int i = 0; i < 11; ++i) {
        EXPECT_EQ(stepping.Add(u"text"), i % 5 == 0);
        EXPECT_EQ(stepping.GetCapacity(), 5 * (i / 5 + 1));
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

template <class Array> void takeElementsOfItself()
{
    const CString longText(u"a text too long to lie in the string object");
    Array array;
    array.Add(longText);
    for (unsigned int i = 0; i < 20; ++i) { // grows on the way
        array.Add(array[i]);
        array.InsertAt(0, array[i]);
    }
    array.Append(array);
    EXPECT_EQ(array.GetSize(), 82u);
    EXPECT_EQ(std::count(array.begin(), array.end(), longText), 82);

    Array& same = array;
    array = same;
    array.FreeExtra();
    EXPECT_EQ(array.GetCapacity(), 82u);
    EXPECT_EQ(array.GetLast(), longText);

    array.SetGrowBy(7);
    Array copy{ u"other" };
    copy = array;
    EXPECT_EQ(copy.GetGrowBy(), 7u);
    const Array moved(std::move(array));
    EXPECT_EQ(moved, copy);
    EXPECT_TRUE(array.IsEmpty()); // NOLINT(bugprone-use-after-move): what is promised
}

TEST(TuArrayTest, TakesElementsOfItselfAndLeavesNothingBehindAMove)
{
    takeElementsOfItself<TuArray<CString>>();
    takeElementsOfItself<TuArrayManaged<CString>>();
}

TEST(TuArrayTest, RefusesPlacesOutsideItself)
{
    TuArray<int> array{ 1, 2 };
    ExpectFailure<TuExceptionPreconditionViolation>([&] { array.GetAt(2); });
    ExpectFailure<TuExceptionPreconditionViolation>([&] { array.SetAt(2, 0); });
    ExpectFailure<TuExceptionPreconditionViolation>([&] { array.InsertAt(3, 0); });
    ExpectFailure<TuExceptionPreconditionViolation>([&] { array.RemoveAt(1, 2); });
    ExpectFailure<TuExceptionPreconditionViolation>([&] { array.RemoveAt(3, 0xFFFFFFFFu); });
    EXPECT_EQ(array, (TuArray<int>{ 1, 2 }));

    TuArray<int> empty;
    ExpectFailure<TuExceptionPreconditionViolation>([&] { empty.GetLast(); });
    ExpectFailure<TuExceptionPreconditionViolation>([&] { empty.RemoveLast(); });
}

template <class Array> struct Changes
{
    static constexpr void (*kGrowing[])(Array&)
        = { [](Array& array) { array.Add(array[0]); }, [](Array& array) { array.Append(array); },
              [](Array& array) {
                  array = Array(Array{ 1, 2, 3, 4, 5 });
              } };
    static constexpr void (*kMoving[])(Array&)
        = { [](Array& array) { array.InsertAt(0, array[1]); },
              [](Array& array) { array.SetSize(100); }, [](Array& array) { array.Reserve(100); } };
};

TEST(TuArrayTest, StaysAsItWasWhenMemoryRunsOutOrACopyFails)
{
    const auto expectUnchanged = []<class Array>(const Array& original) {
        for (const auto change : Changes<Array>::kGrowing) {
            ExpectUnchangedByFailedCopies(original, change);
            ExpectUnchangedWithoutMemory(original, change);
        }
        for (const auto change : Changes<Array>::kMoving) {
            ExpectUnchangedWithoutMemory(original, change);
        }
    };
    expectUnchanged(TuArray<int>{ 1, 2, 3, 4 });
    expectUnchanged(TuArray<Fragile>{ 1, 2, 3, 4 });
    EXPECT_EQ(Fragile::s_living, 0);
}

TEST(TuArrayTest, SortsInOrderNLogNWhateverTheInput)
{
    constexpr unsigned int kCount = 20'000;
    std::mt19937_64 random = MakeTestRandom();

    // An opponent that decides the order while it is asked, so as to make each pivot a bad one.
    std::vector<unsigned int> decided(kCount, kCount);
    unsigned int next = 0;
    unsigned int candidate = 0;
    unsigned long long asked = 0;
    const auto opponent = [&](unsigned int a, unsigned int b) {
        ++asked;
        if (decided[a] == kCount && decided[b] == kCount) {
            decided[a == candidate ? a : b] = next++;
        }
        if (decided[a] == kCount) {
            candidate = a;
        } else if (decided[b] == kCount) {
            candidate = b;
        }
        return decided[a] < decided[b];
    };
    TuArray<unsigned int> array;
    array.SetSize(kCount);
    std::iota(array.begin(), array.end(), 0u);
    array.Sort(opponent);
    EXPECT_LT(asked, 10.0 * kCount * std::log2(kCount));

    for (const unsigned int distinct : { 1u, 2u, 100u, 1'000'000u }) {
        for (unsigned int& value : array) {
            value = static_cast<unsigned int>(random()) % distinct;
        }
        asked = 0;
        array.Sort([&](unsigned int a, unsigned int b) { return ++asked, a > b; });
        EXPECT_TRUE(std::ranges::is_sorted(array, std::greater<>()));
        EXPECT_LT(asked, 10.0 * kCount * std::log2(kCount));
    }
}

TEST(TuArrayTest, SortKeepsAllElementsUnderAComparisonThatIsNoOrder)
{
    std::mt19937_64 random = MakeTestRandom();
    TuArray<CString> array;
    for (int i = 0; i < 500; ++i) {
        array.Add(CString(std::u16string(30, static_cast<char16_t>('a' + random() % 26))));
    }
    TuArray<CString> before(array);
    before.Sort();
    const auto expectSameElements = [&] {
        TuArray<CString> after(array);
        after.Sort();
        EXPECT_EQ(after, before);
    };
    array.Sort([&](const CString&, const CString&) { return random() % 2 == 0; });
    expectSameElements();
    for (int left : { 1, 100, 1000, 2000 }) {
        EXPECT_ANY_THROW(array.Sort([&](const CString& a, const CString& b) {
            return left-- > 0 ? b < a : throw std::runtime_error("no answer");
        }));
        expectSameElements();
        std::reverse(array.begin(), array.end());
    }
}

TEST(TuArrayTest, ServesStandardAlgorithms)
{
    static_assert(std::contiguous_iterator<TuArray<int>::iterator>);
    static_assert(std::is_nothrow_move_constructible_v<TuArrayManaged<CString>>);
    TuArray<int> array;
    std::ranges::copy(std::vector<int>{ 1, 2, 3 }, std::back_inserter(array));
    EXPECT_EQ(array.Find(2), 1u);
    EXPECT_EQ(array.Find(1, 1), TuArray<int>::kNotFound);
    EXPECT_EQ(*array.Erase(array.begin()), 2);
}

} // namespace
