// Knobs in front of a running instance, moved by a user without a screen.
#include "CKnob.h"
#include "ControlUserFixture.h"
#include "KnobLaws.h"

namespace qel::test {
namespace {

constexpr const char* kKnobs = R"(
  <template name="ui:label" content-tag="ui:textview"/>
  <define name="cell" tag="ui:knob" placement="left" width="70" height="74" center-x="35" center-y="34"
          outer-radius="33" group-selector="ui.group"/>
  <ui:window-drag name="win" is-root-view="true" width="280" height="100">
    <ui:window-renderer name="window-renderer" is-main-window="true"/>
    <cell name="gain" bridge="ui.gain"/>
    <cell name="sub" bridge="ui.sub" linked-knob="^gain" is-link-inversed="true"/>
    <cell name="dry" bridge="ui.dry">
      <ui:knob-labels name="knob-labels" placement="overlay" width="full" height="full"
                      is-decorative="true"/>
    </cell>
    <cell name="type" bridge="ui.type"/>
  </ui:window-drag>
)";

class Knob : public ControlUserFixture
{
protected:
    Knob() : ControlUserFixture(kKnobs) {}

    CKnob& knob(const std::string& name) { return at<CKnob>(name); }
    double norm(const std::string& name) { return param(name).getNorm(0); }
    // On a knob's body.
    void point(const std::string& name) { pointAt(name, 35.0, 34.0); }
    void drag(const std::string& name, double upPx)
    {
        point(name);
        dragUp(upPx);
    }
};

TEST_F(Knob, ADragMovesByThePrecisionAsOneStepAndOnePair)
{
    const std::size_t before = steps();
    const double start = norm("gain");
    EXPECT_EQ(knob("gain").getPictureIndex(), 42);
    drag("gain", 20.0);
    EXPECT_NEAR(norm("gain") - start, 0.0647, 1e-4);
    EXPECT_EQ(knob("gain").getPictureIndex(), 47);
    EXPECT_EQ(steps(), before + 1);
    ASSERT_EQ(host_->calls.size(), 2U);
    EXPECT_EQ(host_->calls[0].substr(0, 5), "begin");
    EXPECT_EQ(host_->calls[1].substr(0, 3), "end");
    undo();
    EXPECT_NEAR(norm("gain"), start, 1e-9);
    EXPECT_EQ(knob("gain").getPictureIndex(), 42);

    // Beyond an end the way back begins at once.
    drag("gain", 400.0);
    EXPECT_EQ(norm("gain"), 1.0);
    drag("gain", -20.0);
    EXPECT_NEAR(norm("gain"), 1.0 - 0.0647, 1e-4);
}

TEST_F(Knob, ShiftMakesADragFinerWithoutAJump)
{
    point("gain");
    user_->press();
    user_->moveBy(0.0, -10.0);
    wait();
    const double moved = norm("gain");
    hold(false, true);
    user_->moveBy(0.0, -10.0);
    wait();
    EXPECT_NEAR(norm("gain") - moved, (moved - 0.5) * shiftFactorOf(0.5), 1e-6);
    user_->release();
}

TEST_F(Knob, NotchesOfTheWheelAreOneGestureUntilAPause)
{
    const std::size_t before = steps();
    point("gain");
    user_->wheel(1.0);
    wait();
    EXPECT_NEAR(norm("gain"), 0.5316, 1e-4);
    user_->wheel(1.0);
    wait();
    EXPECT_NEAR(norm("gain"), 0.5632, 1e-4);
    EXPECT_EQ(host_->calls.size(), 1U);
    wait(0.7);
    EXPECT_EQ(host_->calls.size(), 2U);
    EXPECT_EQ(steps(), before + 1);
    user_->wheel(-1.0);
    wait(0.7);
    EXPECT_EQ(host_->calls.size(), 4U);
    EXPECT_EQ(steps(), before + 1) << "the same knob again goes on with its step";

    point("type");
    const double value = param("type").getValue(0);
    user_->wheel(value > 0.5 ? -1.0 : 1.0);
    wait();
    EXPECT_EQ(std::fabs(param("type").getValue(0) - value), 1.0) << "a notch is at least one unit";
}

TEST_F(Knob, LinkedKnobsMoveTogetherInOneStep)
{
    const std::size_t before = steps();
    drag("sub", 20.0);
    EXPECT_NEAR(norm("sub"), 0.5647, 1e-4);
    EXPECT_NEAR(norm("gain"), 0.4353, 1e-4);
    EXPECT_EQ(steps(), before + 1);
    undo();
    EXPECT_NEAR(norm("gain"), 0.5, 1e-9);
    EXPECT_NEAR(norm("sub"), 0.5, 1e-9);

    // The wheel moves the other one with Ctrl alone.
    point("sub");
    user_->wheel(1.0);
    wait();
    EXPECT_NEAR(norm("gain"), 0.5, 1e-9);
    hold(true, false);
    user_->wheel(1.0);
    wait();
    EXPECT_NEAR(norm("gain"), 0.4684, 1e-4);
}

TEST_F(Knob, CtrlSetsTheDefaultAndOnlyTheKnobItselfTakesAPress)
{
    host_->set("modDrumfell.lf-gain", 4.0);
    wait();
    EXPECT_GT(norm("gain"), 0.7);
    hold(true, false);
    point("gain");
    user_->press();
    user_->release();
    wait();
    EXPECT_EQ(norm("gain"), 0.5);
    hold(false, false);

    host_->calls.clear();
    pointAt("gain", 2.0, 2.0);
    user_->press();
    user_->moveBy(0.0, 20.0);
    user_->release();
    wait();
    EXPECT_EQ(norm("gain"), 0.5);
    tree_->set("win.gain", "is-disabled", "true");
    drag("gain", 20.0);
    EXPECT_EQ(norm("gain"), 0.5);
    EXPECT_TRUE(host_->calls.empty());
}

TEST_F(Knob, InRadialModeAKnobPointsToThePointer)
{
    setting("radial-knob-mode", "true");
    pointAt("dry", 35.0, 14.0);
    user_->press();
    wait();
    EXPECT_NEAR(norm("dry"), 0.5, 1e-6);
    pointAt("dry", 15.0, 34.0);
    wait();
    EXPECT_NEAR(norm("dry"), 1.0 / 6.0, 1e-6);
    pointAt("dry", 36.0, 94.0);
    wait();
    EXPECT_EQ(norm("dry"), 1.0) << "the dead gap";
    user_->release();
    EXPECT_EQ(host_->calls.size(), 2U);
}

TEST_F(Knob, AWindowThatClosesInMidDragLeavesNothingHeld)
{
    point("gain");
    user_->press();
    user_->moveBy(0.0, -10.0);
    wait();
    ASSERT_EQ(host_->calls.size(), 1U);
    CObject::releaseObject(&tree_->at<CObject>("win"));
    user_.reset();
    tree_->settle();
    ASSERT_EQ(host_->calls.size(), 2U);
    EXPECT_EQ(host_->calls[1].substr(0, 3), "end");
}

TEST_F(Knob, AScaleShowsWhileThePointerIsOnTheKnob)
{
    const auto isShown = [&] { return at<CView>("dry.knob-labels").getViewArea().isShown(); };
    const auto label = [&](int index) {
        return &at<CView>("dry.knob-labels.label#" + std::to_string(index));
    };
    setting("show-knob-labels", "true");
    point("dry");
    wait();
    EXPECT_TRUE(isShown());
    EXPECT_EQ(label(0)->getAttrString("title"), "0");
    EXPECT_EQ(label(9)->getAttrString("title"), "100");
    const CRect& area = knob("dry").getArea();
    const CRect& first = label(0)->getArea();
    EXPECT_NEAR(first.x + first.width / 2.0, area.x + 35.0 - 26.6 * std::sqrt(0.5), 1.0);
    EXPECT_NEAR(first.y + first.height / 2.0, area.y + 34.0 + 26.6 * std::sqrt(0.5), 1.0);
    user_->press();
    user_->moveBy(0.0, 60.0);
    wait();
    EXPECT_TRUE(isShown()) << "the knob is still held";
    user_->release();
    wait();
    EXPECT_FALSE(isShown());
    setting("show-knob-labels", "false");
    point("dry");
    wait();
    EXPECT_FALSE(isShown());
}

} // namespace
} // namespace qel::test
