#include "groundwork/cstring.h"
#include "groundwork/tuarraymanaged.h"
#include "groundwork/tuhashmodulo.h"
#include "groundwork/tulist.h"
#include "groundwork/tulistsorted.h"
#include "groundwork/tumap.h"
#include "groundwork/tuset.h"
#include "support/memorystreams.h"

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
        case 1: {
            const T own = model[number % size];
            array.InsertAt(place, array[number % size]);
            model.insert(at, own);
            break;
        }
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
        case 4:
            array.SetGrowBy(number % 4);
            array.FreeExtra();
            array = Array(Array(array));
            break;
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
    for (const auto& [kind, where, number] : changes) {
        const CString value = make<CString>(number);
        const auto step = static_cast<std::ptrdiff_t>(where % (model.size() + 1));
        const auto place = std::next(list.begin(), step);
        const auto at = std::next(model.begin(), step);
        switch (kind % 6) {
        case 0:
            list.Add(value);
            model.push_back(value);
            break;
        case 1:
            list.AddHead(value);
            model.push_front(value);
            break;
        case 2:
            RC_ASSERT(*list.InsertBefore(place, value) == value);
            model.insert(at, value);
            break;
        case 3:
            if (at != model.end()) {
                const auto rest = std::distance(model.erase(at), model.end());
                RC_ASSERT(std::distance(list.Erase(place), list.end()) == rest);
            }
            break;
        case 4: {
            const auto byLength
                = [](const CString& a, const CString& b) { return a.GetLength() < b.GetLength(); };
            list.Sort(byLength);
            model.sort(byLength); // stable, too
            break;
        }
        default:
            TuList<CString>(list).Swap(list);
            RC_ASSERT(ReadFromBytes(WriteToBytes([&](auto& stream) { list.Serialize(stream); }),
                [&](auto& stream) { list.Serialize(stream); }));
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
        list.Add(value);
    }
    std::vector<int> expected(values);
    std::stable_sort(expected.begin(), expected.end(), byTens);
    RC_ASSERT(std::equal(list.begin(), list.end(), expected.begin(), expected.end()));
}

template <class K> void compareMap(const Changes& changes, unsigned int bucketCount)
{
    TuMap<K, unsigned int> map(3, bucketCount);
    TuSet<K> set(3, bucketCount);
    std::map<K, unsigned int> model;
    std::vector<std::list<K>> order(bucketCount); // bucket by bucket, the newest first
    for (const auto& [kind, where, number] : changes) {
        const K key = make<K>(where % 64 * 7);
        const bool isNew = !model.contains(key);
        switch (kind % 5) {
        case 0:
            RC_ASSERT(map.SetAt(key, number) == isNew);
            RC_ASSERT(set.Add(key) == isNew);
            model[key] = number;
            break;
        case 1:
            RC_ASSERT(map.Insert(key, number) == set.Add(key));
            model.insert({ key, number });
            break;
        case 2:
            RC_ASSERT(map.RemoveKey(key) == !isNew);
            RC_ASSERT(set.RemoveKey(key) == !isNew);
            model.erase(key);
            break;
        case 3:
            RC_ASSERT(ReadFromBytes(WriteToBytes([&](auto& stream) { map.Serialize(stream); }),
                [&](auto& stream) { map.Serialize(stream); }));
            map = TuMap<K, unsigned int>(map);
            break;
        default:
            if (!isNew) {
                const auto rest = std::distance(map.Find(key), map.end());
                RC_ASSERT(std::distance(map.Erase(map.Find(key)), map.end()) == rest - 1);
                RC_ASSERT(std::distance(set.Erase(set.Find(key)), set.end()) == rest - 1);
                model.erase(key);
            }
        }
        std::list<K>& bucket = order[TuHashKey<K>::Compute(key) % bucketCount];
        if (isNew && model.contains(key)) {
            bucket.push_front(key);
        } else if (!isNew && !model.contains(key)) {
            bucket.remove(key);
        }
        std::vector<K> keys;
        for (const std::list<K>& each : order) {
            keys.insert(keys.end(), each.begin(), each.end());
        }
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
    compareMap<unsigned int>(changes, bucketCount);
    compareMap<long long>(changes, bucketCount);
    compareMap<CString>(changes, bucketCount);
}

bool isModuloExact(std::uint64_t value, std::uint32_t divisor)
{
    const std::uint64_t reciprocal = TuHashModulo::GetReciprocal(divisor);
    const auto low = static_cast<std::uint32_t>(value);
    return TuHashModulo::Compute(value, divisor, reciprocal) == value % divisor
        && TuHashModulo::Compute(low, divisor, reciprocal) == low % divisor;
}

RC_GTEST_PROP(ContainerProperties, TheModuloByReciprocalIsExact, ())
{
    const auto divisor = *rc::gen::nonZero<std::uint32_t>();
    const auto value = *rc::gen::arbitrary<std::uint64_t>();
    // The multiples and their neighbours are where a quotient tips over.
    const std::uint64_t multiple = value - value % divisor;
    for (const std::uint64_t near : { value, multiple, multiple - 1, multiple + divisor - 1 }) {
        RC_ASSERT(isModuloExact(near, divisor));
    }
}

TEST(ContainerProperties, TheModuloByReciprocalIsExactAtTheLimits)
{
    constexpr std::uint64_t kMost = ~std::uint64_t{ 0 };
    for (const std::uint32_t divisor :
        { 1u, 2u, 3u, 17u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFEu, 0xFFFFFFFFu }) {
        for (std::uint64_t offset = 0; offset < 1000; ++offset) {
            for (const std::uint64_t value :
                { offset, kMost - offset, kMost - kMost % divisor - offset, (kMost >> 1) - offset,
                    divisor - offset, 0xFFFFFFFFu - 0xFFFFFFFFu % divisor - offset }) {
                EXPECT_TRUE(isModuloExact(value, divisor)) << value << " % " << divisor;
            }
        }
    }
}

} // namespace
