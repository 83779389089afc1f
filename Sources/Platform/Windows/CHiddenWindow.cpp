// Life of a hidden window and the way from its messages to the handler.
#include "CHiddenWindow.h"

#include <utility>

namespace qel::platform {

CHiddenWindow::CHiddenWindow(UINT message, std::function<void()> handler)
    : message_(message), handler_(std::make_shared<const std::function<void()>>(std::move(handler)))
{}

CHiddenWindow::~CHiddenWindow()
{
    if (handle_) {
        SetWindowLongPtrW(handle_, GWLP_USERDATA, 0);
        DestroyWindow(handle_);
    }
}

int CHiddenWindow::create(const std::wstring& className, DWORD extendedStyle, HWND parent)
{
    handle_ = CreateWindowExW(extendedStyle, className.c_str(), L"", WS_POPUP, 0, 0, 0, 0, parent, nullptr,
                              moduleHandle(), nullptr);
    if (!handle_) {
        return lastError();
    }
    SetWindowLongPtrW(handle_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    return 0;
}

LRESULT CALLBACK CHiddenWindow::procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    const auto* self = reinterpret_cast<const CHiddenWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (!self || message != self->message_) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    const auto handler = self->handler_;
    (*handler)();
    return 0;
}

} // namespace qel::platform
