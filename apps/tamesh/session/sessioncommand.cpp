#include "tamesh/session/sessioncommand.h"

#include "groundwork/tustreamwriteascii.h"

namespace tamesh {

TU_DEFINE_RTTI(SessionCommand, TaMessageCommand, nullptr, nullptr);

void SessionCommand::Dump(TuStreamWriteASCII& stream) const
{
    TaMessageCommand::Dump(stream);
    stream << " \"" << CString::FromUtf8(m_command.text) << "\"";
}

} // namespace tamesh
