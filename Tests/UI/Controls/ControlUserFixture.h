// Controls in front of a running instance, and a user without a screen.
#pragma once

#include "CAudioExtParam.h"
#include "COffscreenUser.h"
#include "CUIParam.h"
#include "InstanceFixture.h"

#include <optional>

namespace qel::test {

inline constexpr const char* kUi = R"(
  <ui:ui-event-bridge name="event-bridge"/>
  <core:global-settings name="global-settings" drag-precision="0.7" mouse-wheel-precision="0.5"
                        shift-key-precision="0.5"/>
  <ui:param-group-selector name="group"/>
  <ui:param-bridge name="gain" interface-client="ui.client" param="plugin.modMain.modDrumfell.lf-gain"/>
  <ui:param-bridge name="sub" interface-client="ui.client" param="plugin.modMain.modDrumfell.sub-gain"/>
  <ui:param-bridge name="dry" interface-client="ui.client" param="plugin.modMain.modDrumfell.drymix"/>
  <ui:param-bridge name="freq" interface-client="ui.client" param="plugin.modMain.modDrumfell.sat-lpf"/>
  <ui:param-bridge name="name" interface-client="ui.client" param="plugin.modMain.instance-name"/>
  <ui:param-bridge name="type" interface-client="ui.client" param="plugin.modMain.modDrumfell.xover-type"/>
)";

// The tree's main window is "win", with what a test puts in its XML; it is open.
class ControlUserFixture : public InstanceFixture
{
protected:
    explicit ControlUserFixture(const std::string& xml) : tree_(std::in_place, *host_, xml, kUi)
    {
        user_.emplace(window());
        EXPECT_OK(window().open());
        wait(0.1);
        host_->calls.clear();
    }

    CWindow& window() { return tree_->at<CWindow>("win.window-renderer"); }
    void wait(double sec = 0.05) { user_->advance(sec); }
    template <class T>
    T& at(const std::string& path)
    {
        return tree_->at<T>(("win." + path).c_str());
    }
    CUIParam& param(const std::string& control) { return at<CUIParam>(control + ".ui-param"); }

    // A point from the corner of a view.
    void pointAt(const std::string& path, double x, double y)
    {
        const CRect& area = at<CView>(path).getArea();
        user_->moveTo(window(), area.x + x, area.y + y);
    }
    void dragUp(double px)
    {
        user_->press();
        for (int i = 0; i < 4; ++i) {
            user_->moveBy(0.0, -px / 4.0);
            wait();
        }
        user_->release();
        wait();
    }
    void hold(bool isCtrl, bool isShift) { user_->setModifiers({.isShift = isShift, .isCtrl = isCtrl}); }

    std::size_t steps() { return tree_->client().getHistory().steps.size(); }
    void undo()
    {
        EXPECT_OK(tree_->client().send(record::CMoveHistory{tree_->client().getHistory().position - 1}));
        wait();
    }
    void setting(const char* name, const char* value) { tree_->set("ui.global-settings", name, value); }

    std::optional<EditorTree> tree_;
    std::optional<COffscreenUser> user_;
};

} // namespace qel::test
