// What all windows of one interface share.
#pragma once

#include "CObject.h"

#include <memory>

namespace qel {

class CWindowSystem;

// Tag `ui:window-shared-data`, found as "ui.window-shared-data" by the views and windows of a tree.
//
//     is-show-hints        true (default) if the hint of the view under the pointer is shown
//     window-status-path   the view that shows it, as its "title"; for windows that name none of their own
class CWindowSharedData : public CObject
{
public:
    static constexpr const char* kPath = "ui.window-shared-data";

    static void buildClassInfo(CClassInfo& info);

    bool isShowHints() const { return isShowHints_; }
    const CString& getWindowStatusPath() const { return windowStatusPath_; }

    // Copies of the frame clock (seconds) and of the size (pixels) of the window that drew last.
    void setFrame(double timeSec, double width, double height);
    double getFrameTimeSec() const { return frameTimeSec_; }
    double getWindowWidth() const { return windowWidth_; }
    double getWindowHeight() const { return windowHeight_; }

    // What the windows themselves share; the first one makes it. Null before that.
    const std::shared_ptr<CWindowSystem>& getWindowSystem() const { return windowSystem_; }
    void setWindowSystem(std::shared_ptr<CWindowSystem> system) { windowSystem_ = std::move(system); }

private:
    std::shared_ptr<CWindowSystem> windowSystem_;
    double frameTimeSec_ = 0.0;
    double windowWidth_ = 0.0;
    double windowHeight_ = 0.0;

    // Bound attributes.
    bool isShowHints_ = true;
    CString windowStatusPath_;
};

} // namespace qel
