#include "groundwork/tustreamread.h"

#include "groundwork/tuexceptions.h"

#include <string>

TU_DEFINE_RTTI_ROOT(TuStreamRead, nullptr, nullptr);

unsigned int TuStreamRead::ReadAndCompareVersion(unsigned int highestKnown)
{
    unsigned int version = 0;
    *this >> version;
    if (version > highestKnown) {
        throwNewerVersion(version, highestKnown);
    }
    return version;
}

void TuStreamRead::throwNewerVersion(unsigned int version, unsigned int highestKnown)
{
    throw TuExceptionWrongFileVersion(TU_HERE,
        CString::FromUtf8("the record has version " + std::to_string(version)
            + ", this program knows versions up to " + std::to_string(highestKnown)));
}
