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
    if (code >= 0 && wParam == PM_REMOVE && window && message->hwnd == window->window()) {
        take(*message, *window);
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

void CWin32KeyHook::take(MSG& message, CWin32Window& window)
{
    const MSG key = message;
    const bool isKey = key.message == WM_KEYDOWN || key.message == WM_KEYUP;
    if (!isKey && key.message != WM_CHAR) {
        return;
    }
    message.message = WM_NULL;
    if (key.message == WM_CHAR) {
        window.handleText(key.wParam);
    } else if (key.wParam == VK_PACKET || key.wParam == VK_PROCESSKEY) {
        TranslateMessage(&key); // their text comes as WM_CHAR
    } else {
        window.handleKey(key.message, key.wParam, key.lParam);
    }
}

} // namespace qel::platform
