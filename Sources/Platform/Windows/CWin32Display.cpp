// Screen, pointer, and the windows of a display.
#include "CWin32Display.h"

#include "CGdiSurface.h"
#include "CWin32Window.h"

#include <algorithm>
#include <utility>

namespace qel::platform {

namespace {

bool isKeyDown(int key)
{
    return GetAsyncKeyState(key) < 0;
}

} // namespace

CWin32Display::~CWin32Display()
{
    session_->isOpen = false;
    for (CWin32Window* window : std::vector(session_->windows)) {
        window->close();
    }
}

void CWin32Display::processEvents()
{
    const auto session = session_; // a listener may destroy this object
    const bool isUserHere = isActive();
    for (CWin32Window* window : std::vector(session->windows)) {
        if (session->isOpen && std::ranges::find(session->windows, window) != session->windows.end()) {
            window->watchHost(isUserHere);
        }
    }
}

bool CWin32Display::isWindow(NativeWindow window) const
{
    return IsWindow(reinterpret_cast<HWND>(window));
}

int CWin32Display::createWindow(const WindowDescription& description, CSystemWindowListener& listener,
                                std::unique_ptr<CSystemWindow>& out)
{
    auto window = std::make_unique<CWin32Window>(session_, listener);
    const int error = window->create(description);
    if (!error) {
        out = std::move(window);
    }
    return error;
}

int CWin32Display::createSurface(int width, int height, std::unique_ptr<CSystemSurface>& out,
                                 SurfaceStep& outFailed)
{
    auto surface = std::make_unique<CGdiSurface>(width, height);
    const int error = surface->create(outFailed);
    if (!error) {
        out = std::move(surface);
    }
    return error;
}

PixelRect CWin32Display::workArea(const PixelRect& around) const
{
    const RECT rect{around.x, around.y, around.x + around.width, around.y + around.height};
    MONITORINFO info{};
    info.cbSize = sizeof(info);
    if (!GetMonitorInfoW(MonitorFromRect(&rect, MONITOR_DEFAULTTONEAREST), &info)) {
        SystemParametersInfoW(SPI_GETWORKAREA, 0, &info.rcWork, 0);
    }
    const RECT& work = info.rcWork;
    return {static_cast<int>(work.left), static_cast<int>(work.top), static_cast<int>(work.right - work.left),
            static_cast<int>(work.bottom - work.top)};
}

CSystemWindow* CWin32Display::windowAt(int screenX, int screenY) const
{
    return session_->find(WindowFromPoint({screenX, screenY}));
}

bool CWin32Display::queryPointer(PointerState& out)
{
    POINT point;
    if (!GetCursorPos(&point)) {
        return false;
    }
    // These keys are the buttons themselves, whatever the user swapped.
    const bool isSwapped = GetSystemMetrics(SM_SWAPBUTTON) != 0;
    out = {static_cast<int>(point.x), static_cast<int>(point.y),
           isKeyDown(isSwapped ? VK_RBUTTON : VK_LBUTTON), isKeyDown(isSwapped ? VK_LBUTTON : VK_RBUTTON),
           isKeyDown(VK_MBUTTON)};
    return true;
}

void CWin32Display::movePointer(int screenX, int screenY)
{
    SetCursorPos(screenX, screenY);
}

bool CWin32Display::isActive() const
{
    const HWND active = GetForegroundWindow();
    return std::ranges::any_of(session_->windows, [active](const CWin32Window* window) {
        return active && window->window() && GetAncestor(window->window(), GA_ROOT) == active;
    });
}

int openSystemDisplay(const std::string& /*applicationName*/, std::function<void()> /*onLost*/,
                      std::unique_ptr<CSystemDisplay>& out)
{
    out = std::make_unique<CWin32Display>();
    return 0;
}

} // namespace qel::platform
