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
    std::uint64_t size = 0; // in bytes
    Progress* progress = nullptr; // where there is somebody to tell
};

} // namespace tamesh
