// What the main window lies in, in a host's window.
#include "CBridgeWindow.h"

namespace qel {

CError CBridgeWindow::create(platform::CSystemDisplay& display, platform::NativeWindow parent, int width,
                             int height)
{
    platform::WindowDescription description;
    description.kind = platform::WindowKind::kBridge;
    description.parent = parent;
    description.place = {0, 0, width, height};
    if (const int code = display.createWindow(description, *this, window_); code != 0) {
        QEL_FAIL({}, "@qelstr_CWindow_createWindow_CreateWindow Unable to create window (error %1).", code);
    }
    return {};
}

void CBridgeWindow::setSize(int width, int height)
{
    if (window_) {
        window_->setPlace({0, 0, width, height});
    }
}

} // namespace qel
