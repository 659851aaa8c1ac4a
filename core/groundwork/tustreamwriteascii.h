#pragma once

#include "groundwork/tustreamwrite.h"

/// The readable writer. Numbers and keywords are those of the C locale, whatever the process's is:
/// `true`, `false`, floats in the shortest form that reads back to the same bits (nine digits where
/// the reader, which goes by way of double, would miss them).
///
/// A separated stream writes data for TaStreamReadASCII: a blank between values, and each text on a
/// line of its own, ended by CR LF. (Where a text follows a value, a line feed alone stands between
/// them: the reader takes it as the end of the value's word.) A stream that is not separated writes
/// its pieces as they come, for messages and dumps.
///
/// Failure: besides that of TuStreamWrite: a separated stream refuses, with
///          TuExceptionPreconditionViolation, a text that holds a line break or a zero unit, which
///          the reader would take for something else. Elsewhere a text ends at its first zero unit.
class GROUNDWORK_API TuStreamWriteASCII : public TuStreamWrite
{
    TU_DECLARE_RTTI

public:
    using TuStreamWrite::operator<<;
    TuStreamWrite& operator<<(bool value) override;
    TuStreamWrite& operator<<(signed char value) override;
    TuStreamWrite& operator<<(unsigned char value) override;
    TuStreamWrite& operator<<(short value) override;
    TuStreamWrite& operator<<(unsigned short value) override;
    TuStreamWrite& operator<<(int value) override;
    TuStreamWrite& operator<<(unsigned int value) override;
    TuStreamWrite& operator<<(long long value) override;
    TuStreamWrite& operator<<(unsigned long long value) override;
    TuStreamWrite& operator<<(float value) override;
    TuStreamWrite& operator<<(double value) override;
    TuStreamWrite& operator<<(const char* text) override;
    TuStreamWrite& operator<<(const char16_t* text) override;

    /// While it lives, a separated stream writes its pieces as they come, on lines of their own:
    /// free text amid data.
    ///
    /// Failure: none from the destructor, which ends the last line where it can.
    class GROUNDWORK_API Passage
    {
    public:
        explicit Passage(TuStreamWriteASCII& stream);
        ~Passage();
        Passage(const Passage&) = delete;
        Passage& operator=(const Passage&) = delete;

    private:
        TuStreamWriteASCII& m_stream;
        const bool m_separated; // outside of the passage
    };

protected:
    explicit TuStreamWriteASCII(bool separated)
        : m_separated(separated)
    {
    }

    /// The sink for text in the system code page.
    virtual void write(const char* text) = 0;
    /// The sink for wide text.
    virtual void write(const char16_t* text) = 0;

    void writeText(std::string_view text) override;
    void writeText(std::u16string_view text) override;

private:
    template <class Number> TuStreamWrite& writeNumber(Number value);
    template <class Unit> void writeAnyText(std::basic_string_view<Unit> text);
    void writeValue(const char* word);

    bool m_separated;
    bool m_afterValue = false; // in a separated stream: the next piece needs a separator
};
