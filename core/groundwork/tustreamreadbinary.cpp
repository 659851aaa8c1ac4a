#include "groundwork/tustreamreadbinary.h"

#include "groundwork/iserializable.h"
#include "groundwork/tuexceptions.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

TU_DEFINE_RTTI(TuStreamReadBinary, TuStreamRead, nullptr, nullptr);

TuStreamRead& TuStreamReadBinary::operator>>(bool& value)
{
    unsigned char byte = 0;
    *this >> byte;
    if (byte > 1) {
        throw TuExceptionStream(TU_HERE, u"a stored bool is neither 0 nor 1");
    }
    value = byte == 1;
    return *this;
}

TuStreamRead& TuStreamReadBinary::operator>>(CStringA& text)
{
    readText(text);
    return *this;
}

TuStreamRead& TuStreamReadBinary::operator>>(CString& text)
{
    readText(text);
    return *this;
}

/// A count from outside is only a claim: the text grows as its units arrive.
template <class Text> void TuStreamReadBinary::readText(Text& text)
{
    using Unit = typename Text::value_type;
    constexpr unsigned int kStep = 65536 / sizeof(Unit);

    unsigned int count = 0;
    *this >> count;
    Text result;
    for (unsigned int done = 0; done < count;) {
        const unsigned int step = std::min(kStep, count - done);
        result.SetLength(std::size_t{ done } + step);
        ReadExactly(result.GetBuffer() + done, std::uint64_t{ step } * sizeof(Unit));
        done += step;
    }
    if constexpr (std::endian::native == std::endian::big && sizeof(Unit) > 1) {
        for (Unit *unit = result.GetBuffer(), *end = unit + count; unit != end; ++unit) {
            TuReverseBytes<Unit>(reinterpret_cast<unsigned char*>(unit));
        }
    }
    text = std::move(result);
}

ISerializable* TuStreamReadBinary::ReadChunk()
{
    ReadAndCompareVersion(0);
    CString name;
    *this >> name;
    const TuRTTI::CreateFunction create = TuRTTI::getCreate(name);
    if (create == nullptr) {
        throw TuException(
            TU_HERE, TuExceptionStream(TU_HERE, u"no class to create is called \"" + name + u"\""));
    }
    std::unique_ptr<IObject> object(create());
    auto* serializable = dynamic_cast<ISerializable*>(object.get());
    if (serializable == nullptr) {
        throw TuException(TU_HERE,
            TuExceptionStream(
                TU_HERE, u"objects of the class \"" + name + u"\" cannot be read from a stream"));
    }
    serializable->Serialize(*this);
    static_cast<void>(object.release());
    return serializable;
}

void TuStreamReadBinary::throwEndedEarly()
{
    throw TuExceptionStream(TU_HERE, u"the stream ended early");
}
