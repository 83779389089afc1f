// What all windows of one interface share.
#pragma once

#include "CObject.h"

namespace qel {

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

private:
    double frameTimeSec_ = 0.0;
    double windowWidth_ = 0.0;
    double windowHeight_ = 0.0;

    // Bound attributes.
    bool isShowHints_ = true;
    CString windowStatusPath_;
};

} // namespace qel
