// A user without a screen.
#include "COffscreenUser.h"

#include "CEventLoop.h"
#include "CUIEventBridge.h"
#include "CViewContext.h"

#include <algorithm>
#include <cmath>

namespace qel {

COffscreenUser::COffscreenUser(CWindow& mainWindow)
    : root_(*mainWindow.getRoot()), system_(mainWindow.getSharedSystem()),
      // Fades of the tree may have begun at the time that another user's window left behind.
      timeSec_(std::make_shared<double>(std::max(system_->getTimeSec(), CViewContext::getTimeSec())))
{
    const auto clock = [time = timeSec_] { return *time; };
    system_->setClock(clock);
    if (auto* const bridge = dynamic_cast<CUIEventBridge*>(root_.findObject(CUIEventBridge::kPath))) {
        bridge->getEventLoop()->setClock(clock);
    }
    system_->setPointer(pointer_);
}

// --- time

void COffscreenUser::advance(double sec)
{
    // Counted from the start, so that sums of steps do not drift.
    const double startSec = *timeSec_;
    const int steps = std::max(1, static_cast<int>(std::lround(sec / kStepSec)));
    for (int i = 1; i <= steps; ++i) {
        *timeSec_ = startSec + sec * i / steps;
        if (auto* const bridge = dynamic_cast<CUIEventBridge*>(root_.findObject(CUIEventBridge::kPath))) {
            bridge->drain();
        }
    }
}

// --- the pointer

template <class Event>
Event COffscreenUser::makeEvent() const
{
    Event event;
    const platform::PixelRect place = window_->getScreenPlace();
    event.x = pointer_.screenX - place.x;
    event.y = pointer_.screenY - place.y;
    event.screenX = pointer_.screenX;
    event.screenY = pointer_.screenY;
    event.isLeftDown = pointer_.isLeftDown;
    event.isRightDown = pointer_.isRightDown;
    event.isMiddleDown = pointer_.isMiddleDown;
    event.modifiers = modifiers_;
    return event;
}

CWindow* COffscreenUser::enterWindow()
{
    // The last one may be gone.
    const auto& windows = system_->getWindows();
    if (std::ranges::find(windows, window_) == windows.end()) {
        window_ = nullptr;
    }
    CWindow* const found = system_->findWindowAt(pointer_.screenX, pointer_.screenY);
    if (found != window_ && !(window_ && isButtonDown())) {
        if (window_) {
            window_->onPointerLeave();
        }
        window_ = found;
    }
    return window_;
}

void COffscreenUser::moveTo(CWindow& window, double x, double y)
{
    const platform::PixelRect place = window.getScreenPlace();
    pointer_.screenX = place.x + static_cast<int>(std::floor(x));
    pointer_.screenY = place.y + static_cast<int>(std::floor(y));
    moveBy(0.0, 0.0);
}

void COffscreenUser::moveTo(CView& view)
{
    const CRect shown = view.getVisibleArea();
    if (auto* const window = dynamic_cast<CWindow*>(view.getWindow())) {
        moveTo(*window, shown.x + shown.width / 2.0, shown.y + shown.height / 2.0);
    }
}

void COffscreenUser::moveBy(double x, double y)
{
    pointer_.screenX += static_cast<int>(x);
    pointer_.screenY += static_cast<int>(y);
    system_->setPointer(pointer_);
    if (CWindow* const window = enterWindow()) {
        window->onPointerMove(makeEvent<platform::PointerEvent>());
    }
}

void COffscreenUser::leave()
{
    pointer_.screenX = pointer_.screenY = -1;
    moveBy(0.0, 0.0);
}

void COffscreenUser::hold(platform::MouseButton button, bool isDown)
{
    (button == platform::MouseButton::kLeft ? pointer_.isLeftDown : pointer_.isRightDown) = isDown;
    system_->setPointer(pointer_);
}

void COffscreenUser::press(platform::MouseButton button, bool isDouble)
{
    CWindow* const window = enterWindow();
    hold(button, true);
    if (window) {
        auto event = makeEvent<platform::ButtonEvent>();
        event.button = button;
        event.isDoubleClick = isDouble;
        window->onButtonPress(event);
    }
}

void COffscreenUser::release(platform::MouseButton button)
{
    CWindow* const window = enterWindow();
    hold(button, false);
    if (window) {
        auto event = makeEvent<platform::ButtonEvent>();
        event.button = button;
        window->onButtonRelease(event);
    }
    enterWindow();
}

void COffscreenUser::click(CView& view, platform::MouseButton button)
{
    moveTo(view);
    press(button);
    release(button);
}

void COffscreenUser::doubleClick(CView& view)
{
    click(view);
    press(platform::MouseButton::kLeft, true);
    release();
}

void COffscreenUser::wheel(double notches)
{
    if (CWindow* const window = enterWindow()) {
        auto event = makeEvent<platform::WheelEvent>();
        event.delta = notches;
        window->onWheel(event);
    }
}

// --- keys

CWindow* COffscreenUser::focusedWindow() const
{
    const auto& windows = system_->getWindows();
    const auto found = std::ranges::find_if(windows, [](CWindow* each) { return each->getKeyFocus(); });
    return found == windows.end() ? nullptr : *found;
}

void COffscreenUser::sendKey(const platform::KeyEvent& event)
{
    if (CWindow* const window = focusedWindow()) {
        window->onKeyPress(event);
    }
    // The press may have moved the focus, or closed the window.
    if (CWindow* const window = focusedWindow()) {
        platform::KeyEvent released = event;
        released.character = 0;
        window->onKeyRelease(released);
    }
}

void COffscreenUser::key(std::uint32_t key)
{
    sendKey({key, 0, modifiers_});
}

void COffscreenUser::type(const std::u32string& text)
{
    for (const char32_t character : text) {
        sendKey({0, character, modifiers_});
    }
}

// --- what is shown

std::uint32_t COffscreenUser::getPixel(CWindow& window, int x, int y)
{
    return getPicture(window).getRow(y)[x] & 0xFFFFFFU;
}

std::uint32_t COffscreenUser::getPixel(CView& view)
{
    const CRect shown = view.getVisibleArea();
    auto* const window = dynamic_cast<CWindow*>(view.getWindow());
    return window ? getPixel(*window, static_cast<int>(shown.x + shown.width / 2.0),
                             static_cast<int>(shown.y + shown.height / 2.0))
                  : 0;
}

} // namespace qel
