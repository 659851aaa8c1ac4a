#pragma once

#include "support/bufferbytes.h"
#include "tabase/tadatamanager.h"
#include "tabase/tastreamreadbinarybuffer.h"

#include <string>

inline std::string SaveTree(const TaDataManager& manager)
{
    return BytesOf([&](auto& stream) { manager.Serialize(stream); });
}

/// Returns whether the tree took all of the bytes.
inline bool LoadTree(TaDataManager& manager, const std::string& bytes)
{
    TaStreamReadBinaryBuffer stream(bytes.data(), bytes.size());
    manager.Serialize(stream);
    return stream.GetRemaining() == 0;
}
