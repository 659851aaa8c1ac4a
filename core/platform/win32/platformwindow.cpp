#include "platform/platformwindow.h"

#include "platform/win32/platformwindows.h"

#include <atomic>
#include <type_traits>

namespace platform {
namespace {

    static_assert(std::is_same_v<WindowProcedure, WNDPROC>);
    static_assert(eWM_Create == WM_CREATE && eWM_Destroy == WM_DESTROY && eWM_Close == WM_CLOSE
        && eWM_Quit == WM_QUIT && eWM_Command == WM_COMMAND && eWM_FirstUser == WM_USER
        && eWM_FirstApp == WM_APP);

    constinit std::atomic<PostRefusal> s_refusal{ nullptr };

    /// Of the library that this stands in, under which window classes are registered.
    HINSTANCE instance()
    {
        HMODULE module = nullptr;
        ::GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            reinterpret_cast<LPCWSTR>(&instance), &module);
        return module;
    }

    LPCWSTR wide(const char16_t* text) { return reinterpret_cast<LPCWSTR>(text); }

    constexpr int kLongestClassName = 256; // what the system allows

    /// Messages to the thread, counted, that mark how far HandleWaitingMessages goes. A loop in a
    /// procedure may come past the mark of a call further out, and notes it. One that is not ours
    /// would lose it, and the call further out then ends where nothing waits.
    constexpr UINT kMark = WM_APP + 0x3FFF;
    constinit thread_local WPARAM t_lastMark = 0;
    constinit thread_local WPARAM t_passedMark = 0;

    /// Notes it where the message is a mark.
    bool passMark(const MSG& message)
    {
        if (message.hwnd != nullptr || message.message != kMark) {
            return false;
        }
        t_passedMark = message.wParam;
        return true;
    }

    EGetMessage take(const MSG& taken, SWindowMessage& message)
    {
        message = { taken.hwnd, taken.message, taken.wParam, taken.lParam };
        return taken.message == WM_QUIT ? eGM_Quit : eGM_Message;
    }

} // namespace

HWND CreateMessageWindow(
    const char16_t* className, WindowProcedure procedure, void* parameter) noexcept
{
    WNDCLASSEXW windowClass = {};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = instance();
    windowClass.lpszClassName = wide(className);
    if (::RegisterClassExW(&windowClass) == 0) {
        return nullptr;
    }
    const HWND window = ::CreateWindowExW(0, wide(className), nullptr, 0, CW_USEDEFAULT,
        CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, HWND_MESSAGE, nullptr, instance(), parameter);
    if (window == nullptr) {
        const DWORD reason = ::GetLastError();
        ::UnregisterClassW(wide(className), instance());
        ::SetLastError(reason);
    }
    return window;
}

bool DestroyMessageWindow(HWND window) noexcept
{
    WCHAR className[kLongestClassName + 1] = {};
    ::GetClassNameW(window, className, kLongestClassName + 1);
    if (!::DestroyWindow(window)) {
        return false;
    }
    ::UnregisterClassW(className, instance());
    return true;
}

bool IsMessageWindow(HWND window) noexcept { return ::IsWindow(window) != FALSE; }

std::u16string GetWindowClassName(HWND window)
{
    WCHAR className[kLongestClassName + 1] = {};
    const int length = ::GetClassNameW(window, className, kLongestClassName + 1);
    return { className, className + length };
}

void* GetCreationParameter(long long lParam) noexcept
{
    return reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams;
}

void* GetWindowValue(HWND window) noexcept
{
    return reinterpret_cast<void*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
}

void SetWindowValue(HWND window, void* value) noexcept
{
    ::SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(value));
}

long long PassToDefault(
    HWND window, unsigned int message, unsigned long long wParam, long long lParam) noexcept
{
    if (message == eWM_Close) {
        DestroyMessageWindow(window); // the system's own would leave the class
        return 0;
    }
    return ::DefWindowProcW(window, message, wParam, lParam);
}

EPost PostToWindow(
    HWND window, unsigned int message, unsigned long long wParam, long long lParam) noexcept
{
    if (const PostRefusal refusal = s_refusal.load(std::memory_order_relaxed);
        refusal != nullptr && refusal(window, message)) {
        ::SetLastError(ERROR_NOT_ENOUGH_QUOTA);
        return eP_Full;
    }
    // To no window would be to the thread itself.
    if (window == nullptr) {
        ::SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return eP_NoWindow;
    }
    if (::PostMessageW(window, message, wParam, lParam)) {
        return eP_Posted;
    }
    return ::GetLastError() == ERROR_NOT_ENOUGH_QUOTA ? eP_Full : eP_NoWindow;
}

WakeLater::WakeLater(EWakeUntil) noexcept { }
WakeLater::~WakeLater() { } // NOLINT(modernize-use-equals-default): exported

void WakeNow() noexcept { }

EGetMessage WaitForMessage(SWindowMessage& message) noexcept
{
    MSG taken = {};
    do {
        if (::GetMessageW(&taken, nullptr, 0, 0) == -1) {
            return eGM_Failed;
        }
    } while (passMark(taken));
    return take(taken, message);
}

EGetMessage TakeMessage(SWindowMessage& message) noexcept
{
    MSG taken = {};
    do {
        if (!::PeekMessageW(&taken, nullptr, 0, 0, PM_REMOVE)) {
            return eGM_None;
        }
    } while (passMark(taken));
    return take(taken, message);
}

bool TakeMessageOf(HWND window, unsigned int number, SWindowMessage& message) noexcept
{
    MSG taken = {};
    // No window would stand for all. The quit message that the system makes itself comes whatever
    // is asked for; it is put back.
    while (window != nullptr && ::PeekMessageW(&taken, window, number, number, PM_REMOVE)) {
        if (taken.message == number) {
            take(taken, message);
            return true;
        }
        if (taken.message == WM_QUIT) {
            ::PostQuitMessage(static_cast<int>(taken.wParam));
            return false;
        }
    }
    return false;
}

void DispatchToWindow(const SWindowMessage& message) noexcept
{
    MSG taken = {};
    taken.hwnd = message.window;
    taken.message = message.message;
    taken.wParam = message.wParam;
    taken.lParam = message.lParam;
    ::TranslateMessage(&taken);
    ::DispatchMessageW(&taken);
}

bool HandleWaitingMessages() noexcept
{
    const WPARAM mark = ++t_lastMark;
    const bool isMarked = ::PostThreadMessageW(::GetCurrentThreadId(), kMark, mark, 0) != FALSE;
    constexpr int kMost = 10'000; // without a mark, the queue is full
    for (int handled = 0; isMarked ? t_passedMark < mark : handled < kMost; ++handled) {
        MSG taken = {};
        SWindowMessage message;
        if (!::PeekMessageW(&taken, nullptr, 0, 0, PM_REMOVE)) {
            return true;
        }
        if (passMark(taken)) {
            continue;
        }
        if (take(taken, message) == eGM_Quit) {
            return false;
        }
        DispatchToWindow(message);
    }
    return true;
}

bool TakeSameMessage(HWND, unsigned int) noexcept { return false; }

int GetMessageDescriptor() noexcept { return -1; }

void SetPostRefusal(PostRefusal refusal) noexcept { s_refusal = refusal; }

} // namespace platform
