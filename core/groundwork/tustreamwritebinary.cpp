#include "groundwork/tustreamwritebinary.h"

#include "groundwork/iserializable.h"
#include "groundwork/tuexceptions.h"

#include <limits>

TU_DEFINE_RTTI(TuStreamWriteBinary, TuStreamWrite, nullptr, nullptr);

namespace {

unsigned int checkedCount(std::size_t length)
{
    if (length > std::numeric_limits<unsigned int>::max()) {
        throw TuExceptionPreconditionViolation(
            TU_HERE, u"a stored text has at most 4294967295 units");
    }
    return static_cast<unsigned int>(length);
}

} // namespace

TuStreamWrite& TuStreamWriteBinary::operator<<(const char* text)
{
    writeText(text != nullptr ? std::string_view(text) : std::string_view());
    return *this;
}

TuStreamWrite& TuStreamWriteBinary::operator<<(const char16_t* text)
{
    writeText(text != nullptr ? std::u16string_view(text) : std::u16string_view());
    return *this;
}

void TuStreamWriteBinary::writeText(std::string_view text)
{
    *this << checkedCount(text.size());
    WriteBuffer(text.data(), text.size());
}

void TuStreamWriteBinary::writeText(std::u16string_view text)
{
    *this << checkedCount(text.size());
    if constexpr (std::endian::native == std::endian::little) {
        WriteBuffer(text.data(), text.size() * sizeof(char16_t));
    } else {
        for (const char16_t unit : text) {
            *this << static_cast<unsigned short>(unit);
        }
    }
}

void TuStreamWriteBinary::WriteChunk(const ISerializable& object)
{
    WriteVersion(0);
    *this << object.GetClassName();
    object.Serialize(*this);
}
