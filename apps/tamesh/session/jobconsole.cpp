#include "tamesh/session/jobconsole.h"

#include "groundwork/tuexception.h"
#include "tabase/tamessagedispatcher.h"

namespace tamesh {

JobConsole::JobConsole(
    const IConsole& user, const TaMessageHandlerBase& reader, const SessionCommand& command)
    : m_user(user)
    , m_reader(reader)
    , m_command(command)
{
}

bool JobConsole::WriteOutput(std::string_view text)
{
    post(JobReport::eK_Output, text);
    return true; // whether it arrives is the main thread's affair
}

void JobConsole::WriteError(std::string_view text) { post(JobReport::eK_Notice, text); }

void JobConsole::End(EExitCode code) { post(JobReport::eK_Ended, {}, code); }

void JobConsole::post(JobReport::EKind kind, std::string_view text, EExitCode code)
{
    TaMessageDispatcher::PostMessage(TU_HERE_IN("apps/tamesh/session/jobconsole"),
        TuMake<JobReport>(m_command.GetJob(), kind, std::string(text), code), m_reader);
}

} // namespace tamesh
