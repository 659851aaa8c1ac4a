#include "tamesh/session/statushandler.h"

#include "groundwork/tustreamwriteasciistring.h"
#include "tabase/tamessagedispatcher.h"
#include "tamesh/displaytext.h"
#include "tamesh/guard.h"
#include "tamesh/session/jobconsole.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace tamesh {

namespace {

    /// The lines of an account of the library for which isWanted(line).
    template <class IsWanted> std::string takeLines(const CString& account, IsWanted&& isWanted)
    {
        std::istringstream lines(account.ToUtf8());
        std::string text;
        for (std::string line; std::getline(lines, line);) {
            if (isWanted(line)) {
                text += "  " + MakeDisplayText(line) + "\n";
            }
        }
        return text;
    }

    /// The account of a manager begins with the tree, which `tree` shows.
    std::string describeLocks(TaDataManager& manager)
    {
        const std::string locks = takeLines(manager.ToString(), [](std::string_view line) {
            return line.substr(std::min(line.find_first_not_of(' '), line.size()))
                .starts_with("thread ");
        });
        return locks.empty() ? "  no part of the tree is locked\n" : locks;
    }

} // namespace

StatusHandler::StatusHandler(const SSessionParts& session, Settings& settings)
    : TaMessageHandler(u"Status")
    , m_session(session)
    , m_settings(settings)
{
}

void StatusHandler::onSubscribeMessages()
{
    for (const ECommandId id : { eCI_Locks, eCI_Queues, eCI_Settings }) {
        SubscribeCommand(id);
    }
}

long long StatusHandler::handleMessage(const TaMessage& message)
{
    const auto* const order = dynamic_cast<const SessionCommand*>(&message);
    if (order == nullptr) {
        return TaMessageHandler::handleMessage(message);
    }
    const SCommand& command = order->GetCommand();
    JobConsole console(m_session.console, m_session.reader, *order);
    const EExitCode code
        = Guard(console, command.text, [&] { WriteResult(console, describe(command)); });
    console.End(code);
    return code;
}

std::string StatusHandler::describe(const SCommand& command)
{
    if (command.id == eCI_Locks) {
        return describeLocks(m_session.tree.GetManager());
    }
    if (command.id == eCI_Queues) {
        TuStreamWriteASCIIStringT<CString> account;
        TaMessageDispatcher::GetInstance().Dump(account);
        return takeLines(account.GetText(), [](const std::string&) { return true; });
    }
    return changeSettings(command.assignments);
}

std::string StatusHandler::changeSettings(const std::vector<std::string>& assignments)
{
    for (const std::string& assignment : assignments) {
        try {
            m_settings.Assign(assignment);
        } catch (const std::invalid_argument& failure) {
            throw MeshFailure(TU_HERE, "settings", 0, failure.what());
        }
    }
    if (!assignments.empty() && !m_settings.Remember()) {
        throw MeshFailure(TU_HERE, "settings", 0, "cannot be kept for later runs");
    }
    return m_settings.Describe();
}

} // namespace tamesh
