#include "tabase/tasubscriptions.h"

#include "groundwork/tustreamwriteascii.h"
#include "tabase/tamessagecommand.h"
#include "tabase/tamessagehandlerbase.h"

namespace {

void addOnce(TaMessageHandlerList& handlers, TaMessageHandlerBase& handler)
{
    if (!handlers.Contains(&handler)) {
        handlers.Add(&handler);
    }
}

template <class Map, class Key> void add(Map& map, const Key& key, TaMessageHandlerBase& handler)
{
    TaMessageHandlerList& handlers = map[key];
    try {
        addOnce(handlers, handler);
    } catch (...) { // no memory: a key without handlers does not stay
        if (handlers.IsEmpty()) {
            map.RemoveKey(key);
        }
        throw;
    }
}

template <class Map, class Key>
void remove(Map& map, const Key& key, const TaMessageHandlerBase& handler)
{
    if (TaMessageHandlerList* const handlers = map.Lookup(key)) {
        handlers->Remove(&handler);
        if (handlers->IsEmpty()) {
            map.RemoveKey(key);
        }
    }
}

template <class Map> void removeFromAll(Map& map, const TaMessageHandlerBase& handler)
{
    for (auto entry = map.begin(); entry != map.end();) {
        entry->GetValue().Remove(&handler);
        if (entry->GetValue().IsEmpty()) {
            entry = map.Erase(entry);
        } else {
            ++entry;
        }
    }
}

void addAllOnce(TaMessageHandlerList& handlers, const TaMessageHandlerList& others)
{
    const bool isFirst = handlers.IsEmpty(); // no list has a handler twice
    for (TaMessageHandlerBase* const handler : others) {
        if (isFirst) {
            handlers.Add(handler);
        } else {
            addOnce(handlers, *handler);
        }
    }
}

void dumpHandlers(TuStreamWriteASCII& stream, const TaMessageHandlerList& handlers)
{
    for (const TaMessageHandlerBase* const handler : handlers) {
        stream << u" '" << handler->TuIClassName<2>::GetName() << u"'";
    }
    stream << u"\n";
}

} // namespace

void TaSubscriptions::AddType(const TuRTTI& type, TaMessageHandlerBase& handler)
{
    add(m_types, &type, handler);
}

void TaSubscriptions::AddCommand(unsigned long long commandId, TaMessageHandlerBase& handler)
{
    add(m_commands, commandId, handler);
}

void TaSubscriptions::RemoveType(const TuRTTI& type, const TaMessageHandlerBase& handler)
{
    remove(m_types, &type, handler);
}

void TaSubscriptions::RemoveCommand(
    unsigned long long commandId, const TaMessageHandlerBase& handler)
{
    remove(m_commands, commandId, handler);
}

void TaSubscriptions::Remove(const TaMessageHandlerBase& handler)
{
    removeFromAll(m_types, handler);
    removeFromAll(m_commands, handler);
}

void TaSubscriptions::RemoveAll()
{
    m_types.RemoveAll();
    m_commands.RemoveAll();
}

/// Collects the lists that match a message; most messages match one.
class TaSubscriptions::Matches
{
public:
    explicit Matches(TaMessageHandlerList& scratch)
        : m_scratch(scratch)
    {
        m_scratch.RemoveAll();
    }
    void Add(const TaMessageHandlerList* handlers)
    {
        if (handlers == nullptr) {
            return;
        }
        if (m_only == nullptr) {
            m_only = handlers;
            return;
        }
        if (m_scratch.IsEmpty()) {
            addAllOnce(m_scratch, *m_only);
        }
        addAllOnce(m_scratch, *handlers);
    }
    const TaMessageHandlerList& Get() const
    {
        return m_only != nullptr && m_scratch.IsEmpty() ? *m_only : m_scratch;
    }

private:
    TaMessageHandlerList& m_scratch;
    const TaMessageHandlerList* m_only = nullptr; // the first one
};

const TaMessageHandlerList& TaSubscriptions::GetSubscribers(
    const TaMessage& message, TaMessageHandlerList& scratch) const
{
    Matches matches(scratch);
    addOfTypes(&message.GetRTTI(), matches);
    if (!m_commands.IsEmpty() && message.IsKindOf(TaMessageCommand::RTTI)) {
        const auto& command = dynamic_cast<const TaMessageCommand&>(message);
        matches.Add(m_commands.Lookup(command.GetWParam()));
    }
    return matches.Get();
}

void TaSubscriptions::addOfTypes(const TuRTTI* type, Matches& matches) const
{
    for (; type != nullptr; type = type->GetFirstBase()) {
        matches.Add(m_types.Lookup(type));
        if (const TuRTTI* const second = type->GetSecondBase()) {
            addOfTypes(second, matches);
        }
    }
}

TaMessageHandlerList TaSubscriptions::GetHandlers() const
{
    TaMessageHandlerList handlers;
    for (const auto& [type, subscribers] : m_types) {
        addAllOnce(handlers, subscribers);
    }
    for (const auto& [commandId, subscribers] : m_commands) {
        addAllOnce(handlers, subscribers);
    }
    return handlers;
}

void TaSubscriptions::Dump(TuStreamWriteASCII& stream) const
{
    for (const auto& [type, handlers] : m_types) {
        stream << u"  type " << type->GetClassName() << u":";
        dumpHandlers(stream, handlers);
    }
    for (const auto& [commandId, handlers] : m_commands) {
        stream << u"  command " << commandId << u":";
        dumpHandlers(stream, handlers);
    }
}
