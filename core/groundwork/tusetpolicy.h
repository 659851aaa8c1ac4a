#pragma once

#include "groundwork/tuelementstream.h"

/// The stored form of a set's key; the version is that of the set's record.
struct TuSetPolicySerializable
{
    static constexpr unsigned int kVersion = 0;

    template <class K> static void Write(TuStreamWriteBinary& stream, const K& key)
    {
        TuWriteElement(stream, key);
    }
    template <class K> static void Read(TuStreamReadBinary& stream, K& key)
    {
        TuReadElement(stream, key);
    }
};
