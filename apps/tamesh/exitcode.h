#pragma once

namespace tamesh {

/// What the program answers with.
enum EExitCode
{
    eEC_Done = 0,
    eEC_Failed = 1,
    eEC_WrongUsage = 2,
    eEC_Interrupted = 130, // as shells say of a program that SIGINT has ended
};

} // namespace tamesh
