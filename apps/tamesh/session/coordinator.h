#pragma once

#include "tabase/tamessagehandler.h"
#include "tabase/taobservable.h"
#include "tamesh/exitcode.h"
#include "tamesh/session/sessioncommand.h"

#include <optional>
#include <set>
#include <string>
#include <utility>

namespace tamesh {

class JobReport;
class TraceRecorder;

/// A line that the user has typed, on its way to the main thread.
class ShellLine final : public TaMessage
{
    TU_DECLARE_RTTI

public:
    /// Nothing at the end of the input.
    explicit ShellLine(std::optional<std::string> line)
        : m_line(std::move(line))
    {
    }

    const std::optional<std::string>& GetLine() const { return m_line; }

private:
    std::optional<std::string> m_line;
};

/// The main thread's part in a session: posts commands, and hears what becomes of them. Who wants
/// to know that, too, observes the reports.
///
/// Threads: the main thread.
class Coordinator final : public TaMessageHandler
{
public:
    /// Its parameter is a const JobReport.
    static constexpr auto kReported = TaObservableMessage::eMT_1;

    explicit Coordinator(TraceRecorder& trace);
    ~Coordinator() override { destroyMessageHandler().MarkRead(); }

    TaObservable& GetReports() { return m_reports; }

    /// Posts it, and returns its job number.
    unsigned int Start(SCommand command, const SCommandSettings& settings);
    /// Serves the handlers of this thread until the job has ended, or all have. Returns what the
    /// job ended with, or the first code of those that nobody waited for and that did not end well.
    EExitCode WaitFor(unsigned int job);
    EExitCode WaitForAll();
    bool IsIdle() const { return m_running.empty(); }
    /// Serves them until a line has come.
    std::optional<std::string> WaitForLine();

private:
    void onSubscribeMessages() override;
    long long handleMessage(const TaMessage& message) override;
    void onReport(const JobReport& report);

    TraceRecorder& m_trace;
    TaObservable m_reports;
    unsigned int m_lastJob = 0;
    std::set<unsigned int> m_running;
    unsigned int m_awaited = 0; // the job that WaitFor waits for; 0 for none
    EExitCode m_awaitedCode = eEC_Done;
    EExitCode m_worstCode = eEC_Done; // of the others since WaitForAll
    bool m_hasLine = false;
    std::optional<std::string> m_line;
};

} // namespace tamesh
