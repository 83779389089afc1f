// What the messages of a window mean to its listener.
#include "CWin32Window.h"

#include "WideText.h"

#include <windowsx.h>

#include <array>
#include <string>
#include <utility>

namespace qel::platform {

namespace {

bool isDown(int key)
{
    return GetKeyState(key) < 0; // as of the message that is being handled
}

unsigned bitOf(MouseButton button)
{
    return 1u << static_cast<unsigned>(button);
}

Modifiers modifiers()
{
    return {isDown(VK_SHIFT), isDown(VK_CONTROL), isDown(VK_MENU)};
}

// The text of a key on the user's layout, empty for none and for a dead key, which is kept for the next one.
std::wstring textOf(WPARAM key, LPARAM lParam)
{
    std::array<BYTE, 256> state{};
    GetKeyboardState(state.data());
    std::array<wchar_t, 8> buffer{};
    const auto scanCode = static_cast<UINT>((lParam >> 16) & 0xFF);
    const int length = ToUnicode(static_cast<UINT>(key), scanCode, state.data(), buffer.data(),
                                 static_cast<int>(buffer.size()), 0);
    return length > 0 ? std::wstring(buffer.data(), static_cast<std::size_t>(length)) : std::wstring();
}

// Surrogates joined, control characters left out.
std::u32string charactersOf(const std::wstring& text)
{
    std::u32string characters;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t unit = text[i];
        const bool isPair =
            IS_HIGH_SURROGATE(text[i]) && i + 1 < text.size() && IS_LOW_SURROGATE(text[i + 1]);
        if (isPair) {
            characters += 0x10000 + ((unit - 0xD800) << 10) + (char32_t{text[++i]} - 0xDC00);
        } else if (unit >= 0x20 && (unit < 0x7F || unit >= 0xA0) && (unit < 0xD800 || unit > 0xDFFF)) {
            characters += unit;
        }
    }
    return characters;
}

} // namespace

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
        handlePointer(wParam, lParam);
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
    event.isLeftDown = isDown(VK_LBUTTON);
    event.isRightDown = isDown(VK_RBUTTON);
    event.isMiddleDown = isDown(VK_MBUTTON);
    event.modifiers = modifiers();
}

void CWin32Window::handlePointer(WPARAM /*wParam*/, LPARAM lParam)
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
    KeyEvent event;
    event.key = static_cast<std::uint32_t>(wParam);
    event.modifiers = modifiers();
    if (event.key >= VK_NUMPAD0 && event.key <= VK_NUMPAD9) {
        event.key += '0' - VK_NUMPAD0;
    } else if (event.key == VK_SHIFT || event.key == VK_CONTROL || event.key == VK_MENU) {
        event.key = 0;
    }
    if (message == WM_KEYUP) {
        listener_.onKeyRelease(event);
        return;
    }
    // AltGr is Ctrl and Alt at once. With one of them alone, and with a key that is none, there is no text.
    const bool isAltGr = event.modifiers.isCtrl && event.modifiers.isAlt;
    std::u32string text;
    if (isAltGr || (!event.modifiers.isCtrl && !event.modifiers.isAlt)) {
        text = charactersOf(textOf(wParam, lParam));
    }
    if (isAltGr && !text.empty()) {
        event.modifiers.isCtrl = false;
        event.modifiers.isAlt = false;
    }
    const bool isDeadKey = (MapVirtualKeyW(static_cast<UINT>(wParam), MAPVK_VK_TO_CHAR) & 0x80000000u) != 0;
    if (isDeadKey && text.empty() && !event.modifiers.isCtrl) {
        return;
    }
    const std::weak_ptr<bool> life = life_;
    for (std::size_t i = 0; i == 0 || i < text.size(); ++i) {
        event.character = i < text.size() ? text[i] : 0;
        listener_.onKeyPress(event);
        if (life.expired()) {
            return;
        }
        event.key = 0;
    }
}

void CWin32Window::handleText(WPARAM unit)
{
    // Halves of pairs come one by one, and no edit takes such characters.
    const std::u32string text = charactersOf(std::wstring(1, static_cast<wchar_t>(unit)));
    if (!text.empty()) {
        KeyEvent event;
        event.character = text[0];
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
