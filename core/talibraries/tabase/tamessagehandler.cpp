#include "tabase/tamessagehandler.h"

#include "platform/platformtaskmemory.h"

const TuRTTI TaMessageHandler::RTTI(
    u"TaMessageHandler", TaMessageHandlerBase::RTTI, nullptr, nullptr);

TaMessageHandler::TaMessageHandler(const CString& name)
    : TaMessageHandlerBase(name)
{
}

TaMessageHandler::~TaMessageHandler()
{
    if (hasWindowOnThisThread()) {
        destroyWindow();
    } else if (const HWND window = m_hwnd) {
        // Only its own thread can end the window: it stays without a handler until that looks.
        closeQueues();
        platform::SetWindowValue(window, nullptr);
        (void)platform::PostToWindow(window, platform::eWM_Close, 0, 0);
    }
    leaveDispatcher();
}

TuCheckReturn<bool> TaMessageHandler::initMessageHandler()
{
    return hasWindowOnThisThread() || createHWND(*this);
}

TuCheckReturn<bool> TaMessageHandler::destroyMessageHandler()
{
    if (!hasWindowOnThisThread()) {
        return false;
    }
    const bool isDestroyed = destroyWindow();
    setHWND(nullptr);
    return isDestroyed;
}

bool TaMessageHandler::destroyWindow() noexcept
{
    const HWND window = m_hwnd;
    // Texts that are on their way would be lost with the window, and their memory with them.
    for (platform::SWindowMessage message;
         platform::TakeMessageOf(window, kStringMessage, message);) {
        platform::FreeTaskMemory(reinterpret_cast<void*>(message.lParam));
    }
    const bool isDestroyed = platform::DestroyMessageWindow(window);
    closeQueues();
    m_hwnd = nullptr;
    return isDestroyed;
}

long long TaMessageHandler::messageHandler(
    HWND window, unsigned int message, unsigned long long wParam, long long lParam) noexcept
{
    return windowProcedure(window, message, wParam, lParam);
}
