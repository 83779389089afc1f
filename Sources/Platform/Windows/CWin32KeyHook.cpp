// The hook on the thread's messages.
#include "CWin32KeyHook.h"

#include "CWin32Window.h"

namespace qel::platform {

namespace {

thread_local CWin32Window* hookedWindow = nullptr;

} // namespace

void CWin32KeyHook::install(CWin32Window& window)
{
    window_ = &window;
    hookedWindow = window_;
    if (!hook_) {
        hook_ = SetWindowsHookExW(WH_GETMESSAGE, &procedure, moduleHandle(), GetCurrentThreadId());
    }
}

void CWin32KeyHook::remove()
{
    if (hook_) {
        UnhookWindowsHookEx(hook_);
        hook_ = nullptr;
    }
    if (window_ && hookedWindow == window_) {
        hookedWindow = nullptr;
    }
    window_ = nullptr;
}

LRESULT CALLBACK CWin32KeyHook::procedure(int code, WPARAM wParam, LPARAM lParam)
{
    auto* message = reinterpret_cast<MSG*>(lParam);
    CWin32Window* const window = hookedWindow;
    const bool isKey =
        code >= 0 && wParam == PM_REMOVE && (message->message == WM_KEYDOWN || message->message == WM_KEYUP);
    if (isKey && window && message->hwnd == window->window()) {
        const MSG key = *message;
        message->message = WM_NULL;
        window->handleKey(key.message, key.wParam, key.lParam);
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

} // namespace qel::platform
