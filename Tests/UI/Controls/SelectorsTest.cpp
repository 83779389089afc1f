// Rows of buttons and arrays of controls.
#include "CControlArray.h"
#include "CNotifyServer.h"
#include "CParamGroupSelector.h"
#include "CSelectorGroup.h"
#include "CSelectorOversampling.h"
#include "CSelectorScale.h"
#include "ControlFixture.h"

namespace qel {
namespace {

using test::Attrs;
using test::command;
using test::creatorRow;
using test::node;

class Selectors : public test::ControlFixture
{
protected:
    Selectors()
    {
        releaseError(registerCreators(kRows));
        static CNotifyServer server; // outlives every tree
        root_->setNotifyServer(&server);
    }

    static test::TreeNode setting(const std::string& name, const std::string& value)
    {
        return node("core:object", "setting", {},
                    {node("core:shared-attribute", name, {{"attribute", name}, {"def-value", value}})});
    }
    void click(const std::string& path, bool isRight = false)
    {
        auto& button = at(path.c_str());
        CAttrMap parameters;
        parameters["button"] = CAttrValue(isRight ? "r" : "l");
        EXPECT_OK(isRight ? button.onMousePressR(parameters) : button.onMousePress(parameters));
        EXPECT_OK(isRight ? button.onMouseReleaseR(parameters) : button.onMouseRelease(parameters));
    }
    // "01-" for three buttons of which the second is on and the third is not there.
    std::string active(const std::string& path, const char* attribute = "is-active")
    {
        std::string text;
        for (int i = 0; CObject* const button = root_->findObject(path + ".button#" + std::to_string(i));
             ++i) {
            text += button->getAttrBool(attribute) ? '1' : '0';
        }
        return text;
    }

private:
    static constexpr CCreatorRow kRows[] = {
        creatorRow<CControlArray>("ui:control-array"),
        creatorRow<CParamGroupSelector>("ui:param-group-selector"),
        creatorRow<CSelectorGroup>("ui:selector-group"),
        creatorRow<CSelectorOversampling>("ui:selector-oversampling"),
        creatorRow<CSelectorScale>("ui:selector-scale"),
        {nullptr, nullptr, nullptr},
    };
};

TEST_F(Selectors, ButtonsAreMadeOfTheTitlesAndAnew)
{
    loadControls({node("ui:selector-oversampling", "s",
                       {{"shared-attribute", "setting.oversampling-level"},
                        {"button-title-list", "1x,2x,4x"},
                        {"separator-char", ","},
                        {"button-width", "32"},
                        {"button-inner-border", "3"}})},
                 {}, {setting("oversampling-level", "1")});
    EXPECT_EQ(active("w.s"), "010");
    EXPECT_EQ(attr("w.s.button#2", "title"), "4x");
    EXPECT_EQ(attr("w.s.button#2", "width"), "32");
    EXPECT_EQ(attr("w.s.button#2", "inner-border"), "3");
    click("w.s.button#2");
    EXPECT_EQ(attr("setting", "oversampling-level"), "2");
    EXPECT_EQ(active("w.s"), "001");
    set("setting", "oversampling-level", "0");
    EXPECT_EQ(active("w.s"), "100");
    set("setting", "oversampling-level", "7");
    EXPECT_EQ(active("w.s"), "000");
    set("w.s", "button-count", "0");
    EXPECT_EQ(dynamic_cast<CSelector&>(at("w.s")).getButtonCount(), 0);
}

TEST_F(Selectors, TheScaleIsRecognisedInEveryForm)
{
    loadControls({node("ui:selector-scale", "s",
                       {{"shared-attribute", "setting.scale"}, {"button-title-list", "80%;100%;125%"}})},
                 {}, {setting("scale", "1.0000")});
    EXPECT_EQ(active("w.s"), "010");
    click("w.s.button#2");
    EXPECT_EQ(attr("setting", "scale"), "1.25");
}

TEST_F(Selectors, GroupsAreChosenAndCompared)
{
    loadControls({node("ui:selector-group", "s",
                       {{"group-selector", "one"},
                        {"group-selector-opposite", "two"},
                        {"button-count", "4"},
                        {"is-right-click-allowed", "true"},
                        {"is-temp-pushed", "true"}})},
                 {},
                 {node("ui:param-group-selector", "one", {{"group-index", "1"}}),
                  node("ui:param-group-selector", "two")});
    EXPECT_EQ(attr("w.s.button#3", "title"), "4");
    EXPECT_EQ(active("w.s"), "0100");
    EXPECT_EQ(active("w.s", "is-temp-pushed"), "1000");
    click("w.s.button#2");
    click("w.s.button#3", true);
    EXPECT_EQ(attr("one", "group-index"), "2");
    EXPECT_EQ(attr("two", "group-index"), "3");
    EXPECT_EQ(active("w.s", "is-temp-pushed"), "0001");
    set("one", "group-index", "0");
    EXPECT_EQ(active("w.s"), "1000");
}

TEST_F(Selectors, AnArrayKeepsOneItemATitle)
{
    loadControls({node("ui:control-array", "a",
                       {{"object-tag", "ui:button"},
                        {"object-title-list", "titles"},
                        {"object-color", "Red"},
                        {"selected-object", "1"}},
                       {command("object-selected", {{"run-event", "note"},
                                                    {"run-event-target", "log"},
                                                    {"run-event-forward-params", "true"}})})},
                 {}, {node("ui:value-list-manual", "titles", {{"values", "a;b;c"}})});
    auto& array = dynamic_cast<CControlArray&>(at("w.a"));
    EXPECT_EQ(array.getItemCount(), 3U);
    EXPECT_EQ(attr("w.a.item#1", "object-title"), "b");
    EXPECT_EQ(attr("w.a.item#1", "object-index-incr"), "2");
    EXPECT_EQ(attr("w.a.item#1", "object-color"), "Red");
    EXPECT_EQ(attr("w.a.item#1", "object-text-color"), "Text");
    EXPECT_TRUE(at("w.a.item#1").isStateActive("active"));
    click("w.a.item#2");
    EXPECT_EQ(attr("w.a", "selected-object"), "2");
    EXPECT_FALSE(at("w.a.item#1").isStateActive("active"));
    EXPECT_TRUE(at("w.a.item#2").isStateActive("active"));
    EXPECT_EQ(log(), std::vector<std::string>{"index=2"});
    set("titles", "values", "x;y");
    EXPECT_EQ(array.getItemCount(), 2U);
    EXPECT_EQ(attr("w.a.item#0", "object-title"), "x");
}

TEST_F(Selectors, ValuesOfItemsHaveNamesAndAreChecked)
{
    loadControls({node("ui:control-array", "a",
                       {{"object-tag", "ui:button"},
                        {"object-value-list", "off;low;high"},
                        {"object-value-offset", "1"}},
                       {node("ui:ui-param", "ui-param-count", {{"shared-attribute", "setting.count"}}),
                        node("ui:ui-param", "ui-param", {{"shared-attribute", "value.v"}})})},
                 {},
                 {setting("count", "1"),
                  node("core:object", "value", {},
                       {node("core:shared-attribute", "v", {{"attribute", "v"}, {"def-value", "2"}})})});
    EXPECT_EQ(attr("w.a.item", "object-value"), "2");
    EXPECT_EQ(attr("w.a.item", "object-value-title"), "low");
    EXPECT_FALSE(at("w.a.item").isStateActive("error"));
    CAttrMap picked;
    picked["object-index"] = CAttrValue(0);
    picked["index"] = CAttrValue(2);
    EXPECT_OK(at("w.a").receiveEvent("object-value-picked", picked));
    EXPECT_EQ(attr("w.a.item", "object-value-title"), "high");
    set("value", "v", "9");
    EXPECT_TRUE(at("w.a.item").isStateActive("error"));
    set("setting", "count", "2");
    EXPECT_EQ(dynamic_cast<CControlArray&>(at("w.a")).getItemCount(), 2U);
}

} // namespace
} // namespace qel
