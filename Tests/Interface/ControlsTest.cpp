// Controls of the delivered windows under a user's hands.
#include "CKnob.h"
#include "CReadOut.h"
#include "LiteralText.h"
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

// In the gap below a button and a knob: the nearer one takes it.
TEST_F(DeliveredControls, InTabletModeControlsTakeWhatIsBesideThem)
{
    CView& lf = at<CView>("c.mix.row.lf");
    const auto tapBelow = [&](double gapPx) {
        const CRect area = lf.getArea();
        host_.user().moveTo(host_.mainWindow(), area.x + area.width / 2.0, area.bottom() + gapPx);
        host_.user().press();
        host_.user().release();
        host_.settle();
        return lf.isStateActive("active");
    };
    EXPECT_TRUE(tapBelow(2.0)) << "on before, and not touched";
    host_.set("ui.global-data:tablet-mode", "true");
    EXPECT_FALSE(tapBelow(2.0));
    EXPECT_FALSE(tapBelow(10.0)) << "nearer to the knob";
}

// A list of what can be done has nothing selected, whose click would only close it.
TEST_F(DeliveredControls, AGroupIsCopiedToTheSameOneAgain)
{
    constexpr double kGroups = 8.0;
    for (const char* const gain : {"6.0", "3.0"}) {
        host_.set("ui.group-selector:group-index", "0");
        host_.set("lf-gain", gain);
        host_.click("ui.main-window.c.bottom-frame.copy");
        const CView& list = *dynamic_cast<CView*>(host_.topWindow().getRootView()->findObject(".c.list"));
        const CRect area = list.getArea();
        host_.user().moveTo(host_.topWindow(), area.x + 8.0, area.y + area.height * 1.5 / kGroups);
        host_.user().press();
        host_.user().release();
        host_.settle();
        host_.set("ui.group-selector:group-index", "1");
        EXPECT_EQ(shown("c.mix.lfgain"), gain + std::string(" dB"));
    }
}

TEST_F(DeliveredControls, NamesAreShownAsTheyAreTyped)
{
    const std::string name = "[B]{Kick}[/B] [IMG=is.button#Arrow]";
    host_.set("instance-name", name);
    host_.set("group-names", name);
    const CString shown = literalText(CString::fromUtf8(name));
    EXPECT_EQ(at<CReadOut>("window-title.instance-name").getTitle(), shown);
    CObject& routing = *host_.openWindow("ui:win-channel-routing").getRootView();
    EXPECT_EQ(routing.findObject(".c.grouping.array.item.button.label")->getAttrString("title"), shown);
}

} // namespace
} // namespace qel
