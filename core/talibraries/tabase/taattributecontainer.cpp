#include "tabase/taattributecontainer.h"

#include "groundwork/tucondition.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr std::size_t kAlignment = 8;

std::size_t roundUp(std::size_t size) { return (size + kAlignment - 1) / kAlignment * kAlignment; }

} // namespace

TaAttributeContainer::TaAttributeContainer(unsigned int blockSize)
    : m_blockSize(blockSize)
    , m_stride(kAlignment) // an element without attributes has an address, too
{
    TuPreCondition<2>(
        u"a block holds at least one element", TU_HERE, [blockSize] { return blockSize != 0; });
}

TaAttributeContainer::~TaAttributeContainer() = default;

const TaAttributeContainer::SPlace* TaAttributeContainer::findPlace(
    const TaAttributeDefinition& definition) const
{
    const auto place = std::find_if(m_places.begin(), m_places.end(),
        [&](const SPlace& candidate) { return candidate.definition.Get() == &definition; });
    return place != m_places.end() ? &*place : nullptr;
}

bool TaAttributeContainer::Has(const TaAttributeDefinition& definition) const
{
    return findPlace(definition) != nullptr;
}

void TaAttributeContainer::Assert(const TaAttributeDefinition& definition) const
{
    if (!Has(definition)) {
        throw TuExceptionPreconditionViolation(
            TU_HERE, CString(u"the elements have the attribute ") += definition.GetName());
    }
}

void TaAttributeContainer::AddAttribute(const Definition& definition)
{
    TuPreCondition<2>(u"the definition is not null", TU_HERE, [&] { return !definition.IsNull(); });
    if (Has(*definition)) {
        return;
    }
    const std::size_t offset = m_places.empty()
        ? 0
        : m_places.back().offset + roundUp(m_places.back().definition->GetSize());
    m_places.push_back({ definition, offset });
    try {
        moveTo(m_capacity, offset + roundUp(definition->GetSize()));
    } catch (...) {
        m_places.pop_back();
        throw;
    }
    for (std::size_t slot = 0; slot != m_usedSlots; ++slot) {
        definition->GetPolicy().Construct(
            m_block.get() + slot * m_stride + offset, definition->GetSize());
    }
}

/// To a block with room for `capacity` elements, `stride` bytes apart.
void TaAttributeContainer::moveTo(std::size_t capacity, std::size_t stride)
{
    if (capacity == 0) {
        m_stride = stride;
        return;
    }
    std::unique_ptr<std::byte[]> block;
    try {
        m_freeSlots.reserve(capacity);
        block = std::make_unique_for_overwrite<std::byte[]>(capacity * stride);
    } catch (const std::bad_alloc&) {
        throw TuExceptionOutOfMemory(TU_HERE);
    }
    for (std::size_t slot = 0; slot != m_usedSlots; ++slot) {
        std::memcpy(block.get() + slot * stride, m_block.get() + slot * m_stride,
            std::min(stride, m_stride));
    }
    if (m_block == nullptr) {
        onInitContainer(block.get(), stride);
    } else {
        onCopyContainer(m_block.get(), m_stride, block.get(), stride);
    }
    m_block = std::move(block);
    m_capacity = capacity;
    m_stride = stride;
}

void* TaAttributeContainer::createElement()
{
    if (m_freeSlots.empty() && m_usedSlots == m_capacity) {
        moveTo(m_capacity + std::max<std::size_t>(m_blockSize, m_capacity), m_stride);
    }
    std::size_t slot = m_usedSlots;
    if (m_freeSlots.empty()) {
        ++m_usedSlots;
    } else {
        slot = m_freeSlots.back();
        m_freeSlots.pop_back();
    }
    std::byte* const element = m_block.get() + slot * m_stride;
    for (const SPlace& place : m_places) {
        place.definition->GetPolicy().Construct(
            element + place.offset, place.definition->GetSize());
    }
    return element;
}

void TaAttributeContainer::releaseElement(void* element) noexcept
{
    const std::ptrdiff_t offset = static_cast<std::byte*>(element) - m_block.get();
    m_freeSlots.push_back(static_cast<std::size_t>(offset) / m_stride); // has been reserved
}

void TaAttributeContainer::releaseAllElements()
{
    onDeleteContainer();
    m_block.reset();
    m_freeSlots.clear();
    m_capacity = 0;
    m_usedSlots = 0;
}

void* TaAttributeContainer::getValue(void* element, const TaAttributeDefinition& definition) const
{
    const SPlace* const place = findPlace(definition);
    TU_ASSERT(place != nullptr, "the elements do not have this attribute");
    return static_cast<std::byte*>(element) + place->offset;
}
