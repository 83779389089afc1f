// Making a window, and what it is told to do.
#include "CWin32Window.h"

#include "CGdiSurface.h"
#include "WideText.h"
#include "WindowClassNames.h"

#include <algorithm>
#include <utility>

namespace qel::platform {

namespace {

struct WindowStyle
{
    const wchar_t* className;
    DWORD style;
    DWORD extendedStyle;
};

WindowStyle styleOf(const WindowDescription& description)
{
    switch (description.kind) {
    case WindowKind::kBridge:
        return {kBridgeClassName, WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, WS_EX_NOPARENTNOTIFY};
    case WindowKind::kPopup:
        return {kInterfaceClassName, WS_POPUP, WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE};
    case WindowKind::kDialog:
        return {kInterfaceClassName, WS_POPUP,
                static_cast<DWORD>(description.isOnTaskbar ? WS_EX_APPWINDOW : WS_EX_TOOLWINDOW)};
    case WindowKind::kChild:
        break;
    }
    return {kInterfaceClassName, WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS, WS_EX_NOPARENTNOTIFY};
}

// By CursorShape; the last has none.
const wchar_t* const kCursorNames[] = {IDC_ARROW,  IDC_IBEAM,    IDC_HAND, IDC_SIZEWE,
                                       IDC_SIZENS, IDC_SIZENWSE, nullptr};

HCURSOR cursorOf(CursorShape shape)
{
    const wchar_t* name = kCursorNames[static_cast<int>(shape)];
    return name ? LoadCursorW(nullptr, name) : nullptr;
}

} // namespace

CWin32Window* CWin32Session::find(HWND handle) const
{
    const auto at = std::ranges::find(windows, handle, &CWin32Window::window);
    return handle && at != windows.end() ? *at : nullptr;
}

CWin32Window::CWin32Window(std::shared_ptr<CWin32Session> session, CSystemWindowListener& listener)
    : session_(std::move(session)), listener_(listener), cursor_(cursorOf(CursorShape::kArrow))
{}

CWin32Window::~CWin32Window()
{
    std::erase(session_->windows, this);
    close();
}

int CWin32Window::create(const WindowDescription& description)
{
    if (!session_->isOpen) {
        return ERROR_INVALID_HANDLE;
    }
    kind_ = description.kind;
    auto parent = reinterpret_cast<HWND>(description.parent);
    if ((parent || !isTopLevel()) && !IsWindow(parent)) {
        return ERROR_INVALID_WINDOW_HANDLE;
    }
    if (parent && isTopLevel()) {
        parent = GetAncestor(parent, GA_ROOT);
    }
    const WindowStyle style = styleOf(description);
    const PixelRect& place = description.place;
    width_ = std::max(1, place.width);
    height_ = std::max(1, place.height);
    const HWND made = CreateWindowExW(style.extendedStyle, style.className,
                                      wideText(description.title).c_str(), style.style, place.x, place.y,
                                      width_, height_, parent, nullptr, moduleHandle(), nullptr);
    if (!made) {
        return lastError();
    }
    window_ = made;
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    session_->windows.push_back(this);
    const PixelRect screen = screenPlace();
    screenOrigin_ = {screen.x, screen.y};
    return 0;
}

void CWin32Window::close()
{
    if (window_) {
        SetWindowLongPtrW(window_, GWLP_USERDATA, 0); // before messages that the following sends
        giveFocusBack();
        DestroyWindow(std::exchange(window_, nullptr));
    }
}

void CWin32Window::show()
{
    if (window_) {
        SetWindowPos(window_, isTopLevel() ? HWND_TOP : nullptr, 0, 0, 0, 0,
                     SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_SHOWWINDOW);
    }
}

void CWin32Window::hide()
{
    giveFocusBack();
    if (window_) {
        ShowWindow(window_, SW_HIDE);
    }
}

void CWin32Window::raise()
{
    if (window_) {
        SetWindowPos(window_, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    }
}

void CWin32Window::setTitle(const std::string& title)
{
    if (window_) {
        SetWindowTextW(window_, wideText(title).c_str());
    }
}

void CWin32Window::setCursor(CursorShape shape)
{
    cursor_ = cursorOf(shape);
    POINT pointer;
    if (window_ && GetCursorPos(&pointer) && WindowFromPoint(pointer) == window_) {
        SetCursor(cursor_);
    }
}

void CWin32Window::setPlace(const PixelRect& place)
{
    if (window_) {
        width_ = std::max(1, place.width);
        height_ = std::max(1, place.height);
        SetWindowPos(window_, nullptr, place.x, place.y, width_, height_, SWP_NOZORDER | SWP_NOACTIVATE);
    }
}

bool CWin32Window::setParent(NativeWindow parent)
{
    const auto other = reinterpret_cast<HWND>(parent);
    return window_ && !isTopLevel() && IsWindow(other) && SetParent(window_, other);
}

PixelRect CWin32Window::screenPlace() const
{
    POINT origin{};
    if (!window_ || !ClientToScreen(window_, &origin)) {
        return {screenOrigin_.x, screenOrigin_.y, width_, height_};
    }
    return {origin.x, origin.y, width_, height_};
}

void CWin32Window::invalidate(const PixelRect& area)
{
    if (window_ && !area.isEmpty()) {
        const RECT rect{area.x, area.y, area.x + area.width, area.y + area.height};
        InvalidateRect(window_, &rect, FALSE);
    }
}

void CWin32Window::present(const CSystemSurface& surface, const PixelRect& source, int x, int y)
{
    if (!paintContext_) {
        return;
    }
    const PixelRect part = intersect(source, {0, 0, surface.width(), surface.height()});
    BitBlt(paintContext_, x + part.x - source.x, y + part.y - source.y, part.width, part.height,
           static_cast<const CGdiSurface&>(surface).context(), part.x, part.y, SRCCOPY);
}

void CWin32Window::takeFocus()
{
    if (!window_ || isFocusTaken_) {
        return;
    }
    const std::weak_ptr<bool> life = life_;
    isFocusTaken_ = true;
    keyHook_.install(*this);
    const HWND previous = SetFocus(window_); // sends messages at once
    if (!life.expired()) {
        previousFocus_ = previous;
    }
}

void CWin32Window::giveFocusBack()
{
    if (!std::exchange(isFocusTaken_, false)) {
        return;
    }
    keyHook_.remove();
    const HWND previous = std::exchange(previousFocus_, nullptr);
    if (window_ && GetFocus() == window_) {
        SetFocus(previous && IsWindow(previous) ? previous : GetAncestor(window_, GA_PARENT));
    }
}

void CWin32Window::watchHost(bool isActive)
{
    if (!window_ || kind_ != WindowKind::kChild) {
        return;
    }
    const std::weak_ptr<bool> life = life_;
    if (std::exchange(isHostActive_, isActive) != isActive) {
        listener_.onActivation(isActive);
    }
    if (!life.expired() && window_) {
        const bool isShown = IsWindowVisible(window_) != FALSE;
        if (std::exchange(isHostShown_, isShown) != isShown) {
            listener_.onHostShown(isShown);
        }
    }
    if (!life.expired() && window_) {
        handleMove();
    }
}

} // namespace qel::platform
