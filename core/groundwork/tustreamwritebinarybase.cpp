#include "groundwork/tustreamwritebinarybase.h"

#include "groundwork/tuexceptions.h"

#include <limits>

TuStreamWrite& TuStreamWriteBinaryBase::operator<<(const char* text)
{
    writeText(text != nullptr ? std::string_view(text) : std::string_view());
    return *this;
}

TuStreamWrite& TuStreamWriteBinaryBase::operator<<(const char16_t* text)
{
    writeText(text != nullptr ? std::u16string_view(text) : std::u16string_view());
    return *this;
}

void TuStreamWriteBinaryBase::writeText(std::string_view text)
{
    putCount(text.size());
    putBytes(text.data(), text.size());
}

void TuStreamWriteBinaryBase::writeText(std::u16string_view text)
{
    putCount(text.size());
    if constexpr (std::endian::native == std::endian::little) {
        putBytes(text.data(), text.size() * sizeof(char16_t));
    } else {
        for (const char16_t unit : text) {
            put(static_cast<unsigned short>(unit));
        }
    }
}

void TuStreamWriteBinaryBase::putCount(std::size_t units)
{
    if (units > std::numeric_limits<unsigned int>::max()) {
        throw TuExceptionPreconditionViolation(
            TU_HERE, u"a stored text has at most 4294967295 units");
    }
    put(static_cast<unsigned int>(units));
}
