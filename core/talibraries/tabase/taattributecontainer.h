#pragma once

#include "groundwork/tusmartpointer.h"
#include "tabase/taattributedefinition.h"

#include <cstddef>
#include <memory>
#include <vector>

/// Attributes of many objects of one kind, kept together in one block of memory: a base of what
/// owns such objects (a graph of its nodes). Each object has one element; the definitions say what
/// lies in it.
///
/// An object knows its element by address. The container tells where elements are through three
/// hooks: in a block of memory, element k begins at block + k * stride. The block has room for a
/// block size of elements, then for twice as many each time that it is full, so that adding one
/// object after the other takes linear time.
///
/// Threads: as the object that derives from it.
/// Failure: TuExceptionOutOfMemory and TuExceptionPreconditionViolation; all is then as before.
class TABASE_API TaAttributeContainer
{
public:
    using Definition = TuSmartPointer<const TaAttributeDefinition>;

    TaAttributeContainer(const TaAttributeContainer&) = delete;
    TaAttributeContainer& operator=(const TaAttributeContainer&) = delete;
    virtual ~TaAttributeContainer();

    /// Gives each element, also those to come, a value of this kind; nothing where it has one.
    void AddAttribute(const Definition& definition);
    bool Has(const TaAttributeDefinition& definition) const;
    /// TuExceptionPreconditionViolation, with the name of the attribute, where Has() is false.
    void Assert(const TaAttributeDefinition& definition) const;

protected:
    /// `blockSize` counts elements.
    explicit TaAttributeContainer(unsigned int blockSize);

    /// A new element, whose values begin as their definitions say.
    void* createElement();
    /// Takes back one that createElement has given.
    void releaseElement(void* element) noexcept;
    void releaseAllElements();
    /// The value of an attribute in an element; the caller knows that it is there.
    void* getValue(void* element, const TaAttributeDefinition& definition) const;

    /// The first block is there, with room for all objects in their order.
    virtual void onInitContainer(void* block, std::size_t stride) = 0;
    /// All elements have moved, each in its slot; the old block still stands, but goes.
    virtual void onCopyContainer(
        const void* oldBlock, std::size_t oldStride, void* newBlock, std::size_t newStride)
        = 0;
    /// There are no elements any more.
    virtual void onDeleteContainer() = 0;

private:
    struct SPlace
    {
        Definition definition;
        std::size_t offset;
    };

    const SPlace* findPlace(const TaAttributeDefinition& definition) const;
    void moveTo(std::size_t capacity, std::size_t stride);

    const unsigned int m_blockSize;
    std::vector<SPlace> m_places;
    std::size_t m_stride;
    std::unique_ptr<std::byte[]> m_block;
    std::size_t m_capacity = 0; // in elements
    std::size_t m_usedSlots = 0; // the first ones, which have been given out
    std::vector<std::size_t> m_freeSlots; // of those, which came back; room for all
};
