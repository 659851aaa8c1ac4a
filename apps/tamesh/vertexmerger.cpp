#include "tamesh/vertexmerger.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <random>

namespace tamesh {

namespace {

    /// Differs in every run, so that nobody can make a file whose positions all meet in one slot.
    struct SKey
    {
        std::uint64_t first;
        std::uint64_t second;
    };

    SKey makeKey()
    {
        std::random_device random;
        const auto draw = [&random] { return (std::uint64_t{ random() } << 32) | random(); };
        return { draw(), draw() };
    }

    /// SipHash with one round for each word and three at the end.
    class KeyedHash
    {
    public:
        explicit KeyedHash(const SKey& key)
            : m_a(key.first ^ 0x736F6D6570736575u)
            , m_b(key.second ^ 0x646F72616E646F6Du)
            , m_c(key.first ^ 0x6C7967656E657261u)
            , m_d(key.second ^ 0x7465646279746573u)
        {
        }

        void Add(std::uint64_t word)
        {
            m_d ^= word;
            mix();
            m_a ^= word;
        }
        std::uint64_t Finish();

    private:
        void mix();

        std::uint64_t m_a;
        std::uint64_t m_b;
        std::uint64_t m_c;
        std::uint64_t m_d;
    };

    void KeyedHash::mix()
    {
        m_a += m_b;
        m_b = std::rotl(m_b, 13) ^ m_a;
        m_a = std::rotl(m_a, 32);
        m_c += m_d;
        m_d = std::rotl(m_d, 16) ^ m_c;
        m_a += m_d;
        m_d = std::rotl(m_d, 21) ^ m_a;
        m_c += m_b;
        m_b = std::rotl(m_b, 17) ^ m_c;
        m_c = std::rotl(m_c, 32);
    }

    std::uint64_t KeyedHash::Finish()
    {
        m_c ^= 0xFF;
        mix();
        mix();
        mix();
        return m_a ^ m_b ^ m_c ^ m_d;
    }

    std::uint64_t hash(const SPoint& point)
    {
        static const SKey key = makeKey();
        KeyedHash hash(key);
        hash.Add(std::bit_cast<std::uint64_t>(point.x));
        hash.Add(std::bit_cast<std::uint64_t>(point.y));
        hash.Add(std::bit_cast<std::uint64_t>(point.z));
        return hash.Finish();
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
