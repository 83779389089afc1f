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

} // namespace
} // namespace qel
