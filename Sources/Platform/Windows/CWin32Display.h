// The display over USER32.
#pragma once

#include "CSystemDisplay.h"
#include "CWin32Clipboard.h"
#include "CWin32FileDialog.h"
#include "CWin32Session.h"

#include <memory>

namespace qel::platform {

// Messages reach the windows by the thread's own loop, so there is little to do here.
class CWin32Display : public CSystemDisplay
{
public:
    CWin32Display() : clipboard_(session_) {}
    ~CWin32Display() override;

    bool isConnected() const override { return true; }
    void processEvents() override;
    void flush() override {}
    bool isFrameUnderWay() const override { return false; }
    bool isWindow(NativeWindow window) const override;
    [[nodiscard]] int createWindow(const WindowDescription& description, CSystemWindowListener& listener,
                                   std::unique_ptr<CSystemWindow>& out) override;
    [[nodiscard]] int createSurface(int width, int height, std::unique_ptr<CSystemSurface>& out,
                                    SurfaceStep& outFailed) override;
    PixelRect workArea(const PixelRect& around) const override;
    CSystemWindow* windowAt(int screenX, int screenY) const override;
    bool queryPointer(PointerState& out) override;
    void movePointer(int screenX, int screenY) override;
    bool isActive() const override;
    CSystemClipboard& clipboard() override { return clipboard_; }
    CSystemFileDialog& fileDialog() override { return fileDialog_; }

private:
    const std::shared_ptr<CWin32Session> session_ = std::make_shared<CWin32Session>();
    CWin32Clipboard clipboard_;
    CWin32FileDialog fileDialog_;
};

} // namespace qel::platform
