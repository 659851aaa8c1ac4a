#include "groundwork/tustreamwriteascii.h"

#include "groundwork/tuexceptions.h"
#include "groundwork/tutextnumber.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <string>

TU_DEFINE_RTTI(TuStreamWriteASCII, TuStreamWrite, nullptr, nullptr);

namespace {

constexpr std::size_t kLongestNumber = 32; // a double: sign, 17 digits, point, "e-308", zero

} // namespace

template <class Number> TuStreamWrite& TuStreamWriteASCII::writeNumber(Number value)
{
    char word[kLongestNumber];
    *std::to_chars(word, word + sizeof(word) - 1, value).ptr = '\0';
    writeValue(word);
    return *this;
}

void TuStreamWriteASCII::writeValue(const char* word)
{
    if (m_afterValue) {
        write(" ");
    }
    write(word);
    m_afterValue = m_separated;
}

template <class Unit> void TuStreamWriteASCII::writeAnyText(std::basic_string_view<Unit> text)
{
    const std::basic_string<Unit> terminated(text);
    if (!m_separated) {
        write(terminated.c_str());
        return;
    }
    constexpr Unit kRefused[]{ '\r', '\n', '\0' };
    if (text.find_first_of(kRefused, 0, std::size(kRefused)) != text.npos) {
        throw TuExceptionPreconditionViolation(
            TU_HERE, u"a line of a text stream holds neither line breaks nor zero units");
    }
    if (m_afterValue) {
        write("\n");
    }
    write(terminated.c_str());
    write("\r\n");
    m_afterValue = false;
}

TuStreamWrite& TuStreamWriteASCII::operator<<(bool value)
{
    writeValue(value ? "true" : "false");
    return *this;
}

TuStreamWrite& TuStreamWriteASCII::operator<<(signed char value)
{
    return writeNumber(static_cast<int>(value));
}

TuStreamWrite& TuStreamWriteASCII::operator<<(unsigned char value)
{
    return writeNumber(static_cast<int>(value));
}

TuStreamWrite& TuStreamWriteASCII::operator<<(short value) { return writeNumber(value); }

TuStreamWrite& TuStreamWriteASCII::operator<<(unsigned short value) { return writeNumber(value); }

TuStreamWrite& TuStreamWriteASCII::operator<<(int value) { return writeNumber(value); }

TuStreamWrite& TuStreamWriteASCII::operator<<(unsigned int value) { return writeNumber(value); }

TuStreamWrite& TuStreamWriteASCII::operator<<(long long value) { return writeNumber(value); }

TuStreamWrite& TuStreamWriteASCII::operator<<(unsigned long long value)
{
    return writeNumber(value);
}

/// The reader narrows a double. Rounded twice, the shortest form of a few floats would become their
/// neighbour; nine digits cannot.
TuStreamWrite& TuStreamWriteASCII::operator<<(float value)
{
    char word[kLongestNumber];
    char* const limit = word + sizeof(word) - 1;
    char* end = std::to_chars(word, limit, value).ptr;
    const auto isReadBack = [&] {
        double read = 0;
        TuParseDouble(std::string_view(word, static_cast<std::size_t>(end - word)), read);
        return static_cast<float>(read) == value || std::isnan(value);
    };
    constexpr int kNineDigits = 8; // behind the point
    if (!isReadBack()) {
        end = std::to_chars(word, limit, value, std::chars_format::scientific, kNineDigits).ptr;
    }
    *end = '\0';
    writeValue(word);
    return *this;
}

TuStreamWrite& TuStreamWriteASCII::operator<<(double value) { return writeNumber(value); }

TuStreamWrite& TuStreamWriteASCII::operator<<(const char* text)
{
    writeText(text != nullptr ? std::string_view(text) : std::string_view());
    return *this;
}

TuStreamWrite& TuStreamWriteASCII::operator<<(const char16_t* text)
{
    writeText(text != nullptr ? std::u16string_view(text) : std::u16string_view());
    return *this;
}

void TuStreamWriteASCII::writeText(std::string_view text) { writeAnyText(text); }

void TuStreamWriteASCII::writeText(std::u16string_view text) { writeAnyText(text); }

TuStreamWriteASCII::Passage::Passage(TuStreamWriteASCII& stream)
    : m_stream(stream)
    , m_separated(stream.m_separated)
{
    if (stream.m_afterValue) {
        stream.write("\n");
    }
    stream.m_separated = false;
    stream.m_afterValue = false;
}

TuStreamWriteASCII::Passage::~Passage()
{
    m_stream.m_separated = m_separated;
    if (m_separated) {
        try {
            m_stream.write("\r\n");
        } catch (...) { // a file stream remembers, and says so at the latest when it is closed
        }
    }
}
