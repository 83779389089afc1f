// A window nobody sees, for the messages it gets.
#pragma once

#include "WindowsApi.h"

#include <functional>
#include <memory>
#include <string>

namespace qel::platform {

// Names of the registered classes; empty before registerWindowClasses().
const std::wstring& timerClassName();
const std::wstring& bridgeClassName();

// Owns a hidden window and calls a handler for one kind of message. Made, called and destroyed on one thread;
// the handler may destroy the window. Registered classes use procedure().
class CHiddenWindow
{
public:
    CHiddenWindow(UINT message, std::function<void()> handler);
    CHiddenWindow(const CHiddenWindow&) = delete;
    CHiddenWindow& operator=(const CHiddenWindow&) = delete;
    ~CHiddenWindow();

    // `parent` is HWND_MESSAGE for a window that takes no part in broadcasts.
    [[nodiscard]] int create(const std::wstring& className, DWORD extendedStyle, HWND parent);
    HWND handle() const { return handle_; }

    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

private:
    const UINT message_;
    const std::shared_ptr<const std::function<void()>> handler_; // kept by a running call too
    HWND handle_ = nullptr;
};

} // namespace qel::platform
