#include "tabase/taunionfind.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace {

RC_GTEST_PROP(TaUnionFindProperties, BehavesAsTheModelAfterEveryPair, ())
{
    const auto count = *rc::gen::inRange(1u, 60u);
    const auto element = rc::gen::inRange(0u, count);
    const auto pairs = *rc::gen::container<std::vector<std::pair<unsigned int, unsigned int>>>(
        rc::gen::pair(element, element));

    TaUnionFind sets(count);
    // The plain way: every element carries the smallest element of its set.
    std::vector<unsigned int> roots(count);
    std::iota(roots.begin(), roots.end(), 0u);
    for (const auto& [a, b] : pairs) {
        sets.AddPair(a, b);
        const auto [low, high] = std::minmax({ roots[a], roots[b] });
        std::replace(roots.begin(), roots.end(), high, low);
        for (unsigned int i = 0; i < count; ++i) {
            RC_ASSERT(sets.GetRoot(i) == roots[i]);
        }
    }

    // The numbers follow the roots in increasing order.
    const unsigned long setCount = sets.CreateSetNumbers();
    std::vector<unsigned long> numberOfRoot(count);
    unsigned long next = 0;
    for (unsigned int i = 0; i < count; ++i) {
        if (roots[i] == i) {
            numberOfRoot[i] = next++;
        }
        RC_ASSERT(sets.GetSetNumber(i) == numberOfRoot[roots[i]]);
    }
    RC_ASSERT(setCount == next);
}

} // namespace
