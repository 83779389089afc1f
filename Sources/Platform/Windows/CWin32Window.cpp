// One window of ours over USER32.
#include "CWin32Window.h"

#include "CGdiSurface.h"
#include "WideText.h"
#include "Win32Keys.h"
#include "WindowClassNames.h"

#include <windowsx.h>

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

unsigned bitOf(MouseButton button)
{
    return 1u << static_cast<unsigned>(button);
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

// --- messages

LRESULT CALLBACK CWin32Window::procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto* self = reinterpret_cast<CWin32Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (!self || self->window_ != window) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    return self->handle(message, wParam, lParam);
}

LRESULT CWin32Window::handle(UINT message, WPARAM wParam, LPARAM lParam)
{
    const HWND window = window_;
    switch (message) {
    case WM_PAINT:
        handlePaint();
        return 0;
    case WM_ERASEBKGND:
        return 1;
    case WM_SIZE:
        handleSize(LOWORD(lParam), HIWORD(lParam));
        return 0;
    case WM_MOVE:
        handleMove();
        return 0;
    case WM_MOUSEMOVE:
        handlePointer(lParam);
        return 0;
    case WM_MOUSELEAVE:
        isTrackingLeave_ = false;
        if (!heldButtons_) { // else told after the release
            listener_.onPointerLeave();
        }
        return 0;
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        handleButton(MouseButton::kLeft, true, message == WM_LBUTTONDBLCLK, lParam);
        return 0;
    case WM_RBUTTONDOWN:
    case WM_RBUTTONDBLCLK:
        handleButton(MouseButton::kRight, true, message == WM_RBUTTONDBLCLK, lParam);
        return 0;
    case WM_MBUTTONDOWN:
    case WM_MBUTTONDBLCLK:
        handleButton(MouseButton::kMiddle, true, message == WM_MBUTTONDBLCLK, lParam);
        return 0;
    case WM_LBUTTONUP:
        handleButton(MouseButton::kLeft, false, false, lParam);
        return 0;
    case WM_RBUTTONUP:
        handleButton(MouseButton::kRight, false, false, lParam);
        return 0;
    case WM_MBUTTONUP:
        handleButton(MouseButton::kMiddle, false, false, lParam);
        return 0;
    case WM_CAPTURECHANGED:
        if (reinterpret_cast<HWND>(lParam) != window && std::exchange(heldButtons_, 0)) {
            listener_.onCaptureLost();
        }
        return 0;
    case WM_MOUSEWHEEL:
        handleWheel(wParam, lParam);
        return 0;
    case WM_MOUSEACTIVATE:
        if (isTopLevel()) {
            return MA_NOACTIVATE; // the host keeps the keyboard
        }
        break;
    case WM_SETCURSOR:
        if (LOWORD(lParam) == HTCLIENT) {
            SetCursor(cursor_);
            return TRUE;
        }
        break;
    case WM_GETDLGCODE:
        return isFocusTaken_ ? DLGC_WANTALLKEYS : 0;
    case WM_KEYDOWN:
    case WM_KEYUP:
        if (isFocusTaken_) { // from a loop that the hook does not see
            handleKey(message, wParam, lParam);
            return 0;
        }
        break;
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
        handleFocus(message == WM_SETFOCUS);
        return 0;
    case WM_CLOSE:
        listener_.onCloseRequest();
        return 0;
    case WM_NCDESTROY:
        handleDestroyed();
        break;
    default:
        break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

void CWin32Window::handlePaint()
{
    const HWND window = window_;
    const std::weak_ptr<bool> life = life_;
    PAINTSTRUCT paint{};
    paintContext_ = BeginPaint(window, &paint);
    const RECT& rect = paint.rcPaint;
    if (paintContext_ && rect.right > rect.left && rect.bottom > rect.top) {
        listener_.onPaint({static_cast<int>(rect.left), static_cast<int>(rect.top),
                           static_cast<int>(rect.right - rect.left),
                           static_cast<int>(rect.bottom - rect.top)});
    }
    GdiFlush(); // the pixels are ours again
    if (IsWindow(window)) {
        EndPaint(window, &paint);
    }
    if (!life.expired()) {
        paintContext_ = nullptr;
    }
}

void CWin32Window::handleSize(int width, int height)
{
    if (width > 0 && height > 0 && (width != width_ || height != height_)) {
        width_ = width;
        height_ = height;
        listener_.onResize(width, height);
    }
}

void CWin32Window::handleMove()
{
    const PixelRect place = screenPlace();
    if (place.x != screenOrigin_.x || place.y != screenOrigin_.y) {
        screenOrigin_ = {place.x, place.y};
        listener_.onMove(place.x, place.y);
    }
}

void CWin32Window::fillPointer(POINT point, PointerEvent& event) const
{
    event.x = point.x;
    event.y = point.y;
    POINT screen = point;
    ClientToScreen(window_, &screen);
    event.screenX = screen.x;
    event.screenY = screen.y;
    event.isLeftDown = isWin32KeyDown(VK_LBUTTON);
    event.isRightDown = isWin32KeyDown(VK_RBUTTON);
    event.isMiddleDown = isWin32KeyDown(VK_MBUTTON);
    event.modifiers = win32Modifiers();
}

void CWin32Window::handlePointer(LPARAM lParam)
{
    if (!isTrackingLeave_) {
        TRACKMOUSEEVENT track{sizeof(track), TME_LEAVE, window_, 0};
        isTrackingLeave_ = TrackMouseEvent(&track);
    }
    PointerEvent event;
    fillPointer({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)}, event);
    listener_.onPointerMove(event);
}

void CWin32Window::handleButton(MouseButton button, bool isPress, bool isDouble, LPARAM lParam)
{
    ButtonEvent event;
    event.button = button;
    event.isDoubleClick = isDouble;
    fillPointer({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)}, event);
    if (isPress) {
        if (!heldButtons_) {
            SetCapture(window_);
        }
        heldButtons_ |= bitOf(button);
        listener_.onButtonPress(event);
        return;
    }
    if (!(heldButtons_ & bitOf(button))) {
        return;
    }
    heldButtons_ &= ~bitOf(button);
    if (!heldButtons_ && GetCapture() == window_) {
        ReleaseCapture();
    }
    const std::weak_ptr<bool> life = life_;
    listener_.onButtonRelease(event);
    const bool isOutside = !PixelRect{0, 0, width_, height_}.contains(event.x, event.y);
    if (!life.expired() && window_ && !heldButtons_ && isOutside) {
        isTrackingLeave_ = false;
        listener_.onPointerLeave();
    }
}

void CWin32Window::handleWheel(WPARAM wParam, LPARAM lParam)
{
    wheelRest_ += GET_WHEEL_DELTA_WPARAM(wParam);
    const int notches = wheelRest_ / WHEEL_DELTA;
    if (notches == 0) {
        return;
    }
    wheelRest_ -= notches * WHEEL_DELTA;
    POINT point{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)}; // of the screen
    ScreenToClient(window_, &point);
    WheelEvent event;
    fillPointer(point, event);
    event.delta = notches;
    listener_.onWheel(event);
}

void CWin32Window::handleKey(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_KEYUP) {
        listener_.onKeyRelease(win32KeyRelease(wParam));
        return;
    }
    const std::weak_ptr<bool> life = life_;
    for (const KeyEvent& event : win32KeyPresses(wParam, lParam)) {
        listener_.onKeyPress(event);
        if (life.expired()) {
            return;
        }
    }
}

void CWin32Window::handleText(WPARAM unit)
{
    KeyEvent event;
    event.character = win32Character(unit);
    if (event.character) {
        listener_.onKeyPress(event);
    }
}

void CWin32Window::handleFocus(bool isFocused)
{
    if (!isFocused && isFocusTaken_) { // whoever has it now is to keep it
        isFocusTaken_ = false;
        previousFocus_ = nullptr;
        keyHook_.remove();
    }
    listener_.onFocus(isFocused);
}

void CWin32Window::handleDestroyed()
{
    SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
    window_ = nullptr;
    heldButtons_ = 0;
    isFocusTaken_ = false;
    keyHook_.remove();
    listener_.onDestroyed();
}

} // namespace qel::platform
