#include "tabase/taunionfind.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

/// The plain way: every element carries the smallest element of its set.
class SetModel
{
public:
    explicit SetModel(unsigned int count)
    {
        for (unsigned int element = 0; element < count; ++element) {
            m_roots.push_back(element);
        }
    }

    void AddPair(unsigned int a, unsigned int b)
    {
        const auto [low, high] = std::minmax(m_roots[a], m_roots[b]);
        std::replace(m_roots.begin(), m_roots.end(), static_cast<unsigned int>(high),
            static_cast<unsigned int>(low));
    }
    unsigned int GetRoot(unsigned int element) const { return m_roots[element]; }

private:
    std::vector<unsigned int> m_roots;
};

RC_GTEST_PROP(TaUnionFindProperties, BehavesAsTheModelAfterEveryPair, ())
{
    const auto count = *rc::gen::inRange(1u, 60u);
    const auto element = rc::gen::inRange(0u, count);
    const auto pairs = *rc::gen::container<std::vector<std::pair<unsigned int, unsigned int>>>(
        rc::gen::pair(element, element));

    TaUnionFind sets(count);
    SetModel model(count);
    for (const auto& [a, b] : pairs) {
        sets.AddPair(a, b);
        model.AddPair(a, b);
        for (unsigned int i = 0; i < count; ++i) {
            RC_ASSERT(sets.GetRoot(i) == model.GetRoot(i));
        }
    }

    // The numbers follow the roots in increasing order.
    const unsigned long setCount = sets.CreateSetNumbers();
    std::vector<unsigned long> numberOfRoot(count);
    unsigned long next = 0;
    for (unsigned int i = 0; i < count; ++i) {
        if (model.GetRoot(i) == i) {
            numberOfRoot[i] = next++;
        }
        RC_ASSERT(sets.GetSetNumber(i) == numberOfRoot[model.GetRoot(i)]);
    }
    RC_ASSERT(setCount == next);
}

} // namespace
