// Controls of the delivered windows under a user's hands.
#include "CKnob.h"
#include "CReadOut.h"
#include "CUIParam.h"
#include "Views/CInterfaceHost.h"

#include <gtest/gtest.h>

namespace qel {
namespace {

class DeliveredControls : public ::testing::Test
{
protected:
    template <class T>
    T& at(const std::string& path)
    {
        T* const object = dynamic_cast<T*>(host_.root().findObject(CString("ui.main-window.") + path));
        if (!object) {
            throw std::runtime_error("no " + path);
        }
        return *object;
    }
    std::string shown(const std::string& knob)
    {
        return at<CReadOut>(knob + ".knob-base.readout").getTitle().toUtf8();
    }
    std::size_t windowCount() { return host_.mainWindow().getSystem().getWindows().size(); }

    tools::CInterfaceHost host_{{}};
};

TEST_F(DeliveredControls, AKnobsMenuCopiesItsValueToAnother)
{
    host_.set("lf-gain", "6");
    EXPECT_EQ(shown("c.mix.lfgain"), "6.0 dB");
    const auto choose = [&](const std::string& knob, const char* item) {
        host_.user().click(at<CView>(knob + ".knob-base"), platform::MouseButton::kRight);
        host_.settle();
        ASSERT_EQ(windowCount(), 2U);
        auto* const button =
            dynamic_cast<CView*>(host_.topWindow().getRootView()->findObject(CString(".c.") + item));
        ASSERT_NE(button, nullptr);
        host_.user().click(*button);
        host_.settle();
        EXPECT_EQ(windowCount(), 1U);
    };
    choose("c.mix.lfgain", "copy");
    choose("c.mix.mixgain", "paste");
    EXPECT_EQ(shown("c.mix.mixgain"), "6.0 dB");
}

TEST_F(DeliveredControls, ADoubleClickOnAKnobTypesAValue)
{
    host_.user().doubleClick(at<CView>("c.upper.xover.freq.knob-base"));
    host_.settle();
    host_.user().type(U"0.2k");
    host_.user().key(platform::key::kEnter);
    host_.settle();
    EXPECT_EQ(shown("c.upper.xover.freq"), "200 Hz");
    EXPECT_EQ(windowCount(), 1U) << "the keyboard on the screen goes with the edit";
}

TEST_F(DeliveredControls, GroupsHaveValuesOfTheirOwn)
{
    host_.set("lf-gain", "6");
    host_.click("ui.main-window.c.bottom-frame.group-selector.button#1");
    EXPECT_EQ(shown("c.mix.lfgain"), "0.0 dB");
    host_.click("ui.main-window.c.bottom-frame.group-selector.button#0");
    EXPECT_EQ(shown("c.mix.lfgain"), "6.0 dB");
}

TEST_F(DeliveredControls, AListBelowAButtonChoosesAState)
{
    const std::string selector = "c.upper.xover.row.param-value-selector";
    EXPECT_EQ(at<CView>(selector).getAttrString("title"), "-24");
    host_.click("ui.main-window." + selector);
    ASSERT_EQ(windowCount(), 2U);
    auto* const list = dynamic_cast<CView*>(host_.topWindow().getRootView()->findObject(".c.list"));
    ASSERT_NE(list, nullptr);
    const CRect& area = list->getArea();
    host_.user().moveTo(host_.topWindow(), area.x + area.width / 2.0, area.y + area.height / 2.0);
    host_.user().press();
    host_.user().release();
    host_.settle();
    EXPECT_EQ(windowCount(), 1U);
    EXPECT_EQ(at<CView>(selector).getAttrString("title"), "-12") << "the middle one of three";
}

TEST_F(DeliveredControls, ThePreferencesAreBound)
{
    host_.click("ui.main-window.c.buttons.settings");
    ASSERT_EQ(windowCount(), 2U);
    CObject& settings = *host_.topWindow().getRootView();
    const auto button = [&](const char* path) { return dynamic_cast<CView*>(settings.findObject(path)); };
    CView* const blue = button(".c.settings.colors.palette-selector.button#1");
    ASSERT_NE(blue, nullptr);
    host_.user().click(*blue);
    host_.settle();
    EXPECT_TRUE(blue->isStateActive("active"));
    EXPECT_FALSE(host_.root().findObject("ui.local-data.ui-color-scheme")->getAttrString("palette-name") ==
                 "Default");
    CView* const large = button(".c.settings.scale.ui-scale-selector.button#2");
    ASSERT_NE(large, nullptr);
    host_.user().click(*large);
    host_.settle();
    EXPECT_EQ(host_.root().findObject("ui.local-data.ui-scale")->getAttrReal("scale"), 1.25);
    CView* const hints = button(".c.settings.show-hints");
    ASSERT_NE(hints, nullptr);
    const bool wasOn = hints->isStateActive("active");
    host_.user().click(*hints);
    host_.settle();
    EXPECT_NE(hints->isStateActive("active"), wasOn);
}

} // namespace
} // namespace qel
