#include "tabase/tamessagecommand.h"
#include "tabase/tamessagedispatcher.h"

#include <memory>

// A library that tests load: its messages and handlers come and go with it.

namespace {

class PluginMessage : public TaMessage
{
    TU_DECLARE_RTTI
};

TU_DEFINE_RTTI(PluginMessage, TaMessage, nullptr, nullptr);

class PluginHandler : public TaMessageHandlerThreaded
{
public:
    PluginHandler()
        : TaMessageHandlerThreaded(u"plugin", eTP_Normal)
    {
    }
    ~PluginHandler() override { StopAndWait(TuEvent::kInfinite); }

private:
    void onSubscribeMessages() override
    {
        SubscribeMessage(PluginMessage());
        SubscribeCommand(5);
    }
    long long handleMessage(const TaMessage& message) override
    {
        return message.Is(PluginMessage::RTTI) ? 8 : 9;
    }
};

std::unique_ptr<PluginHandler> s_handler;

} // namespace

/// Starts the handler of this library; returns its answer to a message of this library.
extern "C" long long BeginHandlerOfPlugin();
extern "C" void EndHandlerOfPlugin();

long long BeginHandlerOfPlugin()
{
    s_handler = std::make_unique<PluginHandler>();
    if (!s_handler->StartAndWait()) {
        return 0;
    }
    TaMessageDispatcher::PostMessage(TuMake<PluginMessage>());
    return TaMessageDispatcher::SendMessage(PluginMessage(), *s_handler);
}

void EndHandlerOfPlugin() { s_handler.reset(); }
