#include "tabase/taworkflowmanagerbase.h"

#include "groundwork/tustreamwriteascii.h"

TU_DEFINE_RTTI(TaWorkflowManagerBase::TaMessageWorkflowEndOfTF, TaMessage, nullptr, nullptr);
TU_DEFINE_RTTI(
    TaWorkflowManagerBase::TaMessageWorkflowNextMsgBuffered, TaMessage, nullptr, nullptr);

namespace {

const char16_t* nameOf(std::int32_t message)
{
    using EndOfTF = TaWorkflowManagerBase::TaMessageWorkflowEndOfTF;
    switch (message) {
    case EndOfTF::eM_EndOfATF:
        return u"eM_EndOfATF";
    case EndOfTF::eM_EndOfITF:
        return u"eM_EndOfITF";
    case EndOfTF::eM_EndOfITFExit:
        return u"eM_EndOfITFExit";
    default: // any number may come from a caller
        return u"???";
    }
}

} // namespace

void TaWorkflowManagerBase::TaMessageWorkflowEndOfTF::Dump(TuStreamWriteASCII& stream) const
{
    TaMessage::Dump(stream);
    stream << u" (" << nameOf(m_message) << u")";
}
