#pragma once

#include <cstdint>
#include <string>

class TuStreamReadBinary;

namespace tamesh {

class Progress;

/// The bytes that a mesh is read from, and what is known of them.
struct SMeshInput
{
    std::string name; // as the user gave it, for messages
    TuStreamReadBinary& stream;
    std::uint64_t size = 0; // in bytes; of text only, 0 where it is not known
    Progress* progress = nullptr; // where there is somebody to tell
    bool isTextOnly = false; // it comes from where only text does
};

} // namespace tamesh
