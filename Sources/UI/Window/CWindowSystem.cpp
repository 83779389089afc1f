// What the windows of one interface share.
#include "CWindowSystem.h"

#include "CWindow.h"
#include "CWindowClass.h"

#include <algorithm>
#include <chrono>

namespace qel {

namespace {

double systemTimeSec()
{
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(sinceStart).count();
}

} // namespace

CWindowSystem::CWindowSystem() : clock_(systemTimeSec) {}

CError CWindowSystem::connect(platform::NativeWindow parent, const CString& applicationName)
{
    QEL_TRY(CWindowClass::registerClasses(), {});
    std::unique_ptr<platform::CSystemDisplay> display;
    // What is lost is noticed by isConnected(); the host closes the editor in its own time.
    if (const int code = platform::openSystemDisplay(applicationName.toUtf8(), {}, display); code != 0) {
        QEL_FAIL({}, "@qelstr_CWindow_createWindow_CreateWindow Unable to create window (error %1).", code);
    }
    if (!display->isWindow(parent)) {
        QEL_FAIL({}, "@qelstr_CWindow_createWindow_NoParent Unable to locate parent window.");
    }
    display_ = std::move(display);
    host_ = parent;
    return {};
}

// The editor may be closed from within, with the display.
void CWindowSystem::processEvents()
{
    if (const auto display = display_) {
        display->processEvents();
    }
}

void CWindowSystem::flush()
{
    if (const auto display = display_) {
        display->flush();
    }
}

platform::PixelRect CWindowSystem::getWorkArea(const platform::PixelRect& around) const
{
    return display_ ? display_->workArea(around) : kScreen;
}

bool CWindowSystem::queryPointer(platform::PointerState& out) const
{
    if (display_) {
        return display_->queryPointer(out);
    }
    out = pointer_;
    return true;
}

platform::CSystemClipboard& CWindowSystem::getClipboard()
{
    return display_ ? display_->clipboard() : memoryClipboard_;
}

CWindow* CWindowSystem::findWindowAt(int screenX, int screenY) const
{
    if (display_) {
        const platform::CSystemWindow* const found = display_->windowAt(screenX, screenY);
        const auto window = std::ranges::find_if(
            windows_, [&](const CWindow* each) { return found && each->getSystemWindow() == found; });
        return window == windows_.end() ? nullptr : *window;
    }
    const auto top = std::find_if(windows_.rbegin(), windows_.rend(), [&](const CWindow* each) {
        return each->getScreenPlace().contains(screenX, screenY);
    });
    return top == windows_.rend() ? nullptr : *top;
}

void CWindowSystem::raiseWindow(CWindow& window)
{
    if (const auto found = std::ranges::find(windows_, &window); found != windows_.end()) {
        std::rotate(found, found + 1, windows_.end());
    }
}

CWindow* CWindowSystem::findUnique(const CString& name) const
{
    const auto found =
        std::ranges::find_if(windows_, [&](const CWindow* each) { return each->getUniqueName() == name; });
    return name.isEmpty() || found == windows_.end() ? nullptr : *found;
}

} // namespace qel
