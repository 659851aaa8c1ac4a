#pragma once

#include "groundwork/cstring.h"
#include "groundwork/tusmartpointer.h"
#include "tabase/tabaseapi.h"
#include "tabase/tanode.h"

#include <cstdint>

class TuStreamReadBinary;

/// Reads what TaNodeTreeWriter wrote.
///
/// Failure: TuExceptionStream for a damaged record, TuExceptionWrongFileVersion for one of a later
///          version, TuException for a class of nodes or values that is not known here, or does not
///          fit, which it names; else what the stream and the values throw. What has been read by
///          then hangs below the node.
class TABASE_API TaNodeTreeReader
{
public:
    explicit TaNodeTreeReader(TuStreamReadBinary& stream)
        : m_stream(stream)
    {
    }

    /// Hangs the nodes below `top`, which is in no tree.
    void Read(const TuSmartPointer<TaNode>& top);

private:
    /// A node of the class, with the children still to come.
    TuSmartPointer<TaNode> readNode(std::uint32_t& childrenCount);
    void readData(TaNode& node);

    TuStreamReadBinary& m_stream;
};
