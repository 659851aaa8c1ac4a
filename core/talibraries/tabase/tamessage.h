#pragma once

#include "groundwork/cstring.h"
#include "groundwork/iobject.h"
#include "groundwork/tureferencecounted.h"
#include "tabase/tabaseapi.h"

#include <cstdint>

#include "platform/platformmacrospush.h"

class TuStreamWriteASCII;

/// What one part of an application tells another through the TaMessageDispatcher: a small object
/// that does not change once it is made. Derive a class, with a type record, for each kind of
/// message; handlers subscribe to the class.
///
/// A copy is a new message, never the same one twice: it has a number of its own, and assignment
/// draws a new one, too.
///
/// Ownership: counted; queues hold a message that was posted.
/// Threads:   many threads read one message at once, so a class keeps nothing that it fills later.
/// Failure:   none.
class TABASE_API TaMessage : public TuReferenceCounted, public virtual IObject
{
    TU_DECLARE_RTTI

public:
    TaMessage();
    TaMessage(const TaMessage& other);
    TaMessage& operator=(const TaMessage& other);
    ~TaMessage() override;

    /// A test of types, not of values: whether `other` is of this message's class, or of one that
    /// derives from it. It is deliberately one-sided, so that a message serves as the pattern of
    /// what it asks for.
    virtual bool operator==(const TaMessage& other) const;

    /// A readable account, without a line end: the class, and what the class adds.
    virtual void Dump(TuStreamWriteASCII& stream) const;
    /// To TuStreamWriteASCIITrace.
    void Dump() const;
    CString ToString() const;

    /// From 1 on, in the order in which messages were made; for traces. The numbers start anew
    /// after 2^32 messages.
    unsigned int GetID() const { return m_id; }

private:
    static std::uint32_t nextID();

    std::uint32_t m_id;
};

#include "platform/platformmacrospop.h"
