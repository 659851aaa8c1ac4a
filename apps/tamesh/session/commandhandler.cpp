#include "tamesh/session/commandhandler.h"

#include "tamesh/guard.h"
#include "tamesh/session/jobconsole.h"

#include <utility>

namespace tamesh {

namespace {

    /// What a failure that names nothing is about.
    const std::string& getSubject(const SCommand& command)
    {
        return !command.mesh.empty() ? command.mesh
            : !command.input.empty() ? command.input
                                     : command.text;
    }

} // namespace

CommandHandler::CommandHandler(
    const CString& name, const SSessionParts& session, std::vector<ECommandId> commands)
    : TaMessageHandlerThreaded(name, eTP_Normal)
    , m_session(session)
    , m_commands(std::move(commands))
{
}

void CommandHandler::onSubscribeMessages()
{
    for (const ECommandId id : m_commands) {
        SubscribeCommand(id);
    }
}

long long CommandHandler::handleMessage(const TaMessage& message)
{
    const auto* const order = dynamic_cast<const SessionCommand*>(&message);
    if (order == nullptr) {
        return TaMessageHandlerThreaded::handleMessage(message);
    }
    const SCommand& command = order->GetCommand();
    JobConsole console(m_session.console, m_session.reader, *order);
    const EExitCode code = Guard(console, getSubject(command), [&] {
        CheckInterrupt(console); // it may have waited for long
        carryOut({ command, order->GetSettings(), console });
    });
    console.End(code);
    return code;
}

} // namespace tamesh
