#include "groundwork/tustreamwriteasciitrace.h"

#include "platform/platformterminal.h"

TU_DEFINE_RTTI(TuStreamWriteASCIITrace, TuStreamWriteASCII, nullptr, nullptr);
TU_DEFINE_RTTI(TuStreamWriteASCIITraceDiagnostic, TuStreamWriteASCII, nullptr, nullptr);

void TuStreamWriteASCIITraceBase::write(const char* text) { append(CString::FromCodePage(text)); }

void TuStreamWriteASCIITraceBase::write(const char16_t* text) { append(text); }

void TuStreamWriteASCIITraceBase::append(const CString& text)
{
    m_pending += text.ToUtf8();
    const std::size_t end = m_pending.rfind('\n');
    if (end != std::string::npos) {
        show(std::string_view(m_pending).substr(0, end + 1));
        m_pending.erase(0, end + 1);
    }
}

void TuStreamWriteASCIITraceBase::flush() noexcept
{
    if (!m_pending.empty()) {
        show(m_pending);
        m_pending.clear();
    }
}

void TuStreamWriteASCIITrace::show(std::string_view text) const { platform::WriteTrace(text); }

void TuStreamWriteASCIITraceDiagnostic::show(std::string_view text) const
{
    platform::WriteStandard(platform::eSS_Error, text);
}
