#pragma once

#include "tamesh/console.h"
#include "tamesh/session/jobreport.h"
#include "tamesh/session/sessioncommand.h"

class TaMessageHandlerBase;

namespace tamesh {

/// The console of a command that a handler carries out on its own thread: what it writes becomes
/// reports to the main thread.
///
/// Ownership: refers to the user's console and to the handler on the main thread, which outlive it.
/// Threads:   one at a time.
class JobConsole final : public IConsole
{
public:
    /// Of a command in the background the user sees no bar. The command outlives the console.
    JobConsole(
        const IConsole& user, const TaMessageHandlerBase& reader, const SessionCommand& command);

    [[nodiscard]] bool WriteOutput(std::string_view text) override;
    void WriteError(std::string_view text) override;
    /// The last report.
    void End(EExitCode code);

    bool IsErrorTerminal() const override
    {
        return !m_command.GetCommand().isBackground && m_user.IsErrorTerminal();
    }
    unsigned int GetErrorWidth() const override { return m_user.GetErrorWidth(); }
    bool IsProgressWanted() const override { return m_command.GetSettings().isProgressShown; }
    unsigned int GetNetworkTimeout() const override
    {
        return m_command.GetSettings().networkTimeout;
    }
    std::uint64_t GetMilliseconds() const override { return m_user.GetMilliseconds(); }
    const TuEvent& GetInterrupt() const override { return m_user.GetInterrupt(); }

private:
    void post(JobReport::EKind kind, std::string_view text, EExitCode code = eEC_Done);

    const IConsole& m_user;
    const TaMessageHandlerBase& m_reader;
    const SessionCommand& m_command;
};

} // namespace tamesh
