// Points and sliders that the user drags.
#include "CControlSurface.h"
#include "CControlSurfaceGroup.h"
#include "CFilterResponse.h"
#include "CSharedAttribute.h"
#include "CUIParam.h"
#include "InstanceFixture.h"

namespace qel {
namespace {

constexpr const char* kFreq = "modDrumfell.dcfilter-params.freq";
constexpr const char* kType = "modDrumfell.dcfilter-params.type";

// A plane of 200 x 130 for the filter of the output, and a slider of 114 x 20 for a setting.
class ControlSurface : public test::InstanceFixture
{
protected:
    ControlSurface() : tree_(*host_, kTree)
    {
        tree_.settle();
        EXPECT_OK(window().announceContentReady());
        solve();
    }
    static constexpr const char* kTree = R"(
      <ui:param-bridge name="freq" interface-client="ui.client" param="plugin.modMain.modDrumfell.dcfilter-params.freq"/>
      <ui:param-bridge name="type" interface-client="ui.client" param="plugin.modMain.modDrumfell.dcfilter-params.type"/>
      <core:object name="settings" level="0.5">
        <core:shared-attribute name="level" attribute="level" def-value="0.25"/></core:object>
      <ui:view name="w" is-root-view="true" palette-name="Default" width="256" height="256">
        <ui:control-surface name="plane" placement="overlay" width="200" height="130"
          filters="shared::audio.fltarray.dcfilters" brush-set="shared::bs.brushes">
          <ui:ui-param name="ui-param-freq" bridge="freq"/><ui:ui-param name="ui-param-type" bridge="type"/>
          <ui:control-surface-group name="points" placement="overlay" width="full" height="full"
            max-y="10" image-set="shared::is.csurface">
            <ui:ui-param name="ui-param-x" bridge="freq"/><ui:ui-param name="ui-param-y" bridge="type"/>
          </ui:control-surface-group></ui:control-surface>
        <ui:control-surface-group name="slider" placement="overlay" outer-border="T200" width="114" height="20"
          image-set="shared::is.csurface">
          <ui:ui-param name="ui-param-x" shared-attribute="settings.level"/></ui:control-surface-group>
      </ui:view>)";

    CView& window() { return tree_.at<CView>("w"); }
    CView& points() { return tree_.at<CView>("w.plane.points"); }
    CView& slider() { return tree_.at<CView>("w.slider"); }
    void solve() { ASSERT_OK(window().solveLayout()); }
    CAttrMap pointer(double x, double y, const char* flag = nullptr)
    {
        CAttrMap parameters;
        parameters["x"] = CAttrValue(x);
        parameters["y"] = CAttrValue(y);
        if (flag) {
            parameters[flag] = CAttrValue(true);
        }
        return parameters;
    }
    double norm(const char* param) { return tree_.at<CUIParam>(param).getNorm(0); }
    double x() { return 200.0 * norm("w.plane.points.ui-param-x"); }
    double y() { return 130.0 * (1.0 - norm("w.plane.points.ui-param-y")); }
    double level() { return tree_.at<CObject>("settings").getAttrReal("level"); }

    test::EditorTree tree_;
};

TEST_F(ControlSurface, ADragMovesAPointOverBothParametersAsOneStep)
{
    const double startX = x();
    const double startY = y();
    EXPECT_OK(points().onMousePress(pointer(startX + 40.0, startY)));
    EXPECT_OK(points().onMouseMove(pointer(startX + 80.0, startY)));
    tree_.settle();
    EXPECT_EQ(x(), startX) << "beside the point";
    EXPECT_OK(points().onMouseRelease({}));

    EXPECT_OK(points().onMousePress(pointer(startX + 3.0, startY)));
    for (int i = 1; i <= 10; ++i) {
        EXPECT_OK(points().onMouseMove(pointer(startX + 3.0 + 5.0 * i, startY - 3.0 * i)));
        tree_.settle();
    }
    EXPECT_NEAR(x(), startX + 50.0, 0.5);
    EXPECT_EQ(host_->get(kType), 2.0) << "30 of 130 pixels, of the first 11 types";
    EXPECT_OK(points().onMouseMove(pointer(startX + 13.0, startY - 30.0, "is-shift")));
    tree_.settle();
    EXPECT_NEAR(x(), startX + 46.0, 0.5) << "slowly";
    EXPECT_OK(points().onMouseRelease({}));
    EXPECT_OK(points().onMouseMove(pointer(0.0, 0.0)));
    tree_.settle();
    EXPECT_NEAR(x(), startX + 46.0, 0.5) << "let go";
    EXPECT_EQ(tree_.client().getHistory().steps.size(), 2U) << "the beginning and one step";

    host_->set(kFreq, 80.0);
    tree_.settle();
    EXPECT_GT(x(), 150.0) << "follows automation";
    EXPECT_OK(points().onMousePress(pointer(x(), y(), "is-ctrl")));
    tree_.settle();
    EXPECT_NEAR(host_->get(kFreq), 3.0, 1e-9);
    EXPECT_EQ(host_->get(kType), 0.0);
}

TEST_F(ControlSurface, ASliderGoesWhereItIsPressedAndFollowsTheWheel)
{
    EXPECT_OK(slider().onMousePress(pointer(107.0, 210.0)));
    EXPECT_NEAR(level(), 1.0, 1e-9) << "the middle of the handle at the end of its way";
    EXPECT_OK(slider().onMouseMove(pointer(57.0, 210.0)));
    EXPECT_NEAR(level(), 0.5, 1e-9);
    EXPECT_OK(slider().onMouseMove(pointer(-500.0, 210.0)));
    EXPECT_EQ(level(), 0.0);
    EXPECT_OK(slider().onMouseCancel({}));
    CAttrMap wheel;
    wheel["delta"] = CAttrValue(2.0);
    EXPECT_OK(slider().receiveEvent("mouse-wheel", wheel));
    EXPECT_NEAR(level(), 0.04, 1e-9);
    EXPECT_OK(slider().onMousePress(pointer(11.0, 210.0)));
    EXPECT_OK(slider().onMouseMove(pointer(21.0, 210.0)));
    EXPECT_NEAR(level(), 0.14, 1e-9) << "taken where it was gripped";
    EXPECT_OK(slider().onMouseRelease({}));
    EXPECT_OK(slider().onMousePress(pointer(57.0, 210.0, "is-double-click")));
    EXPECT_NEAR(level(), 0.25, 1e-9) << "its default";
    tree_.set("w.slider", "is-disabled", "true");
    EXPECT_OK(slider().onMousePress(pointer(107.0, 210.0)));
    EXPECT_NEAR(level(), 0.25, 1e-9);
}

TEST_F(ControlSurface, TheCurveIsTheOneOfTheFilter)
{
    CFilterResponse response;
    response.load(*window().findObject("shared::audio.fltarray.dcfilters"));
    EXPECT_NEAR(response.getGainDb(0, 10.0, 10.0), -3.01, 0.01) << "6 dB an octave";
    EXPECT_NEAR(response.getGainDb(0, 0.1, 10.0), -40.0, 0.01);
    for (const std::int32_t steep : {2, 4, 6, 8, 10}) {
        const double slope = 6.0206 * (steep / 2 + 1);
        EXPECT_NEAR(response.getGainDb(steep, 10.0, 10.0), -3.01, 0.1) << steep;
        EXPECT_NEAR(response.getGainDb(steep, 0.2, 10.0) - response.getGainDb(steep, 0.1, 10.0), slope, 0.05);
        EXPECT_NEAR(response.getGainDb(steep, 500.0, 10.0), 0.0, 0.05);
    }
    EXPECT_EQ(response.getGainDb(12, 1.0, 10.0), 0.0) << "a type without a filter passes the signal";
}

} // namespace
} // namespace qel
