#pragma once

#include "groundwork/tustreamread.h"
#include "tabase/tabaseapi.h"

#include <string_view>

/// The text reader: words between white space, and lines.
///
/// Text is 8-bit, in the system code page; there are no quotes, escapes or comments. Numbers and
/// bools are words: white space (space, tab, CR, LF) before the word is skipped, and the one byte
/// behind it is taken with it. Text is a line: all up to the next line end.
///
///  - A CR ends a line and takes one further byte with it, whatever it is (the LF of a CR LF).
///  - A LF alone ends a line and stays its last character.
///  - Integers of up to 32 bits are decimal words of nothing else. `int` and `unsigned int` are cut
///    to their range, the shorter ones must lie within it; a minus before an unsigned one wraps.
///  - 64-bit integers take a number at the front of the word and ignore what follows; the signed
///    one knows `0x` and a leading 0 (octal).
///  - `double` is what C's strtod takes in the C locale; `float` is a double that is narrowed.
///  - `bool` is exactly `true` or `false`. The char types are numbers.
///
/// Both oddities of lines, and the laxness of the 64-bit integers, are deliberate: files rely on
/// them.
///
/// Threads: one thread at a time.
/// Failure: TuExceptionStream, whose line says what was wrong. The target is unchanged (a line's is
///          empty, or what came before its source failed), the bad word has been read. Nothing can
///          be read after the end.
class TABASE_API TaStreamReadASCII : public TuStreamRead
{
    TU_DECLARE_RTTI

public:
    using TuStreamRead::operator>>;
    TuStreamRead& operator>>(CStringA& line) override;
    TuStreamRead& operator>>(CString& line) override;
    TuStreamRead& operator>>(float& value) override;
    TuStreamRead& operator>>(double& value) override;
    TuStreamRead& operator>>(bool& value) override;
    TuStreamRead& operator>>(signed char& value) override;
    TuStreamRead& operator>>(unsigned char& value) override;
    TuStreamRead& operator>>(short& value) override;
    TuStreamRead& operator>>(unsigned short& value) override;
    TuStreamRead& operator>>(int& value) override;
    TuStreamRead& operator>>(unsigned int& value) override;
    TuStreamRead& operator>>(long long& value) override;
    TuStreamRead& operator>>(unsigned long long& value) override;

    /// Whether the source has reported its end; from then on nothing can be read.
    bool IsEndOfStream() const { return m_endOfStream; }

protected:
    /// Delivers the next byte in `c` and returns false, or returns true at the end. All input comes
    /// through here, one byte a call. A source may report the end together with its last byte: a
    /// line takes that byte in (unless it is zero, which is what `c` holds before), a word does
    /// not.
    virtual bool read(char& c) = 0;

private:
    struct SWord;

    bool isSpace(char c) const { return c == ' ' || c == '\t' || isLineBreak(c); }
    bool isLineBreak(char c) const { return c == '\r' || c == '\n'; }
    std::string_view readWord(SWord& word);
    template <class Target> TuStreamRead& readSigned(Target& value);
    template <class Target> TuStreamRead& readUnsigned(Target& value);

    bool m_endOfStream = false;
};
