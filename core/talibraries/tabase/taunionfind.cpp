#include "tabase/taunionfind.h"

#include "groundwork/tucondition.h"

#include <limits>
#include <numeric>

TaUnionFind::TaUnionFind(unsigned long count) { InitElements(count); }

void TaUnionFind::InitElements(unsigned long count)
{
    // The greatest number fits no array, and is no element's.
    TuPreCondition<2>(u"elements have 32-bit numbers", TU_HERE,
        [count] { return count <= std::numeric_limits<std::uint32_t>::max() - 1; });
    m_entries.SetSize(static_cast<unsigned int>(count));
    std::iota(m_entries.begin(), m_entries.end(), std::uint32_t{ 0 });
    m_numbered = false;
}

unsigned long TaUnionFind::GetRoot(unsigned long element) const
{
    assertForest();
    auto root = static_cast<std::uint32_t>(element);
    while (m_entries[root] != root) {
        root = m_entries[root];
    }
    return root;
}

/// Parents are not greater than their children, so going upwards, each element finds its parent's
/// entry numbered already: one pass does what collapsing all paths first would prepare.
unsigned long TaUnionFind::CreateSetNumbers()
{
    assertForest();
    std::uint32_t count = 0;
    const unsigned int size = m_entries.GetSize();
    for (unsigned int element = 0; element < size; ++element) {
        const std::uint32_t parent = m_entries[element];
        m_entries[element] = parent == element ? count++ : m_entries[parent];
    }
    m_numbered = true;
    return count;
}

void TaUnionFind::collapsePath(unsigned long element, unsigned long root)
{
    assertForest();
    auto current = static_cast<std::uint32_t>(element);
    for (;;) {
        const std::uint32_t parent = m_entries[current];
        m_entries[current] = static_cast<std::uint32_t>(root);
        if (parent == current) {
            return;
        }
        current = parent;
    }
}
