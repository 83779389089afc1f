// The states of views: what they make of attributes, and how that moves.
#include "ViewFixture.h"

namespace qel {
namespace {

using test::command;
using test::node;
using test::state;
using test::view;

class States : public test::ViewFixture
{};

TEST_F(States, JoinAttributesInTheOrderOfActivation)
{
    load({view(
        "v", {{"inner-border", "3"}, {"title", "base"}},
        {state("active", {{"color-state", "Active"}, {"inner-border", "{} *R1"}, {"title", "A"}}),
         state("hover", {{"color-state", "Hover"}, {"inner-border", "{} *L2"}, {"alignment-h", "right"}}),
         state("alone", {{"color-state", "/Alone"}, {"title", "/x"}})})});
    struct Step
    {
        const char* action;
        const char* expected; // color-state, inner-border, title, alignment-h
    };
    // "+" sets, "-" unsets.
    const Step steps[] = {
        {"+active", "Active 3 *R1 A -"},
        {"+hover", "ActiveHover 3 *R1 *L2 A right"},
        {"+hover", "ActiveHover 3 *R1 *L2 A right"},
        {"+alone", "Alone 3 *R1 *L2 x right"},
        {"-active", "Alone 3 *L2 x right"},
        {"+active", "AloneActive 3 *L2 *R1 A right"},
        {"-alone", "HoverActive 3 *L2 *R1 A right"},
        {"-hover", "Active 3 *R1 A -"},
        {"-none", "Active 3 *R1 A -"},
        {"-active", "- 3 base -"},
    };
    for (const Step& step : steps) {
        const CString name = step.action + 1;
        EXPECT_OK(step.action[0] == '+' ? at("w.v").setState(name) : at("w.v").unsetState(name));
        EXPECT_EQ(attr("w.v", "color-state") + " " + attr("w.v", "inner-border") + " " +
                      attr("w.v", "title") + " " + attr("w.v", "alignment-h"),
                  step.expected)
            << step.action;
    }
}

TEST_F(States, LieOverWhatIsSetMeanwhile)
{
    load({view("v", {{"title", "old"}, {"width", "10"}}, {state("s", {{"title", "{}!"}, {"width", "20"}})}),
          view("follower", {{"title", "{*/w.v title}"}})});
    EXPECT_OK(at("w.v").setState("s"));
    EXPECT_EQ(attr("w.follower", "title"), "old!");
    set("w.v", "title", "new");
    set("w.v", "width", "30");
    EXPECT_EQ(attr("w.v", "title"), "new!");
    EXPECT_EQ(attr("w.v", "width"), "20");
    EXPECT_EQ(attr("w.follower", "title"), "new!");
    EXPECT_OK(at("w.v").unsetState("s"));
    EXPECT_EQ(attr("w.v", "title"), "new");
    EXPECT_EQ(attr("w.v", "width"), "30");
    set("w.v", "title", "free");
    EXPECT_EQ(attr("w.v", "title"), "free");
}

TEST_F(States, MorphNumbersAndThenTell)
{
    load({view("v", {{"duration", "2"}, {"width", "10%"}, {"height", "compact"}},
               {state("s", {{"opacity", "0.5"}, {"width", "50%"}, {"height", "40"}, {"duration", "1"}}),
                state("now", {{"opacity", "0"}, {"duration", "0"}}),
                command("state-ready",
                        {{"run-event", "note"}, {"run-event-target", "log"}, {"run-event-params", "p"}},
                        {node("core:object", "p", {{"is", "ready"}})})})});
    EXPECT_TRUE(context().getTimer().isIdle());
    struct Step
    {
        double sec;
        double opacity;
        const char* width;
        double height;
    };
    // (sin(t pi - pi/2) + 1) / 2 at a quarter is 0.146447.
    const Step steps[] = {{10.25, 0.9267767, "15.8579%", 5.857864},
                          {10.5, 0.75, "30.0000%", 20.0},
                          {11.5, 0.5, "50.0000%", 40.0}};
    setTime(10.0);
    EXPECT_OK(at("w.v").setState("s"));
    EXPECT_EQ(attr("w.v", "opacity"), "-") << "the first tick moves";
    for (const Step& step : steps) {
        EXPECT_TRUE(log().empty());
        frame(step.sec);
        EXPECT_NEAR(at("w.v").getDrawOpacity(), step.opacity, 1e-6);
        EXPECT_EQ(attr("w.v", "width"), step.width);
        EXPECT_NEAR(at("w.v").getAttrReal("height"), step.height, 1e-6);
    }
    EXPECT_EQ(log().size(), 1U);
    EXPECT_TRUE(context().getTimer().isIdle());

    // No time: the value is there at once, and the event comes with the next frame.
    EXPECT_OK(at("w.v").setState("now"));
    EXPECT_EQ(at("w.v").getDrawOpacity(), 0.0);
    EXPECT_EQ(log().size(), 1U);
    frame(12.0);
    EXPECT_EQ(log().size(), 2U);

    // On the way back, over the view's own two seconds, another base takes the place of the first.
    EXPECT_OK(at("w.v").unsetState("now", true));
    EXPECT_OK(at("w.v").unsetState("s"));
    EXPECT_EQ(attr("w.v", "height"), "compact") << "what is no number does not morph";
    frame(13.0);
    EXPECT_NEAR(at("w.v").getDrawOpacity(), 0.75, 1e-6);
    set("w.v", "opacity", "0.25");
    frame(14.0);
    EXPECT_NEAR(at("w.v").getDrawOpacity(), 0.5, 1e-6);
    frame(15.0);
    EXPECT_EQ(attr("w.v", "opacity"), "0.2500");
    EXPECT_TRUE(context().getTimer().isIdle());
    set("w.v", "opacity", "1");
    EXPECT_EQ(at("w.v").getDrawOpacity(), 1.0);
}

TEST_F(States, FadeLooksAndStopEarly)
{
    load({view("v", {{"width", "50"}, {"height", "50"}, {"color", "Knob"}, {"morph-duration", "1"}},
               {state("hover", {{"color-state", "Hover"}})})});
    EXPECT_EQ(pixel(5, 5), 0xC80000U);
    EXPECT_OK(at("w.v").setState("hover"));
    frame(0.5);
    EXPECT_EQ(at("w.v").getFadePosition(), 0.5);
    EXPECT_EQ(pixel(5, 5), 0x646400U);
    frame(0.85); // 0.9455
    EXPECT_LT(at("w.v").getFadePosition(), 0.95);
    frame(0.86); // 0.9524
    EXPECT_EQ(at("w.v").getFadePosition(), 1.0);
    EXPECT_EQ(pixel(5, 5), 0x00C800U);
    EXPECT_TRUE(context().getTimer().isIdle());

    // Set directly, it does not fade.
    EXPECT_OK(at("w.v").unsetState("hover", true));
    frame(1.0);
    EXPECT_EQ(pixel(5, 5), 0xC80000U);
    set("w.v", "color-state", "Hover");
    frame(1.1);
    EXPECT_EQ(pixel(5, 5), 0x00C800U);
}

TEST_F(States, BlinkOnTheirOwnEventWithoutEnd)
{
    load({view("v", {}, {command("state-ready", {{"toggle-state", "on"}})})});
    EXPECT_OK(at("w.v").setState("start"));
    for (int i = 0; i < 4; ++i) {
        frame(i);
        EXPECT_EQ(at("w.v").isStateActive("on"), i % 2 == 0);
    }
}

} // namespace
} // namespace qel
