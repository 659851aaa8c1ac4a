#include "tabase/tamessage.h"

#include "groundwork/tustreamwriteasciistring.h"
#include "groundwork/tustreamwriteasciitrace.h"

#include <atomic>

TU_DEFINE_RTTI_ROOT(TaMessage, nullptr, nullptr);

TaMessage::TaMessage()
    : m_id(nextID())
{
}

TaMessage::TaMessage(const TaMessage& other)
    : IReferenceCounted(other)
    , IObject(other)
    , TuReferenceCounted(other)
    , m_id(nextID())
{
}

TaMessage& TaMessage::operator=(const TaMessage& other)
{
    TuReferenceCounted::operator=(other);
    m_id = nextID();
    return *this;
}

TaMessage::~TaMessage() = default;

bool TaMessage::operator==(const TaMessage& other) const { return other.IsKindOf(GetRTTI()); }

void TaMessage::Dump(TuStreamWriteASCII& stream) const { stream << GetClassName(); }

void TaMessage::Dump() const
{
    TuStreamWriteASCIITrace trace;
    Dump(trace);
}

CString TaMessage::ToString() const
{
    TuStreamWriteASCIIStringT<CString> stream;
    Dump(stream);
    return stream.GetText();
}

std::uint32_t TaMessage::nextID()
{
    static constinit std::atomic<std::uint32_t> s_last{ 0 };
    return s_last.fetch_add(1, std::memory_order_relaxed) + 1;
}
