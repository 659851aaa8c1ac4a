#pragma once

#include "groundwork/tulist.h"
#include "groundwork/tumap.h"
#include "groundwork/turtti.h"
#include "tabase/tabaseapi.h"

class TaMessage;
class TaMessageHandlerBase;
class TuStreamWriteASCII;

using TaMessageHandlerList = TuList<TaMessageHandlerBase*>;

/// Which handlers want which messages: lists by type and by the number of a command, each in the
/// order of subscription.
///
/// Ownership: of nothing but the lists. A type without subscribers is not kept, so that the library
///            it came from can be unloaded.
/// Threads:   many readers, or one writer.
/// Failure:   the additions and GetSubscribers throw TuExceptionOutOfMemory.
class TABASE_API TaSubscriptions
{
public:
    /// A handler that is there already is not added again.
    void AddType(const TuRTTI& type, TaMessageHandlerBase& handler);
    void AddCommand(unsigned long long commandId, TaMessageHandlerBase& handler);
    void RemoveType(const TuRTTI& type, const TaMessageHandlerBase& handler);
    void RemoveCommand(unsigned long long commandId, const TaMessageHandlerBase& handler);
    void Remove(const TaMessageHandlerBase& handler);
    void RemoveAll();

    /// Those of the message's type, then of its base types, then, for a command, of its number.
    /// Each stands there once, at its first place. The answer is one of the lists here, where only
    /// that one matches, or else `scratch`, refilled.
    const TaMessageHandlerList& GetSubscribers(
        const TaMessage& message, TaMessageHandlerList& scratch) const;
    /// All handlers that have subscribed to anything, each once.
    TaMessageHandlerList GetHandlers() const;

    void Dump(TuStreamWriteASCII& stream) const;

private:
    using Types = TuMap<const TuRTTI*, TaMessageHandlerList>;
    using Commands = TuMap<unsigned long long, TaMessageHandlerList>;

    static constexpr unsigned int kBlockSize = 10;
    static constexpr unsigned int kTypeBuckets = 127;
    static constexpr unsigned int kCommandBuckets = 1021;

    class Matches;

    void addOfTypes(const TuRTTI* type, Matches& matches) const;

    Types m_types{ kBlockSize, kTypeBuckets };
    Commands m_commands{ kBlockSize, kCommandBuckets };
};
