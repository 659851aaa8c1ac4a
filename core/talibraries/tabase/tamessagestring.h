#pragma once

#include "platform/platformwindow.h"
#include "tabase/tamessage.h"

/// A text for a window. Sent, it reaches subscribers like any message; posted, it goes to the
/// window itself, whose handler finds it among its posts, and to no subscriber.
///
/// Ownership: of the text; the window is only named.
class TABASE_API TaMessageString : public TaMessage
{
    TU_DECLARE_RTTI

public:
    TaMessageString(HWND window, const CString& text)
        : m_hwnd(window)
        , m_messageString(text)
    {
    }

    HWND GetHWND() const { return m_hwnd; }
    const CString& GetMessageString() const { return m_messageString; }

private:
    static IObject* CloneByFactory(const IObject& message);

    HWND m_hwnd;
    CString m_messageString;
};
