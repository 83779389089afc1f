// Lists of presets, the history, A and B.
#include "CDynamicListPresets.h"
#include "CHistory.h"
#include "CPluginControl.h"
#include "CQuickPresetSelector.h"
#include "LiteralText.h"
#include "PresetStores.h"
#include "PresetsFixture.h"

namespace qel::test {
namespace {

constexpr const char* kPresetTree = R"(
  <core:object name="s">
    <ui:param-bridge name="name" interface-client="ui.client" param="plugin.modMain.preset-name"/>
    <ui:param-group-selector name="group"/>
    <ui:dynamic-list-presets name="presets" interface-client="ui.client" param-registry="plugin.param-registry"
      store-name="shared-banks"/>
    <ui:dynamic-list-presets name="routing" interface-client="ui.client"
      param-registry="plugin.param-registry-io" store-name="routing-presets" is-global-data="true"/>
    <ui:dynamic-list-presets name="group-presets" interface-client="ui.client" is-show-banks="false"
      param-registry="plugin.param-registry" group-selector="s.group"/>
    <ui:plugin-control name="control" interface-client="ui.client" param-registry="plugin.param-registry"/>
  </core:object>
  <ui:view name="w" is-root-view="true" width="200" height="100">
    <ui:history name="history" interface-client="ui.client">
      <ui:view name="button-undo"/><ui:view name="button-redo"/>
      <ui:button-base name="button-select"/>
      <ui:value-list-manual name="history-list"/>
    </ui:history>
    <ui:quick-preset-selector name="quick" preset-list="s.presets" interface-client="ui.client"
      settling-steps="ROM preset activate;Master reset" silent-steps="Program name">
      <ui:ui-param name="ui-param-title" bridge="s.name"/>
    </ui:quick-preset-selector>
    <ui:quick-preset-selector name="own" forced-title="Own" forced-title-filter="User;Default"
      interface-client="ui.client" param-registry="plugin.param-registry" store-name-user="shared-banks">
      <ui:ui-param name="ui-param-title" bridge="s.name"/>
    </ui:quick-preset-selector>
    <ui:button-base name="ab" shared-attribute="s.control" attribute="is-b"/>
  </ui:view>)";

class PresetViews : public InstanceFixture
{
protected:
    PresetViews() : tree_(*host_, kPresetTree) {}

    void choose(const char* button, const char* list, int index)
    {
        tree_.send(button, "popup-result", {{"list-id", CAttrValue(list)}, {"index", CAttrValue(index)}});
    }

    PresetTree tree_;
};

TEST_F(PresetViews, ListsShowBanksAndTheirPresets)
{
    std::vector<CDynamicListItem> banks;
    auto& presets = tree_.at<CDynamicListPresets>("s.presets");
    ASSERT_OK(presets.getItems({}, banks));
    ASSERT_EQ(PresetTree::joined(banks), "Factory ROM|Session Bank");
    EXPECT_EQ(tree_.items("s.presets", banks[0].subListId.toUtf8().c_str()).substr(0, 8), "Default|");
    EXPECT_EQ(tree_.items("s.routing").substr(0, 14), "Default Stereo") << "one list needs no banks";
    EXPECT_FAILS(presets.getItems("bank-9", banks), "Invalid list identifier bank-9.");
    EXPECT_FAILS(presets.getItems("kick", banks), "Invalid list identifier kick.");
    tree_.send("s.routing", "activate-preset", {{"list-id", CAttrValue("")}, {"index", CAttrValue(3)}});
    EXPECT_EQ(host_->get("io-params.grouping", 0, 1), 1.0) << "Dual Mono";
}

TEST_F(PresetViews, TheQuickSelectorShowsThePresetAndActivatesAnother)
{
    EXPECT_EQ(tree_.attr("w.quick", "title"), "Default");
    EXPECT_EQ(tree_.attr("w.own", "title"), "Own");
    tree_.click("w.quick");
    EXPECT_EQ(tree_.window.last("popup-item-list"), "s.presets");
    choose("w.quick", "bank-0", 2);
    EXPECT_NEAR(host_->get("modDrumfell.xover-freq"), 100.4, 0.1);
    EXPECT_EQ(tree_.attr("w.quick", "title"), "Defined Kicks");
    EXPECT_EQ(tree_.attr("w.own", "title"), "Defined Kicks");
    EXPECT_EQ(tree_.attr("w.quick", "selected-index"), "2");
    tree_.set("w.own", "is-right-click-allowed", "true");
    EXPECT_OK(tree_.at<CView>("w.own").onMousePressR({}));
    EXPECT_OK(tree_.at<CView>("w.own").onMouseReleaseR({{"button", CAttrValue("r")}}));
    EXPECT_EQ(tree_.window.last("popup-item-list"), "w.own.preset-list-user");
    CObject* made = nullptr;
    const CAttrMap attributes{{"interface-client", CAttrValue("ui.client")}};
    EXPECT_FAILS(tree_.at<CObject>("w").createChild(made, "ui:quick-preset-selector", "x", false, nullptr,
                                                    &attributes),
                 "No 'name' audio parameter.");
}

TEST_F(PresetViews, TheQuickSelectorTellsOfChangesToThePreset)
{
    const auto isChanged = [&] { return tree_.at<CObject>("w.quick").getAttrBool("is-changed"); };
    EXPECT_FALSE(isChanged());
    choose("w.quick", "bank-0", 2);
    EXPECT_FALSE(isChanged());
    std::vector<CDynamicListItem> items;
    ASSERT_OK(tree_.at<CDynamicListPresets>("s.presets").getItems("bank-0", items));
    EXPECT_TRUE(items[2].isMarked && !items[0].isMarked);
    tree_.set("s.group", "group-index", "1");
    tree_.send("s.group-presets", "activate-preset", {{"index", CAttrValue(3)}});
    EXPECT_TRUE(isChanged()) << "one group has something else";
    tree_.click("w.history.button-undo");
    EXPECT_FALSE(isChanged());
    tree_.click("w.history.button-redo");
    tree_.send("s.control", "on-reset");
    EXPECT_FALSE(isChanged());
}

TEST_F(PresetViews, AListOfAGroupActivatesForThatGroupAlone)
{
    tree_.set("s.group", "group-index", "2");
    tree_.send("s.group-presets", "activate-preset", {{"index", CAttrValue(2)}});
    EXPECT_NEAR(host_->get("modDrumfell.xover-freq", 2), 100.4, 0.1);
    EXPECT_EQ(host_->get("modDrumfell.xover-freq", 0), 100.0);
}

TEST_F(PresetViews, TheHistoryMovesByStepsAndToAnyStep)
{
    EXPECT_EQ(tree_.attr("w.history.button-select", "title"), "Undo history start");
    EXPECT_FALSE(tree_.isEnabled("w.history.button-undo"));
    EXPECT_FALSE(tree_.isEnabled("w.history.button-redo"));
    choose("w.quick", "bank-0", 2);
    choose("w.quick", "bank-0", 4);
    EXPECT_EQ(tree_.items("w.history.history-list"),
              "Undo history start|ROM preset activate|ROM preset activate");
    EXPECT_EQ(tree_.attr("w.history.button-select", "title"), "ROM preset activate");
    tree_.click("w.history.button-undo");
    EXPECT_NEAR(host_->get("modDrumfell.xover-freq"), 100.4, 0.1);
    EXPECT_TRUE(tree_.isEnabled("w.history.button-redo"));
    tree_.click("w.history.button-undo");
    EXPECT_EQ(host_->get("modDrumfell.xover-freq"), 100.0);
    EXPECT_FALSE(tree_.isEnabled("w.history.button-undo"));
    tree_.click("w.history.button-redo");
    EXPECT_NEAR(host_->get("modDrumfell.xover-freq"), 100.4, 0.1);
    tree_.click("w.history.button-select");
    EXPECT_EQ(tree_.window.last("popup-selected-paragraph"), "1");
    choose("w.history.button-select", "", 2);
    EXPECT_NEAR(host_->get("modDrumfell.xover-freq"), 130.6, 0.1);
}

TEST_F(PresetViews, TellsOfTheDefaultPreset)
{
    EXPECT_EQ(tree_.attr("s.control", "default-preset"), "");
    EXPECT_OK(saveStoredDefault(CAudioPreset("7qtz:Mine {now}")));
    tree_.settle();
    EXPECT_EQ(tree_.attr("s.control", "default-preset"), literalText("Mine {now}").toUtf8());
}

} // namespace
} // namespace qel::test
