#include "groundwork/tuarraymanaged.h"
#include "groundwork/tuhashmodulo.h"
#include "groundwork/tulist.h"
#include "groundwork/tulistsorted.h"
#include "groundwork/tumap.h"
#include "groundwork/tuset.h"
#include "support/memorystreams.h"
#include "support/testrandom.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <list>
#include <map>
#include <vector>

namespace {

/// Changes of a container: which, where, and with what. Each container takes the kind modulo the
/// number of its operations.
using Changes = std::vector<std::tuple<unsigned int, unsigned int, unsigned int>>;

/// Short texts lie in the string object, long ones beside it.
template <class T> T make(unsigned int value)
{
    if constexpr (std::is_same_v<T, CString>) {
        return CString(std::u16string(value % 20, static_cast<char16_t>(u'a' + value % 26)));
    } else {
        return static_cast<T>(value);
    }
}

template <class Container> void readBack(Container& container)
{
    RC_ASSERT(ReadFromBytes(WriteToBytes([&](auto& stream) { container.Serialize(stream); }),
        [&](auto& stream) { container.Serialize(stream); }));
}

/// Changes an array or a list, and a vector likewise.
template <class Container> void compareSequence(const Changes& changes)
{
    using T = typename Container::value_type;
    constexpr bool kIsArray = requires { &Container::SetSize; };
    Container container;
    std::vector<T> model;
    for (const auto& [kind, where, number] : changes) {
        const auto size = static_cast<unsigned int>(model.size());
        const unsigned int place = size != 0 ? where % size : 0;
        const auto position = std::next(container.begin(), place);
        const auto at = std::next(model.begin(), place);
        const T value = make<T>(number);
        switch (size != 0 ? kind % 7 : 0) {
        case 0:
            container.Add(value);
            container.Add(*container.begin());
            model.push_back(value);
            model.push_back(T(model.front()));
            break;
        case 1:
            if constexpr (kIsArray) {
                container.InsertAt(place, *container.begin());
            } else {
                container.InsertBefore(position, *container.begin());
            }
            model.insert(at, T(model.front()));
            break;
        case 2: {
            const auto next = container.Erase(position);
            RC_ASSERT(next == std::next(container.begin(), place));
            model.erase(at);
            break;
        }
        case 3:
            if constexpr (kIsArray) {
                const unsigned int count = number % (size - place + 1);
                container.RemoveAt(place, count);
                container.SetSize(number % 50);
                model.erase(at, at + std::ptrdiff_t{ count });
                model.resize(number % 50);
            } else {
                RC_ASSERT(container.Remove(*position)); // the value may go with its node
                model.erase(std::find(model.begin(), model.end(), *at));
            }
            break;
        case 4: {
            if constexpr (kIsArray) {
                container.SetGrowBy(number % 4);
                container.FreeExtra();
                RC_ASSERT(container.GetCapacity() == size);
            } else {
                readBack(container);
            }
            container = std::as_const(container);
            Container copy{ value };
            copy = container;
            if constexpr (kIsArray) {
                RC_ASSERT(copy.GetGrowBy() == number % 4);
            }
            Container moved(std::move(container));
            RC_ASSERT(container.IsEmpty()); // NOLINT(bugprone-use-after-move): what is promised
            RC_ASSERT(moved == copy);
            container = std::move(moved);
            break;
        }
        case 5:
            if (size < 100) {
                container.Append(container);
                model.reserve(size * 2);
                std::copy_n(model.begin(), size, std::back_inserter(model));
            }
            break;
        default:
            container.Sort(std::less<T>());
            std::sort(model.begin(), model.end());
        }
        RC_ASSERT(std::equal(container.begin(), container.end(), model.begin(), model.end()));
        RC_ASSERT(std::equal(container.rbegin(), container.rend(), model.rbegin(), model.rend()));
        RC_ASSERT(container.size() == model.size());
    }
}

RC_GTEST_PROP(ContainerProperties, ArraysAndListsBehaveAsAVector, (const Changes& changes))
{
    compareSequence<TuArray<int>>(changes);
    compareSequence<TuArray<CString>>(changes);
    compareSequence<TuArrayManaged<CString>>(changes);
    compareSequence<TuList<CString>>(changes);
}

RC_GTEST_PROP(ContainerProperties, ASortedListIsAStableSort, (const std::vector<int>& values))
{
    const auto byTens = [](int a, int b) { return a / 10 < b / 10; };
    TuListSorted<int, 1, unsigned int, decltype(byTens)> list(byTens);
    for (const int value : values) {
        RC_ASSERT(*list.Add(value) == value);
    }
    std::vector<int> expected(values);
    std::stable_sort(expected.begin(), expected.end(), byTens);
    RC_ASSERT(std::equal(list.begin(), list.end(), expected.begin(), expected.end()));
}

/// The order of iteration of a table that the keys are appended to.
template <class K> std::vector<K> inBuckets(std::vector<K> keys, unsigned int bucketCount)
{
    std::ranges::stable_sort(
        keys, {}, [&](const K& key) { return TuHashKey<K>::Compute(key) % bucketCount; });
    return keys;
}

template <class K>
void compareMap(const Changes& changes, unsigned int bucketCount, unsigned int otherCount)
{
    using Map = TuMap<K, unsigned int>;
    Map map(3, bucketCount);
    TuSet<K> set(3, bucketCount);
    std::map<K, unsigned int> model;
    std::vector<K> keys; // bucket by bucket, in each the newest first
    for (const auto& [kind, where, number] : changes) {
        const K key = make<K>(where % 64 * 7);
        const bool isNew = !model.contains(key);
        switch (kind % 7) {
        case 0:
            RC_ASSERT(map.SetAt(key, number) == isNew);
            RC_ASSERT(set.Add(key) == isNew);
            model[key] = number;
            break;
        case 1:
            RC_ASSERT(map.Insert(key, number) == set.Add(key));
            model.insert({ key, number });
            break;
        case 2: // by the key in the node that goes, where there is one
            RC_ASSERT(map.RemoveKey(isNew ? key : map.Find(key)->GetKey()) == !isNew);
            RC_ASSERT(set.RemoveKey(isNew ? key : *set.Find(key)) == !isNew);
            model.erase(key);
            break;
        case 3:
            if (!isNew) {
                const auto rest = std::distance(map.Find(key), map.end());
                RC_ASSERT(std::distance(map.Erase(map.Find(key)), map.end()) == rest - 1);
                RC_ASSERT(std::distance(set.Erase(set.Find(key)), set.end()) == rest - 1);
                model.erase(key);
            }
            break;
        case 4: { // through tables of other buckets, by copies and moves
            Map other(3, otherCount);
            TuSet<K> otherSet(3, otherCount);
            map = other = map;
            set = otherSet = set;
            other = std::move(map);
            RC_ASSERT(map.IsEmpty()); // NOLINT(bugprone-use-after-move): what is promised
            map = std::move(other);
            keys = inBuckets(keys, otherCount);
            break;
        }
        case 5:
            readBack(map);
            map = Map(map);
            set = TuSet<K>(set);
            break;
        default:
            if (number % 4 == 0) {
                map.RemoveAll();
                set.RemoveAll();
                model.clear();
            }
        }
        if (isNew && model.contains(key)) {
            keys.insert(keys.begin(), key);
        }
        std::erase_if(keys, [&](const K& each) { return !model.contains(each); });
        keys = inBuckets(keys, bucketCount);
        RC_ASSERT(std::equal(set.begin(), set.end(), keys.begin(), keys.end()));
        RC_ASSERT(std::equal(map.begin(), map.end(), keys.begin(), keys.end(),
            [&](const auto& entry, const K& expected) {
                return entry.GetKey() == expected && entry.GetValue() == model.at(expected);
            }));
        RC_ASSERT(map.GetCount() == model.size());
        RC_ASSERT((map.Lookup(key) != nullptr) == model.contains(key));
    }
}

RC_GTEST_PROP(ContainerProperties, MapsAndSetsBehaveAsAMapInTheirOwnOrder, (const Changes& changes))
{
    const unsigned int bucketCount = *rc::gen::inRange(1u, 40u);
    const unsigned int otherCount = *rc::gen::inRange(1u, 40u);
    compareMap<unsigned int>(changes, bucketCount, otherCount);
    compareMap<long long>(changes, bucketCount, otherCount);
    compareMap<CString>(changes, bucketCount, otherCount);
}

TEST(ContainerProperties, TheModuloByReciprocalIsExact)
{
    std::mt19937_64 random = MakeTestRandom();
    std::vector<std::uint64_t> divisors{ 1, 2, 3, 17, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFE,
        0xFFFFFFFF };
    std::generate_n(std::back_inserter(divisors), 1000, [&] { return random() >> 32 | 1; });
    for (const std::uint64_t each : divisors) {
        const auto divisor = static_cast<std::uint32_t>(each);
        const std::uint64_t reciprocal = TuHashModulo::GetReciprocal(divisor);
        for (int i = 0; i < 1000; ++i) {
            // The multiples and their neighbours are where a quotient tips over.
            const std::uint64_t value = random() >> random() % 64;
            const std::uint64_t multiple = ~value - ~value % divisor;
            for (const std::uint64_t near : { value, ~value, multiple, multiple - 1 }) {
                ASSERT_EQ(TuHashModulo::Compute(near, divisor, reciprocal), near % divisor);
                const auto low = static_cast<std::uint32_t>(near);
                ASSERT_EQ(TuHashModulo::Compute(low, divisor, reciprocal), low % divisor);
            }
        }
    }
}

} // namespace
