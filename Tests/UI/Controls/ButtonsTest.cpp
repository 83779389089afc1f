// Buttons: clicks, switches and lists.
#include "ControlFixture.h"

namespace qel {
namespace {

using test::Attrs;
using test::command;
using test::node;

class Buttons : public test::ControlFixture
{
protected:
    static test::TreeNode button(Attrs attrs, std::vector<test::TreeNode> children = {})
    {
        attrs.insert(attrs.end(), {{"width", "60"}, {"height", "20"}});
        for (const char* const event : {"mouse-release", "mouse-release-r"}) {
            children.push_back(command(
                event, {{"run-event", "note"}, {"run-event-target", "log"}, {"run-event-params", "click"}}));
        }
        children.push_back(node("core:object", "click", {{"event", "click"}}));
        return node("ui:button-base", "b", attrs, children);
    }
    // An object "setting" whose attribute "on" is kept by the shared attribute "setting.on".
    static test::TreeNode setting(const std::string& value)
    {
        return node("core:object", "setting", {},
                    {node("core:shared-attribute", "on", {{"attribute", "on"}, {"def-value", value}})});
    }
    CButton& b() { return dynamic_cast<CButton&>(at("w.b")); }
    bool isPushed() { return b().isStateActive("pushed"); }
    std::size_t clicks() { return log().size(); }
};

TEST_F(Buttons, AClickIsAReleaseOnTheButtonThatWasPressed)
{
    loadControls({button({{"shared-attribute", "setting.on"}})}, {}, {setting("false")});
    EXPECT_OK(b().onMouseEnter({}));
    EXPECT_OK(b().onMousePress({}));
    EXPECT_TRUE(isPushed());
    EXPECT_OK(b().onMouseExit({}));
    EXPECT_FALSE(isPushed());
    EXPECT_OK(b().onMouseEnter({}));
    EXPECT_TRUE(isPushed()) << "it is still held";
    EXPECT_OK(b().onMouseRelease({}));
    EXPECT_FALSE(isPushed());
    EXPECT_EQ(clicks(), 1U);
    EXPECT_EQ(attr("setting", "on"), "true");
    EXPECT_TRUE(b().isStateActive("active"));

    EXPECT_OK(b().onMousePress({}));
    EXPECT_OK(b().onMouseExit({}));
    EXPECT_OK(b().onMouseCancel({}));
    EXPECT_OK(b().onMouseEnter({}));
    EXPECT_FALSE(isPushed());
    EXPECT_OK(b().onMousePressR({}));
    EXPECT_FALSE(isPushed());
    EXPECT_OK(b().onMouseReleaseR({}));
    EXPECT_EQ(attr("setting", "on"), "true") << "neither a cancelled press nor the right button acts";

    set("w.b", "is-right-click-allowed", "true");
    EXPECT_OK(b().onMousePressR({}));
    EXPECT_OK(b().onMouseReleaseR({}));
    EXPECT_EQ(attr("setting", "on"), "false");
    set("w.b", "is-disabled", "true");
    EXPECT_OK(b().onMousePress({}));
    EXPECT_FALSE(isPushed());
    EXPECT_OK(b().onMouseRelease({}));
    EXPECT_EQ(attr("setting", "on"), "false");
}

TEST_F(Buttons, ASwitchShowsWhatItIsBoundTo)
{
    for (const bool isInverse : {false, true}) {
        for (const bool hasParam : {false, true}) {
            const std::string inverse = isInverse ? "true" : "false";
            loadControls(
                {hasParam ? button({{"is-inverse", inverse}}, {node("ui:ui-param", "ui-param-activity",
                                                                    {{"shared-attribute", "setting.on"}})})
                          : button({{"is-inverse", inverse}, {"shared-attribute", "setting.on"}})},
                {}, {setting("true")});
            EXPECT_EQ(b().isActive(), !isInverse);
            set("setting", "on", "false");
            EXPECT_EQ(b().isActive(), isInverse);
            EXPECT_EQ(b().isStateActive("active"), isInverse);
            EXPECT_OK(b().onMousePress({}));
            EXPECT_OK(b().onMouseRelease({}));
            EXPECT_EQ(attr("setting", "on"), "true");
            EXPECT_EQ(b().isActive(), !isInverse);
            for (const char* const path : {"w", "ui", "pal", "log", "setting", "is"}) {
                CObject::releaseObject(root_->findObject(path));
            }
        }
    }
}

TEST_F(Buttons, AListIsOpenedAndItsChoiceTaken)
{
    loadControls({button({{"item-list", "list"}, {"popup-extra", "7"}})}, {},
                 {node("ui:value-list-manual", "list", {{"values", "one;two"}})});
    EXPECT_OK(b().onMousePress({}));
    EXPECT_OK(b().onMouseRelease({}));
    EXPECT_EQ(window_.calls, std::vector<std::string>{"toggle"});
    CAttrMap choice;
    choice["text"] = CAttrValue("two");
    choice["index"] = CAttrValue(1);
    EXPECT_OK(b().receiveEvent("popup-result", choice));
    EXPECT_EQ(attr("w.b", "selected-item"), "two");
    EXPECT_EQ(attr("w.b", "index"), "1");
    EXPECT_EQ(window_.calls.size(), 1U) << "the choice goes no further";

    set("w.b", "item-list", "gone");
    EXPECT_OK(b().onMousePress({}));
    EXPECT_FAILS(b().onMouseRelease({}), "Unable to find item list 'gone'.");
}

TEST_F(Buttons, AClickMayEndTheButton)
{
    loadControls({button({{"shared-attribute", "setting.on"}},
                         {command("mouse-release", {{"run-event", "close-window"}})})},
                 {}, {setting("false")});
    EXPECT_OK(b().onMousePress({}));
    EXPECT_OK(b().onMouseRelease({}));
    EXPECT_EQ(attr("setting", "on"), "true");
    EXPECT_EQ(root_->findObject("w"), nullptr);
}

} // namespace
} // namespace qel
