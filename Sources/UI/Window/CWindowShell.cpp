// What the window system has of a window.
#include "CWindowShell.h"

#include "LiteralText.h"

namespace qel {

CError CWindowShell::open(CWindowSystem& system, platform::WindowDescription description,
                          platform::CSystemWindowListener& listener, const CString& context)
{
    platform::CSystemDisplay* const display = system.getDisplay();
    place_ = description.place;
    description.parent = system.getHostWindow();
    if (display && description.kind == platform::WindowKind::kChild) {
        bridge_ = std::make_unique<CBridgeWindow>();
        QEL_TRY(bridge_->create(*display, description.parent, place_.width, place_.height), context);
        description.parent = bridge_->getHandle();
    }
    const int code = display ? display->createWindow(description, listener, window_) : 0;
    if (code != 0) {
        QEL_FAIL(context, "@qelstr_CWindow_createWindow_CreateWindow Unable to create window (error %1).",
                 code);
    }
    surface_.attach(display, window_.get());
    return {};
}

void CWindowShell::close()
{
    surface_.detach();
    window_.reset();
    bridge_.reset();
}

// --- place

void CWindowShell::moveTo(int x, int y)
{
    noteCorner(x, y);
    applyPlace();
}

void CWindowShell::setSize(int width, int height)
{
    noteSize(width, height);
    if (bridge_) {
        bridge_->setSize(width, height);
    }
    applyPlace();
}

void CWindowShell::noteCorner(int x, int y)
{
    place_.x = x;
    place_.y = y;
}

void CWindowShell::noteSize(int width, int height)
{
    place_.width = width;
    place_.height = height;
}

void CWindowShell::applyPlace()
{
    if (window_) {
        window_->setPlace(place_);
    }
}

// --- looks

void CWindowShell::show()
{
    if (window_) {
        window_->show();
    }
}

void CWindowShell::hide()
{
    if (window_) {
        window_->hide();
    }
}

void CWindowShell::raise()
{
    if (window_) {
        window_->raise();
    }
}

void CWindowShell::setCursor(platform::CursorShape cursor)
{
    if (cursor != cursor_ && window_) {
        cursor_ = cursor;
        window_->setCursor(cursor);
    }
}

void CWindowShell::setTitle(const CString& title)
{
    if (window_) {
        window_->setTitle(plainText(title).toUtf8());
    }
}

} // namespace qel
