#pragma once

#include "tabase/tamessagehandlerthreaded.h"
#include "tamesh/console.h"
#include "tamesh/session/sessioncommand.h"
#include "tamesh/session/sessiontree.h"
#include "tamesh/session/treelocks.h"

#include <vector>

namespace tamesh {

/// What all handlers of a session work with. All of it outlives them.
struct SSessionParts
{
    SessionTree& tree;
    const IConsole& console;
    const TaMessageHandlerBase& reader; // of reports, on the main thread
};

/// A command in work.
struct SJob
{
    const SCommand& command;
    const SCommandSettings& settings;
    IConsole& console;
};

/// Carries out some of the commands of a session, on a thread of its own, one after the other.
///
/// Ownership: a derived class begins its destructor with StopAndWait(TuEvent::kInfinite).
class CommandHandler : public TaMessageHandlerThreaded
{
protected:
    CommandHandler(
        const CString& name, const SSessionParts& session, std::vector<ECommandId> commands);

    /// Throws what keeps it from being done; Guard reports it.
    virtual void carryOut(const SJob& job) = 0;

    SessionTree& getTree() { return m_session.tree; }
    TaDataManager& getManager() { return m_session.tree.GetManager(); }

private:
    void onSubscribeMessages() override;
    long long handleMessage(const TaMessage& message) override;

    const SSessionParts m_session;
    const std::vector<ECommandId> m_commands;
};

} // namespace tamesh
