// The display over a connection to the X server.
#pragma once

#include "CLinuxFileDialog.h"
#include "CSystemDisplay.h"
#include "CXcbSession.h"

#include <functional>
#include <memory>
#include <string>

namespace qel::platform {

class CXcbDisplay : public CSystemDisplay
{
public:
    CXcbDisplay(const std::string& applicationName, std::function<void()> onLost);
    ~CXcbDisplay() override;

    [[nodiscard]] int open();

    bool isConnected() const override;
    void processEvents() override;
    void flush() override;
    bool isFrameUnderWay() const override;
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
    CSystemClipboard& clipboard() override;
    CSystemFileDialog& fileDialog() override;

private:
    const std::shared_ptr<CXcbSession> session_;
    const std::shared_ptr<CLinuxFileDialog> fileDialog_; // kept by a running poll too
};

} // namespace qel::platform
