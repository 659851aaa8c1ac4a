#pragma once

#include "groundwork/tustreamwriteascii.h"

#include <string>

/// What the two trace writers share: text is collected and passed on by whole lines, and what is
/// left by the destructor, so that lines of several threads do not mix.
class GROUNDWORK_API TuStreamWriteASCIITraceBase : public TuStreamWriteASCII
{
protected:
    TuStreamWriteASCIITraceBase()
        : TuStreamWriteASCII(false)
    {
    }
    TuStreamWriteASCIITraceBase(const TuStreamWriteASCIITraceBase&) = delete;
    TuStreamWriteASCIITraceBase& operator=(const TuStreamWriteASCIITraceBase&) = delete;

    void write(const char* text) override;
    void write(const char16_t* text) override;

    /// Passes on what is left; each destructor calls it, while its show() is still there.
    void flush() noexcept;

private:
    /// `text` is UTF-8.
    virtual void show(std::string_view text) const = 0;
    void append(const CString& text);

    std::string m_pending; // UTF-8
};

/// Writes traces for developers: to the debugger where the system has one listening, else to
/// standard error.
class GROUNDWORK_API TuStreamWriteASCIITrace final : public TuStreamWriteASCIITraceBase
{
    TU_DECLARE_RTTI

public:
    TuStreamWriteASCIITrace() = default;
    ~TuStreamWriteASCIITrace() override { flush(); }

private:
    void show(std::string_view text) const override;
};

/// Writes diagnostics for whoever runs the program: to standard error on every system.
class GROUNDWORK_API TuStreamWriteASCIITraceDiagnostic final : public TuStreamWriteASCIITraceBase
{
    TU_DECLARE_RTTI

public:
    TuStreamWriteASCIITraceDiagnostic() = default;
    ~TuStreamWriteASCIITraceDiagnostic() override { flush(); }

private:
    void show(std::string_view text) const override;
};
