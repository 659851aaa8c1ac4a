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

template <class Array> void compareArray(const Changes& changes)
{
    using T = typename Array::value_type;
    Array array;
    std::vector<T> model;
    for (const auto& [kind, where, number] : changes) {
        const auto size = static_cast<unsigned int>(model.size());
        const unsigned int place = size != 0 ? where % size : 0;
        const auto at = model.begin() + std::ptrdiff_t{ place };
        const T value = make<T>(number);
        switch (size != 0 ? kind % 8 : 0) {
        case 0:
            array.Add(value);
            array.Add(array[place]);
            model.push_back(value);
            model.push_back(T(model[place]));
            break;
        case 1:
            array.InsertAt(place, array[number % size]);
            model.insert(at, T(model[number % size]));
            break;
        case 2: {
            const unsigned int count = number % (size - place + 1);
            array.RemoveAt(place, count);
            model.erase(at, at + std::ptrdiff_t{ count });
            break;
        }
        case 3:
            array.SetSize(number % 50);
            model.resize(number % 50);
            break;
        case 4: {
            array.SetGrowBy(number % 4);
            array.FreeExtra();
            RC_ASSERT(array.GetCapacity() == size);
            array = std::as_const(array);
            Array copy{ value };
            copy = array;
            array = Array(copy);
            RC_ASSERT(array.GetGrowBy() == number % 4);
            break;
        }
        case 5:
            if (size < 100) {
                array.Append(array);
                model.reserve(size * 2);
                std::copy_n(model.begin(), size, std::back_inserter(model));
            }
            break;
        case 6:
            array.Sort();
            std::sort(model.begin(), model.end());
            break;
        default:
            array.SetAt(place, value);
            *at = value;
        }
        RC_ASSERT(std::equal(array.begin(), array.end(), model.begin(), model.end()));
        RC_ASSERT(array.GetCapacity() >= array.GetSize());
    }
}

RC_GTEST_PROP(ContainerProperties, AnArrayBehavesAsAVector, (const Changes& changes))
{
    compareArray<TuArray<int>>(changes);
    compareArray<TuArray<CString>>(changes);
    compareArray<TuArrayManaged<CString>>(changes);
}

RC_GTEST_PROP(ContainerProperties, AListBehavesAsAStandardList, (const Changes& changes))
{
    TuList<CString> list;
    std::list<CString> model;
    const auto byLength
        = [](const CString& a, const CString& b) { return a.GetLength() < b.GetLength(); };
    for (const auto& [kind, where, number] : changes) {
        const CString value = make<CString>(number);
        const auto step = static_cast<std::ptrdiff_t>(where % (model.size() + 1));
        const auto place = std::next(list.begin(), step);
        const auto at = std::next(model.begin(), step);
        switch (kind % 7) {
        case 0:
            list.Add(value);
            list.AddHead(list.GetTail());
            model.push_back(value);
            model.push_front(value);
            break;
        case 1:
            RC_ASSERT(*list.InsertBefore(place, value) == value);
            model.insert(at, value);
            break;
        case 2:
            if (at != model.end()) {
                const auto rest = std::distance(model.erase(at), model.end());
                RC_ASSERT(std::distance(list.Erase(place), list.end()) == rest);
            }
            break;
        case 3:
            if (at != model.end()) {
                RC_ASSERT(list.Remove(*place)); // the value looked for may go with its node
                model.erase(std::find(model.begin(), model.end(), *at));
            }
            break;
        case 4:
            list.Sort(byLength);
            model.sort(byLength); // stable, too
            break;
        case 5:
            if (model.size() < 100) {
                list.Append(list);
                model.splice(model.end(), std::list<CString>(model));
            }
            break;
        default:
            list = std::as_const(list);
            TuList<CString>(list).Swap(list);
            readBack(list);
        }
        RC_ASSERT(std::equal(list.begin(), list.end(), model.begin(), model.end()));
        RC_ASSERT(std::equal(list.rbegin(), list.rend(), model.rbegin(), model.rend()));
        RC_ASSERT(list.GetCount() == model.size());
    }
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
        case 4: {
            Map other(3, otherCount);
            TuSet<K> otherSet(3, otherCount);
            map = other = map;
            set = otherSet = set;
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
    std::vector<std::uint32_t> divisors{ 1, 2, 3, 17, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFE,
        0xFFFFFFFF };
    std::mt19937_64 random = MakeTestRandom();
    std::generate_n(std::back_inserter(divisors), 1000,
        [&] { return static_cast<std::uint32_t>(random() >> (32 + random() % 31)) | 1; });
    for (const std::uint32_t divisor : divisors) {
        const std::uint64_t reciprocal = TuHashModulo::GetReciprocal(divisor);
        for (std::uint64_t offset = 0; offset < 200; ++offset) {
            // The multiples and their neighbours are where a quotient tips over.
            for (const std::uint64_t end : { std::uint64_t{ 0 }, ~std::uint64_t{ 0 } >> 1,
                     std::uint64_t{ 0xFFFFFFFF }, random() }) {
                for (const std::uint64_t value :
                    { end + offset, end - offset, end - end % divisor + 100 - offset }) {
                    const auto low = static_cast<std::uint32_t>(value);
                    ASSERT_TRUE(TuHashModulo::Compute(value, divisor, reciprocal) == value % divisor
                        && TuHashModulo::Compute(low, divisor, reciprocal) == low % divisor)
                        << value << " % " << divisor;
                }
            }
        }
    }
}

} // namespace
