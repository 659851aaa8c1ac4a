#include "groundwork/tustreamwriteasciistring.h"

// Named after the template, which is what users know.
const TuRTTI TuStreamWriteASCIIStringBase::RTTI(
    u"TuStreamWriteASCIIStringT", TuStreamWriteASCII::RTTI, nullptr, nullptr);
