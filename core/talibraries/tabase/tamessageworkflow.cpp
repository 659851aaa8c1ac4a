#include "tabase/tamessageworkflow.h"

#include "groundwork/tustreamwriteascii.h"

TU_DEFINE_RTTI(TaMessageWorkflow, TaMessage, nullptr, nullptr);

namespace {

const char16_t* nameOf(std::int32_t message)
{
    switch (message) {
    case TaMessageWorkflow::eM_Start:
        return u"eM_Start";
    case TaMessageWorkflow::eM_StartSleeping:
        return u"eM_StartSleeping";
    case TaMessageWorkflow::eM_Stop:
        return u"eM_Stop";
    case TaMessageWorkflow::eM_Continue:
        return u"eM_Continue";
    case TaMessageWorkflow::eM_Sleep:
        return u"eM_Sleep";
    case TaMessageWorkflow::eM_Break:
        return u"eM_Break";
    case TaMessageWorkflow::eM_Reevaluate:
        return u"eM_Reevaluate";
    case TaMessageWorkflow::eM_Dump:
        return u"eM_Dump";
    default: // any number may come from a caller
        return u"???";
    }
}

} // namespace

void TaMessageWorkflow::Dump(TuStreamWriteASCII& stream) const
{
    TaMessage::Dump(stream);
    stream << u" (" << nameOf(m_message) << u")";
}
