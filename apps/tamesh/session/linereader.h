#pragma once

#include "groundwork/tuevent.h"
#include "groundwork/tuthread.h"
#include "tamesh/session/linesource.h"

class TaMessageHandlerBase;

namespace tamesh {

/// Reads the lines of a shell on a thread of its own, one each time it is asked, and posts them as
/// ShellLine: so the main thread serves its handlers while the user types.
///
/// Ownership: refers to both arguments, which outlive it. Nobody ends it while it has been asked
/// for
///            a line that has not come: that wait has no end.
class LineReader
{
public:
    LineReader(ILineSource& source, const TaMessageHandlerBase& target);
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    [[nodiscard]] bool Start() { return m_thread.StartAndWait(); }
    void Ask() { m_asked.Set(); }

private:
    static constexpr const char* kPrompt = "tamesh> ";

    TuCheckReturn<bool> read();

    ILineSource& m_source;
    const TaMessageHandlerBase& m_target;
    TuEvent m_asked{ false };
    TuEvent m_stop{ true };
    // Last, so that it goes first: what the thread uses is still there when it ends.
    TuThread<LineReader> m_thread{ *this, &LineReader::read, u"Lines", eTP_Normal };
};

} // namespace tamesh
