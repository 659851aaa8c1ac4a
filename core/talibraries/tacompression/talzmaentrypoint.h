#pragma once

#include "groundwork/tuexception.h"
#include "tacompression/tacompressionapi.h"

#include <cstdint>
#include <memory>

namespace platform {
class SharedLibrary;
}

extern "C" {
/// A function of the dictionary coder's library, with the calling convention of C on its platform.
/// `buffer` is filled; `size` comes in as what it has room for and goes out as what was written.
using TaLZMAFunction = int(const unsigned char** source, unsigned char** buffer,
    std::uint32_t sourceLength, std::uint32_t* size, int reserved);
}

/// The library of the dictionary coder, `VelCompress.dll` in the current directory, and one of its
/// functions.
///
/// The name is that of a file on every system. It is loaded from the current directory and from
/// nowhere else: whoever can write there has his code run by this process. A program that uses the
/// coder should first make a folder of its own the current directory; the coder does not.
///
/// Ownership: copies share the library, which stays loaded as long as one of them lives, and also
///            when the current directory has changed. A move is a copy, so that what was moved from
///            still has its function.
/// Failure:   the constructor's: TuException at line 54 of `source` where the library cannot be
///            loaded, at line 61 where it has no function of that number.
class TACOMPRESSION_API TaLZMAEntryPoint
{
public:
    TaLZMAEntryPoint(unsigned int ordinal, TuSource source);
    ~TaLZMAEntryPoint() = default;
    TaLZMAEntryPoint(const TaLZMAEntryPoint&) = default;
    TaLZMAEntryPoint& operator=(const TaLZMAEntryPoint&) = default;

    /// The status that the library gives. `size` is its word, which nobody has checked.
    int operator()(const unsigned char* source, std::uint32_t sourceLength, unsigned char* buffer,
        std::uint32_t& size) const;

private:
    std::shared_ptr<const platform::SharedLibrary> m_library;
    TaLZMAFunction* m_function;
};
