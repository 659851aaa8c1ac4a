#pragma once

#include "groundwork/tuarray.h"
#include "tabase/tabaseapi.h"

#include <cstdint>

class TaNode;
class TuStreamWriteBinary;

/// Writes what hangs below a node: data nodes, and the plain nodes that lead to them.
/// docs/format.md states it byte by byte.
///
/// Threads: the caller sees to it that nobody changes the tree or its values meanwhile.
/// Failure: TuException for a class of nodes or values that could not be made again by its name,
///          before anything is written; else what the stream and the values throw.
class TABASE_API TaNodeTreeWriter
{
public:
    static constexpr unsigned int kVersion = 0;
    static constexpr unsigned int kNodeVersion = 0;
    /// The bits of the byte of flags.
    enum EFlags : std::uint8_t
    {
        eF_SerializeLeaves = 1,
        eF_TrackModified = 2,
        eF_Data = 4,
        eF_All = 7,
    };

    explicit TaNodeTreeWriter(TuStreamWriteBinary& stream)
        : m_stream(stream)
    {
    }

    void Write(const TaNode& top);

private:
    struct SEntry
    {
        const TaNode* node;
        std::uint32_t parent; // as all that follow: numbers of entries
        std::uint32_t childrenWritten;
        bool isWritten;
    };

    void listNodes(const TaNode& top);
    void choose();
    void writeNode(const SEntry& entry);

    TuStreamWriteBinary& m_stream;
    TuArray<SEntry> m_entries; // parents first
};
