#include "tabase/tastreamreadascii.h"

#include "groundwork/tuexceptions.h"
#include "groundwork/tutextnumber.h"

#include <limits>

TU_DEFINE_RTTI(TaStreamReadASCII, TuStreamRead, nullptr, nullptr);

namespace {

constexpr char16_t kSource[] = u"core/talibraries/tabase/tastreamreadascii";

// The lines that callers tell the failures by; they never move.
constexpr unsigned int kLineNotSigned = 43;
constexpr unsigned int kLineSignedRange = 50;
constexpr unsigned int kLineNotUnsigned = 77;
constexpr unsigned int kLineUnsignedRange = 84;
constexpr unsigned int kLineLineAfterEnd = 110;
constexpr unsigned int kLineNotBool = 212;
constexpr unsigned int kLineNotSigned64 = 352;
constexpr unsigned int kLineNotUnsigned64 = 374;
constexpr unsigned int kLineNotDouble = 421;
constexpr unsigned int kLineWordAfterEnd = 441;
constexpr unsigned int kLineNoWord = 453;

constexpr std::size_t kStep = 127; // bytes that are gathered before they join the text

[[noreturn]] void fail(unsigned int line) { throw TuExceptionStream(kSource, line); }

} // namespace

/// Holds a word while it is looked at. Only a word longer than a number usually is takes memory.
struct TaStreamReadASCII::SWord
{
    char bytes[kStep];
    CStringA front; // what did not fit, in front of the bytes
};

TuStreamRead& TaStreamReadASCII::operator>>(CStringA& line)
{
    line.Empty();
    if (m_endOfStream) {
        fail(kLineLineAfterEnd);
    }
    char buffer[kStep + 1];
    std::size_t used = 0;
    for (;;) {
        char c = '\0';
        m_endOfStream = read(c);
        if (m_endOfStream) {
            if (c != '\0') {
                buffer[used++] = c;
            }
            break;
        }
        if (c == '\r') {
            m_endOfStream = read(c);
            break;
        }
        buffer[used++] = c;
        if (c == '\n') {
            break;
        }
        if (used == kStep) {
            line.Append({ buffer, used });
            used = 0;
        }
    }
    line.Append({ buffer, used });
    return *this;
}

TuStreamRead& TaStreamReadASCII::operator>>(CString& line)
{
    line.Empty();
    CStringA narrow;
    *this >> narrow;
    line = CString::FromCodePage(narrow);
    return *this;
}

TuStreamRead& TaStreamReadASCII::operator>>(float& value)
{
    static_assert(std::numeric_limits<float>::is_iec559, "a double too large becomes infinity");
    double wide = 0.0;
    *this >> wide;
    value = static_cast<float>(wide);
    return *this;
}

TuStreamRead& TaStreamReadASCII::operator>>(double& value)
{
    SWord space;
    const std::string_view word = readWord(space);
    double number = 0.0;
    if (TuParseDouble(word, number) != word.size()) {
        fail(kLineNotDouble);
    }
    value = number;
    return *this;
}

TuStreamRead& TaStreamReadASCII::operator>>(bool& value)
{
    SWord space;
    const std::string_view word = readWord(space);
    if (word != "true" && word != "false") {
        fail(kLineNotBool);
    }
    value = word == "true";
    return *this;
}

TuStreamRead& TaStreamReadASCII::operator>>(signed char& value) { return readSigned(value); }

TuStreamRead& TaStreamReadASCII::operator>>(unsigned char& value) { return readUnsigned(value); }

TuStreamRead& TaStreamReadASCII::operator>>(short& value) { return readSigned(value); }

TuStreamRead& TaStreamReadASCII::operator>>(unsigned short& value) { return readUnsigned(value); }

TuStreamRead& TaStreamReadASCII::operator>>(int& value) { return readSigned(value); }

TuStreamRead& TaStreamReadASCII::operator>>(unsigned int& value) { return readUnsigned(value); }

TuStreamRead& TaStreamReadASCII::operator>>(long long& value)
{
    SWord space;
    const std::string_view word = readWord(space);
    std::int64_t number = 0;
    if (TuParseInteger64(word, number) == 0) {
        fail(kLineNotSigned64);
    }
    value = number;
    return *this;
}

TuStreamRead& TaStreamReadASCII::operator>>(unsigned long long& value)
{
    SWord space;
    const std::string_view word = readWord(space);
    std::uint64_t number = 0;
    if (TuParseUnsigned64(word, number) == 0) {
        fail(kLineNotUnsigned64);
    }
    value = number;
    return *this;
}

std::string_view TaStreamReadASCII::readWord(SWord& word)
{
    if (m_endOfStream) {
        fail(kLineWordAfterEnd);
    }
    char c = '\0';
    do {
        m_endOfStream = read(c);
        if (m_endOfStream) {
            fail(kLineNoWord);
        }
    } while (isSpace(c));

    std::size_t used = 0;
    do {
        if (used == kStep) {
            word.front.Append({ word.bytes, used });
            used = 0;
        }
        word.bytes[used++] = c;
        m_endOfStream = read(c);
    } while (!m_endOfStream && !isSpace(c));
    if (word.front.IsEmpty()) {
        return { word.bytes, used };
    }
    return word.front.Append({ word.bytes, used });
}

template <class Target> TuStreamRead& TaStreamReadASCII::readSigned(Target& value)
{
    SWord space;
    const std::string_view word = readWord(space);
    std::int32_t number = 0;
    if (TuParseLong(word, number) != word.size()) {
        fail(kLineNotSigned);
    }
    if (number < std::numeric_limits<Target>::min()
        || number > std::numeric_limits<Target>::max()) {
        fail(kLineSignedRange);
    }
    value = static_cast<Target>(number);
    return *this;
}

template <class Target> TuStreamRead& TaStreamReadASCII::readUnsigned(Target& value)
{
    SWord space;
    const std::string_view word = readWord(space);
    std::uint32_t number = 0;
    if (TuParseUnsignedLong(word, number) != word.size()) {
        fail(kLineNotUnsigned);
    }
    if (number > std::numeric_limits<Target>::max()) {
        fail(kLineUnsignedRange);
    }
    value = static_cast<Target>(number);
    return *this;
}
