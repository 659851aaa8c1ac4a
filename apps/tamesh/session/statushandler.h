#pragma once

#include "tabase/tamessagehandler.h"
#include "tamesh/session/commandhandler.h"
#include "tamesh/settings.h"

namespace tamesh {

/// Shows how the session itself is doing, and changes its settings, on the main thread: it answers
/// while all others work or wait.
class StatusHandler final : public TaMessageHandler
{
public:
    StatusHandler(const SSessionParts& session, Settings& settings);
    ~StatusHandler() override { destroyMessageHandler().MarkRead(); }

private:
    void onSubscribeMessages() override;
    long long handleMessage(const TaMessage& message) override;

    std::string describe(const SCommand& command);
    std::string changeSettings(const std::vector<std::string>& assignments);

    const SSessionParts m_session;
    Settings& m_settings;
};

} // namespace tamesh
