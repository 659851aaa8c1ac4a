#pragma once

#include "platform/platformapi.h"

#include <string>
#include <string_view>

namespace platform {

enum EStandardStream
{
    eSS_Output = 1,
    eSS_Error = 2,
};

/// Opens standard input, output and error where the program was started without them: the next file
/// it opens may take their place, and get all that is written to them. They stay as good as
/// closed: reading the one and writing the others fails. To be called before any file is opened.
PLATFORM_API void SecureStandardStreams();

/// From now on, writing to a pipe that nobody reads any more, or beyond the size that a file may
/// have, fails, rather than end the program where it stands. For the whole process, so it is for a
/// program to call, not for a library.
PLATFORM_API void SurviveFailingWrites();

/// Whether a person looks at this stream, not a file or a pipe.
PLATFORM_API bool IsTerminal(EStandardStream stream);

/// The width in columns of the terminal behind `stream`; 80 where there is none.
PLATFORM_API unsigned int GetTerminalWidth(EStandardStream stream);

/// Writes UTF-8 text to a standard stream, unbuffered, in one piece. A file or a pipe gets the
/// bytes as they are; a Windows console gets the characters, whatever its code page.
PLATFORM_API bool WriteStandard(EStandardStream stream, std::string_view text);

/// Whether a person types what comes from standard input.
PLATFORM_API bool IsInputTerminal();

/// Reads the next line of standard input, without its end; a last one may have none. UTF-8, also
/// from a Windows console. False at the end of the input, and where it cannot be read. Waits for as
/// long as it takes: whoever must not wait reads on a thread of its own.
///
/// Threads: one at a time, and nothing else reads standard input.
PLATFORM_API bool ReadStandardLine(std::string& line);

/// Writes UTF-8 text to where the system shows a program's traces: the debugger on Windows,
/// standard error elsewhere.
PLATFORM_API void WriteTrace(std::string_view text);

} // namespace platform
