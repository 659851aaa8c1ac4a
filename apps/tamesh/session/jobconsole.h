#pragma once

#include "tamesh/console.h"
#include "tamesh/session/jobreport.h"

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
    /// Of a command in the background the user sees no bar.
    JobConsole(const IConsole& user, const TaMessageHandlerBase& reader, unsigned int job,
        bool isBackground);

    [[nodiscard]] bool WriteOutput(std::string_view text) override;
    void WriteError(std::string_view text) override;
    /// The last report.
    void End(EExitCode code);

    bool IsErrorTerminal() const override { return !m_isBackground && m_user.IsErrorTerminal(); }
    unsigned int GetErrorWidth() const override { return m_user.GetErrorWidth(); }
    bool IsProgressWanted() const override { return m_user.IsProgressWanted(); }
    std::uint64_t GetMilliseconds() const override { return m_user.GetMilliseconds(); }
    const TuEvent& GetInterrupt() const override { return m_user.GetInterrupt(); }

private:
    void post(JobReport::EKind kind, std::string_view text, EExitCode code = eEC_Done);

    const IConsole& m_user;
    const TaMessageHandlerBase& m_reader;
    const unsigned int m_job;
    const bool m_isBackground;
};

} // namespace tamesh
