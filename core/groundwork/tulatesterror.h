#pragma once

#include "groundwork/cstring.h"

/// What the operating system says of the call that has just failed on this thread: its number
/// (errno, or the Windows error code) and its message.
class GROUNDWORK_API TuLatestError
{
public:
    /// Captures; construct it right after the failed call, before anything else.
    TuLatestError();

    unsigned int GetNumber() const { return m_number; }
    const CString& GetMessageText() const { return m_message; }

private:
    unsigned int m_number;
    CString m_message;
};
