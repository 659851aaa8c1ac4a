#include "groundwork/tustreamreadbinarybase.h"

#include "groundwork/tuexceptions.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

TuStreamRead& TuStreamReadBinaryBase::operator>>(bool& value)
{
    unsigned char byte = 0;
    get(byte);
    if (byte > 1) {
        throw TuExceptionStream(TU_HERE, u"a stored bool is neither 0 nor 1");
    }
    value = byte == 1;
    return *this;
}

TuStreamRead& TuStreamReadBinaryBase::operator>>(CStringA& text)
{
    readText(text);
    return *this;
}

TuStreamRead& TuStreamReadBinaryBase::operator>>(CString& text)
{
    readText(text);
    return *this;
}

/// A count from outside is only a claim: the text grows as its units arrive. What lies in the
/// window has arrived.
template <class Text> void TuStreamReadBinaryBase::readText(Text& text)
{
    using Unit = typename Text::value_type;
    constexpr std::uint64_t kStep = 65536 / sizeof(Unit);

    unsigned int count = 0;
    get(count);
    const auto present = static_cast<std::uint64_t>(m_windowEnd - m_window) / sizeof(Unit);
    if (std::endian::native == std::endian::little && count <= present) {
        text.SetLength(count);
        if (count != 0) {
            std::memcpy(text.GetBuffer(), m_window, count * sizeof(Unit));
            m_window += count * sizeof(Unit);
        }
        return;
    }
    Text result;
    for (std::uint64_t done = 0; done < count;) {
        const std::uint64_t step = std::min(kStep, count - done);
        result.SetLength(done + step);
        readExactly(result.GetBuffer() + done, step * sizeof(Unit));
        done += step;
    }
    if constexpr (std::endian::native == std::endian::big && sizeof(Unit) > 1) {
        for (Unit *unit = result.GetBuffer(), *end = unit + count; unit != end; ++unit) {
            TuReverseBytes<Unit>(reinterpret_cast<unsigned char*>(unit));
        }
    }
    text = std::move(result);
}

void TuStreamReadBinaryBase::readExactly(void* data, unsigned long long size)
{
    if (read(data, size) != size) {
        throw TuExceptionStream(TU_HERE, u"the stream ended early");
    }
}
