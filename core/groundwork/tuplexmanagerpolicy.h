#pragma once

#include "groundwork/tuexceptions.h"

#include <cstddef>

/// How a TuPlexManager makes its blocks and what it demands of a node that comes back.
struct TuPlexManagerPolicy
{
    static constexpr const char16_t* kSource = u"core/groundwork/tuplexmanagerpolicy";
    static constexpr unsigned int kLinePrecondition = 264;

    /// No block is larger than this: a block size that asks for more is spread over several.
    static constexpr std::size_t kMaximumBlockBytes = std::size_t{ 1 } << 30;

    /// The precondition of giving a node back: there is one.
    static void CheckNode(const void* node)
    {
        if (node == nullptr) {
            throwNoNode();
        }
    }

private:
    [[noreturn]] static void throwNoNode()
    {
        throw TuExceptionPreconditionViolation(
            kSource, kLinePrecondition, u"the node given back is not null");
    }
};
