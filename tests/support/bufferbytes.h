#pragma once

#include "tabase/tastreamwritebinarybuffer.h"

#include <string>

/// The bytes that `action` writes to a buffer.
template <class Action> std::string BytesOf(Action&& action)
{
    TaStreamWriteBinaryBuffer stream;
    action(stream);
    return { reinterpret_cast<const char*>(stream.GetData()), stream.GetSize() };
}
