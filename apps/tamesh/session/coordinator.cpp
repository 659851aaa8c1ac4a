#include "tamesh/session/coordinator.h"

#include "groundwork/tuexceptions.h"
#include "tabase/tamessagedispatcher.h"
#include "tabase/tamessageloop.h"
#include "tamesh/session/jobreport.h"
#include "tamesh/session/tracerecorder.h"

namespace tamesh {

TU_DEFINE_RTTI(ShellLine, TaMessage, nullptr, nullptr);

namespace {

    void serve()
    {
        if (!TaMessageLoop::WaitAndHandle()) {
            throw TuException(TU_HERE); // the system gives out no messages any more
        }
    }

} // namespace

Coordinator::Coordinator(TraceRecorder& trace)
    : TaMessageHandler(u"Main")
    , m_trace(trace)
{
}

unsigned int Coordinator::Start(SCommand command, const SCommandSettings& settings)
{
    const unsigned int job = ++m_lastJob;
    const auto message = TuMake<SessionCommand>(job, std::move(command), settings);
    m_trace.Name(*message);
    m_running.insert(job);
    TaMessageDispatcher::PostMessage(TU_HERE_IN("apps/tamesh/session/coordinator"), message);
    return job;
}

EExitCode Coordinator::WaitFor(unsigned int job)
{
    m_awaited = job;
    while (m_running.contains(job)) {
        serve();
    }
    m_awaited = 0;
    return m_awaitedCode;
}

EExitCode Coordinator::WaitForAll()
{
    while (!m_running.empty()) {
        serve();
    }
    return std::exchange(m_worstCode, eEC_Done);
}

std::optional<std::string> Coordinator::WaitForLine()
{
    while (!m_hasLine) {
        serve();
    }
    m_hasLine = false;
    return std::exchange(m_line, std::nullopt);
}

void Coordinator::onSubscribeMessages()
{
    SubscribeMessage(JobReport(0, JobReport::eK_Ended, {}));
    SubscribeMessage(ShellLine({}));
}

long long Coordinator::handleMessage(const TaMessage& message)
{
    if (const auto* const report = dynamic_cast<const JobReport*>(&message)) {
        onReport(*report);
        return 0;
    }
    if (const auto* const line = dynamic_cast<const ShellLine*>(&message)) {
        m_line = line->GetLine();
        m_hasLine = true;
        return 0;
    }
    return TaMessageHandler::handleMessage(message);
}

void Coordinator::onReport(const JobReport& report)
{
    if (report.GetKind() == JobReport::eK_Ended) {
        m_running.erase(report.GetJob());
        if (report.GetJob() == m_awaited) {
            m_awaitedCode = report.GetCode(); // which WaitFor tells
        } else if (m_worstCode == eEC_Done) {
            m_worstCode = report.GetCode();
        }
    }
    // Observers take any parameter; this one they only read.
    m_reports.NotifyObservers(kReported, const_cast<JobReport*>(&report));
}

} // namespace tamesh
