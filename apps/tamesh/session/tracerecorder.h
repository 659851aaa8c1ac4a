#pragma once

#include "groundwork/tucriticalsection.h"
#include "platform/platformthreadsafety.h"
#include "tabase/tamessagetrace.h"
#include "tamesh/session/sessioncommand.h"
#include "tamesh/tatracedata.h"

#include <cstdint>
#include <deque>
#include <map>
#include <string>

namespace tamesh {

/// Writes down what happens to the messages of the process, for as long as it lives: the last 5000
/// steps.
///
/// Threads: any. There is one at a time.
/// Failure: a step for which there is no memory is left out.
class TraceRecorder
{
public:
    static constexpr std::size_t kMostSteps = 5000;

    TraceRecorder();
    ~TraceRecorder();
    TraceRecorder(const TraceRecorder&) = delete;
    TraceRecorder& operator=(const TraceRecorder&) = delete;

    /// What the message is about.
    void Name(const SessionCommand& command);
    SMessageHistory GetHistory() const;

private:
    static void onTrace(const SMessageTrace& trace) noexcept;
    void add(const SMessageTrace& trace);
    std::uint32_t findText(const std::string& text) TU_REQUIRES(m_lock);

    const std::uint64_t m_start;
    TaMessageTrace::Hook m_formerHook = nullptr;
    mutable TuCriticalSection m_lock;
    std::deque<SMessageHistory::SStep> m_steps TU_GUARDED_BY(m_lock);
    std::deque<SMessageHistory::SCommandText> m_commands TU_GUARDED_BY(m_lock);
    std::vector<std::string> m_texts TU_GUARDED_BY(m_lock);
    std::map<std::string, std::uint32_t> m_textNumbers TU_GUARDED_BY(m_lock);
};

} // namespace tamesh
