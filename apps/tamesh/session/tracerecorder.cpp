#include "tamesh/session/tracerecorder.h"

#include "groundwork/cstring.h"
#include "platform/platformclock.h"

#include <new>

namespace tamesh {

namespace {

    // The hook is a plain function. It runs under the lock of a queue, so the lock here is a leaf:
    // nothing else is taken under it.
    TuCriticalSection s_currentLock;
    TraceRecorder* s_current TU_GUARDED_BY(s_currentLock) = nullptr;

} // namespace

TraceRecorder::TraceRecorder()
    : m_start(platform::GetMonotonicTime())
{
    {
        const TuCriticalSectionAuto guard(s_currentLock);
        s_current = this;
    }
    m_formerHook = TaMessageTrace::SetHook(&onTrace);
}

TraceRecorder::~TraceRecorder()
{
    TaMessageTrace::SetHook(m_formerHook);
    const TuCriticalSectionAuto guard(s_currentLock);
    s_current = nullptr;
}

void TraceRecorder::Name(const SessionCommand& command)
{
    const TuCriticalSectionAuto guard(m_lock);
    m_commands.push_back({ command.GetID(), command.GetCommand().text });
    if (m_commands.size() > kMostSteps) {
        m_commands.pop_front();
    }
}

SMessageHistory TraceRecorder::GetHistory() const
{
    const TuCriticalSectionAuto guard(m_lock);
    return { m_texts, { m_steps.begin(), m_steps.end() },
        { m_commands.begin(), m_commands.end() } };
}

void TraceRecorder::onTrace(const SMessageTrace& trace) noexcept
{
    try {
        const TuCriticalSectionAuto guard(s_currentLock);
        if (s_current != nullptr) {
            s_current->add(trace);
        }
    } catch (const std::exception&) {
        return;
    }
}

void TraceRecorder::add(const SMessageTrace& trace)
{
    SMessageHistory::SStep step;
    step.microseconds = (platform::GetMonotonicTime() - m_start) / 1000;
    step.step = static_cast<std::uint8_t>(trace.step);
    step.isSend = trace.isSend;
    step.messageID = trace.messageID;
    step.threadID = trace.threadID;
    const std::string messageClass = CString(trace.messageClass).ToUtf8();
    const std::string handler = trace.handler != nullptr ? trace.handler->ToUtf8() : std::string();
    const TuCriticalSectionAuto guard(m_lock);
    step.messageClass = findText(messageClass);
    step.handler = findText(handler);
    m_steps.push_back(step);
    if (m_steps.size() > kMostSteps) {
        m_steps.pop_front();
    }
}

/// Classes and handlers are few.
std::uint32_t TraceRecorder::findText(const std::string& text)
{
    const auto [entry, isNew]
        = m_textNumbers.try_emplace(text, static_cast<std::uint32_t>(m_texts.size()));
    if (isNew) {
        try {
            m_texts.push_back(text);
        } catch (const std::bad_alloc&) {
            m_textNumbers.erase(entry);
            throw;
        }
    }
    return entry->second;
}

} // namespace tamesh
