#include "tacompression/taoutputblock.h"

#include "groundwork/tuexceptions.h"

#include <algorithm>
#include <utility>

bool TaOutputBlock::Prepare(unsigned long long capacity)
{
    m_bytes.RemoveAll();
    if (capacity > m_bytes.GetCapacity()) {
        m_bytes.FreeExtra(); // growing would keep bytes that nobody needs
    }
    if (!std::in_range<unsigned int>(capacity)) {
        return false;
    }
    try {
        m_bytes.Reserve(std::max(static_cast<unsigned int>(capacity), 1u));
    } catch (const TuExceptionOutOfMemory&) {
        return false;
    }
    return true;
}

void TaOutputBlock::Reset()
{
    m_bytes.RemoveAll();
    m_bytes.FreeExtra();
}
