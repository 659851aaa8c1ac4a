#include "tamesh/vertexmerger.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace tamesh {

namespace {

    std::uint64_t mix(std::uint64_t value)
    {
        value = (value ^ (value >> 32)) * 0xD6E8FEB86659FD93u;
        value = (value ^ (value >> 32)) * 0xD6E8FEB86659FD93u;
        return value ^ (value >> 32);
    }

    std::uint64_t hash(const SPoint& point)
    {
        return mix(std::bit_cast<std::uint64_t>(point.x)
            + mix(std::bit_cast<std::uint64_t>(point.y)
                + mix(std::bit_cast<std::uint64_t>(point.z))));
    }

} // namespace

std::uint32_t VertexMerger::GetVertex(SPoint point)
{
    // Zero plus negative zero is zero; every other number stays as it is.
    point = { point.x + 0.0, point.y + 0.0, point.z + 0.0 };
    if (m_mesh.GetVertexCount() >= m_slots.GetSize() / 2) {
        grow();
    }
    std::uint32_t& slot = findSlot(point);
    if (slot == kEmpty) {
        const std::uint32_t index = m_mesh.GetVertexCount();
        m_mesh.AddVertex(point);
        slot = index;
    }
    return slot;
}

std::uint32_t& VertexMerger::findSlot(const SPoint& point)
{
    const std::uint32_t mask = m_slots.GetSize() - 1;
    auto place = static_cast<std::uint32_t>(hash(point)) & mask;
    while (m_slots[place] != kEmpty && m_mesh.GetVertex(m_slots[place]) != point) {
        place = (place + 1) & mask;
    }
    return m_slots[place];
}

void VertexMerger::grow()
{
    constexpr std::uint32_t kFirstSize = 64;
    if (m_slots.GetSize() > std::numeric_limits<std::uint32_t>::max() / 2) {
        throw TuExceptionOutOfMemory(TU_HERE);
    }
    const std::uint32_t size = std::max(m_slots.GetSize() * 2, kFirstSize);
    TuArray<std::uint32_t>().Swap(m_slots);
    m_slots.SetSize(size);
    std::fill(m_slots.begin(), m_slots.end(), kEmpty);
    for (std::uint32_t index = 0; index < m_mesh.GetVertexCount(); ++index) {
        findSlot(m_mesh.GetVertex(index)) = index;
    }
}

} // namespace tamesh
