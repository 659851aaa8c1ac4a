#pragma once

#include "tabase/tamessagehandlerbase.h"

#include <atomic>

/// A message handler on a thread that has a loop of its own: that of TaMessageLoop, or any other
/// that serves windows or TaMessageLoop's descriptor.
///
///     class Progress : public TaMessageHandler
///     {
///     public:
///         Progress() : TaMessageHandler(u"Progress") { }
///         ~Progress() override { destroyMessageHandler().MarkRead(); }
///
///     private:
///         void onSubscribeMessages() override { SubscribeCommand(kProgress); }
///         long long handleMessage(const TaMessage& message) override;
///     };
///
///     progress.initMessageHandler()      // on the thread that is to handle the messages
///
/// Ownership, Threads and Failure as said at TaMessageHandlerBase.
class TABASE_API TaMessageHandler : public TaMessageHandlerBase
{
public:
    static const TuRTTI RTTI;

    explicit TaMessageHandler(const CString& name);
    const TuRTTI& GetRTTI() const override { return RTTI; }
    ~TaMessageHandler() override;

    HWND GetHWND() const override { return m_hwnd.load(); }

    /// Makes the window, on the calling thread; onSubscribeMessages is called meanwhile. True, too,
    /// where this thread has made it before.
    TuCheckReturn<bool> initMessageHandler();
    /// Ends it, on the same thread; onUnsubscribeMessages is called meanwhile. Who waits for an
    /// answer of the handler is told that there will be none. It may be started again. False where
    /// there is no window, or it is another thread's.
    TuCheckReturn<bool> destroyMessageHandler();

protected:
    void setHWND(HWND window) override { m_hwnd = window; }
    platform::WindowProcedure getWindowProc() override { return &messageHandler; }
    void signalMessagingFinished() override { }

private:
    bool destroyWindow() noexcept;
    /// The window procedure.
    static long long messageHandler(
        HWND window, unsigned int message, unsigned long long wParam, long long lParam) noexcept;

    std::atomic<HWND> m_hwnd{ nullptr };
};
