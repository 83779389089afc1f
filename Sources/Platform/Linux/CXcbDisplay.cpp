// The display's calls, passed on to the session.
#include "CXcbDisplay.h"

#include "CXcbWindow.h"
#include "XcbHost.h"

#include <utility>

namespace qel::platform {

CXcbDisplay::CXcbDisplay(const std::string& applicationName, std::function<void()> onLost)
    : session_(std::make_shared<CXcbSession>(applicationName, std::move(onLost))),
      fileDialog_(std::make_shared<CLinuxFileDialog>())
{}

CXcbDisplay::~CXcbDisplay()
{
    fileDialog_->cancel();
    session_->close();
}

int CXcbDisplay::open()
{
    return session_->open();
}

bool CXcbDisplay::isConnected() const
{
    return session_->isUsable();
}

// A listener may destroy this object, so nothing of it is touched after the first call.
void CXcbDisplay::processEvents()
{
    const auto session = session_;
    const auto fileDialog = fileDialog_;
    fileDialog->poll();
    session->processEvents();
}

void CXcbDisplay::flush()
{
    session_->flush();
}

bool CXcbDisplay::isFrameUnderWay() const
{
    return session_->isFrameUnderWay();
}

bool CXcbDisplay::isWindow(NativeWindow window) const
{
    return isXcbWindow(session_->connection(), window);
}

int CXcbDisplay::createWindow(const WindowDescription& description, CSystemWindowListener& listener,
                              std::unique_ptr<CSystemWindow>& out)
{
    auto window = std::make_unique<CXcbWindow>(session_, listener);
    const int error = window->create(description);
    if (!error) {
        out = std::move(window);
    }
    return error;
}

int CXcbDisplay::createSurface(int width, int height, std::unique_ptr<CSystemSurface>& out,
                               SurfaceStep& outFailed)
{
    const int error = session_->surfaces().create(width, height, out);
    outFailed = error ? SurfaceStep::kDibSection : SurfaceStep::kNone;
    return error;
}

PixelRect CXcbDisplay::workArea(const PixelRect& around) const
{
    return session_->isUsable() ? session_->screen().workArea(around) : around;
}

CSystemWindow* CXcbDisplay::windowAt(int screenX, int screenY) const
{
    return session_->windowAt(screenX, screenY);
}

bool CXcbDisplay::queryPointer(PointerState& out)
{
    return session_->queryPointer(out);
}

void CXcbDisplay::movePointer(int screenX, int screenY)
{
    if (session_->isUsable()) {
        const CBrokenPipeGuard guard;
        CXcbConnection& connection = session_->connection();
        xcb_warp_pointer(connection.out(), XCB_NONE, connection.root(), 0, 0, 0, 0,
                         static_cast<std::int16_t>(screenX), static_cast<std::int16_t>(screenY));
    }
}

bool CXcbDisplay::isActive() const
{
    return session_->isActive();
}

CSystemClipboard& CXcbDisplay::clipboard()
{
    return session_->clipboard();
}

CSystemFileDialog& CXcbDisplay::fileDialog()
{
    return *fileDialog_;
}

int openSystemDisplay(const std::string& applicationName, std::function<void()> onLost,
                      std::unique_ptr<CSystemDisplay>& out)
{
    auto display = std::make_unique<CXcbDisplay>(applicationName, std::move(onLost));
    const int error = display->open();
    if (!error) {
        out = std::move(display);
    }
    return error;
}

} // namespace qel::platform
