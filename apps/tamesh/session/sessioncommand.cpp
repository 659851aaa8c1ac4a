#include "tamesh/session/sessioncommand.h"

#include "groundwork/tustreamwriteascii.h"

namespace tamesh {

const char* GetColoursName(EMeshColours colours)
{
    switch (colours) {
    case eMC_Height:
        return "height";
    case eMC_Curvature:
        return "curvature";
    case eMC_Component:
        return "component";
    case eMC_Distance:
        return "distance";
    case eMC_Stored:
        break;
    }
    return "stored";
}

const char* GetAxisName(EAxis axis) { return axis == eA_X ? "x" : axis == eA_Y ? "y" : "z"; }

TU_DEFINE_RTTI(SessionCommand, TaMessageCommand, nullptr, nullptr);

void SessionCommand::Dump(TuStreamWriteASCII& stream) const
{
    TaMessageCommand::Dump(stream);
    stream << " \"" << CString::FromUtf8(m_command.text) << "\"";
}

} // namespace tamesh
