#pragma once

#include "groundwork/cstring.h"
#include "tabase/tabaseapi.h"

/// Folders with a purpose, by number, and the way from the library's notation of paths to the
/// system's.
///
/// Threads: any thread may call any operation.
class TABASE_API TaFileSystem
{
public:
    /// The numbers are stored and sent.
    enum ESpecialDirectory
    {
        eSD_Temporary = 1,
        eSD_UserSettings = 2,
        eSD_Program = 3, // of the running program
        /// Recordings of algorithms: "tabase/unittests" below the user's settings until it is set.
        eSD_UnitTests = 14,
    };

    /// With the system's separator at its end. Nothing is created.
    /// Throws TuExceptionPreconditionViolation for a number that is none of the above.
    static CString GetSpecialDirectory(unsigned int number);
    /// For the whole process. An empty path goes back to the default.
    static void SetSpecialDirectory(unsigned int number, const CString& path);

    /// The path as the system takes it. In the library's notation "\" separates folders on every
    /// system, beside the system's own separator, and "::" may stand in the name of a class that is
    /// part of a path: Windows, which does not allow it in names, gets "__".
    static CString GetSystemPath(const CString& path);

    TaFileSystem() = delete;
};
