// Controls of the delivered windows under a user's hands.
#include "CKnob.h"
#include "CReadOut.h"
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

} // namespace
} // namespace qel
