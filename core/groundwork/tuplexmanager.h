#pragma once

#include "groundwork/tumemory.h"
#include "groundwork/tuplexmanagerpolicy.h"
#include "groundwork/tureferencecounted.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>

/// Memory for nodes of one type, taken from the heap in blocks of a fixed number of nodes.
///
/// A node given back goes to the free list and is the next to be taken; blocks go back to the heap
/// with the manager. Lists, maps and sets make a manager of their own at the first insertion.
/// Several of them can share one, so that what one gives back another takes:
///
///     auto nodes = TuMake<TuPlexManager<TuList<int>::Node>>(1000u);
///     TuList<int> open(nodes), closed(nodes);
///
/// Ownership: shared through TuSmartPointer. It owns the memory of the nodes, not what was
///            constructed in them.
/// Threads:   one thread at a time, and so for all containers that share it: a manager has no lock.
/// Failure:   TuExceptionOutOfMemory at kLineOutOfMemory; the nodes that a part of a block has
///            given are kept on the free list. TuExceptionPreconditionViolation for a block size of
///            0, and from the policy for a null node.
template <class Node, class Policy = TuPlexManagerPolicy>
class TuPlexManager : public TuReferenceCounted
{
public:
    static constexpr const char16_t* kSource = u"core/groundwork/tuplexmanager";
    static constexpr unsigned int kLineBlockSize = 162;
    static constexpr unsigned int kLineOutOfMemory = 284;
    static constexpr unsigned int kDefaultBlockSize = 10;

    /// `blockSize` counts nodes, and holds for good.
    explicit TuPlexManager(unsigned int blockSize = kDefaultBlockSize);
    TuPlexManager(const TuPlexManager&) = delete;
    TuPlexManager& operator=(const TuPlexManager&) = delete;
    ~TuPlexManager() override;

    /// Room for one node, in which nothing has been constructed.
    [[nodiscard]] Node* Allocate();
    /// Takes back room in which nothing is constructed any more.
    void Free(Node* node);

    /// Takes a node and constructs it. When the constructor throws, the room goes back.
    template <class... Args> [[nodiscard]] Node* Make(Args&&... args);
    void Destroy(Node* node);

    unsigned int GetBlockSize() const { return m_blockSize; }

private:
    struct SFree
    {
        SFree* next;
    };
    struct SBlock
    {
        SBlock* previous;
    };
    // A node that is not in use holds the link of the free list.
    struct alignas(std::max(alignof(Node), alignof(SFree))) SSlot
    {
        std::byte bytes[std::max(sizeof(Node), sizeof(SFree))];
    };
    static constexpr std::size_t kNodesOffset = std::max(sizeof(SBlock), alignof(SSlot));

    void allocateBlocks();
    void addBlock(unsigned int count);

    SBlock* m_blocks = nullptr; // the newest; each links to the one before
    SFree* m_free = nullptr;
    unsigned int m_blockSize;
};

template <class Node, class Policy>
TuPlexManager<Node, Policy>::TuPlexManager(unsigned int blockSize)
    : m_blockSize(blockSize)
{
    if (blockSize == 0) {
        throw TuExceptionPreconditionViolation(
            kSource, kLineBlockSize, u"a block holds at least one node");
    }
}

template <class Node, class Policy> TuPlexManager<Node, Policy>::~TuPlexManager()
{
    while (m_blocks != nullptr) {
        TuFreeBlock(std::exchange(m_blocks, m_blocks->previous));
    }
}

template <class Node, class Policy> inline Node* TuPlexManager<Node, Policy>::Allocate()
{
    if (m_free == nullptr) {
        allocateBlocks();
    }
    SFree* const node = m_free;
    m_free = node->next;
    return reinterpret_cast<Node*>(node);
}

template <class Node, class Policy> inline void TuPlexManager<Node, Policy>::Free(Node* node)
{
    Policy::CheckNode(node);
    m_free = ::new (static_cast<void*>(node)) SFree{ m_free };
}

template <class Node, class Policy>
template <class... Args>
inline Node* TuPlexManager<Node, Policy>::Make(Args&&... args)
{
    Node* const node = Allocate();
    try {
        return ::new (static_cast<void*>(node)) Node{ std::forward<Args>(args)... };
    } catch (...) {
        Free(node);
        throw;
    }
}

template <class Node, class Policy> inline void TuPlexManager<Node, Policy>::Destroy(Node* node)
{
    Policy::CheckNode(node);
    std::destroy_at(node);
    Free(node);
}

template <class Node, class Policy> void TuPlexManager<Node, Policy>::allocateBlocks()
{
    static_assert(alignof(Node) <= alignof(std::max_align_t),
        "the blocks of containers are aligned for fundamental types only");
    static_assert(kNodesOffset + sizeof(SSlot) <= Policy::kMaximumBlockBytes);

    constexpr std::size_t kMostNodes = (Policy::kMaximumBlockBytes - kNodesOffset) / sizeof(SSlot);
    for (unsigned int left = m_blockSize; left != 0;) {
        const auto count = static_cast<unsigned int>(std::min<std::size_t>(left, kMostNodes));
        addBlock(count);
        left -= count;
    }
}

/// Threads the nodes in the order of their addresses, so that they are taken in that order.
template <class Node, class Policy> void TuPlexManager<Node, Policy>::addBlock(unsigned int count)
{
    void* const memory = TuAllocateBlock(kNodesOffset + std::size_t{ count } * sizeof(SSlot));
    if (memory == nullptr) {
        throw TuExceptionOutOfMemory(kSource, kLineOutOfMemory);
    }
    m_blocks = ::new (memory) SBlock{ m_blocks };
    std::byte* const nodes = static_cast<std::byte*>(memory) + kNodesOffset;
    for (std::size_t i = count; i-- > 0;) {
        m_free = ::new (nodes + i * sizeof(SSlot)) SFree{ m_free };
    }
}
