// Switches and choices in front of a running instance.
#include "CButton.h"
#include "CControlArray.h"
#include "ControlUserFixture.h"

namespace qel::test {
namespace {

constexpr const char* kWindow = R"(
  <template name="item" content-tag="ui:view" placement="left" width="20" height="20">
    <ui:button-base name="button" placement="full" width="full" height="full"/>
  </template>
  <core:object name="more">
    <ui:param-bridge name="enable" interface-client="ui.client" param="plugin.modMain.modDrumfell.sub-enable"/>
    <ui:param-bridge name="route" interface-client="ui.client" param="plugin.modMain.io-params.in-routing"/>
    <ui:value-list name="ins" mode="audio-ins" interface-client="ui.client" add-empty-value="---"/>
  </core:object>
  <define name="small" tag="ui:button-base" placement="left" width="40" height="20"/>
  <ui:window-drag name="win" is-root-view="true" width="400" height="100">
    <ui:window-renderer name="window-renderer" is-main-window="true"/>
    <small name="switch"><ui:ui-param name="ui-param-activity" bridge="more.enable"/></small>
    <small name="quiet" is-undo-disabled="true"><ui:ui-param name="ui-param-activity" bridge="more.enable"/></small>
    <small name="type"><ui:ui-param name="ui-param-value" bridge="ui.type"/></small>
    <ui:control-array name="types" object-tag="item" placement="left" object-title-list=".titles">
      <ui:value-list name="titles" mode="audio-enum-value" bridge="ui.type"/>
      <ui:ui-param name="ui-param-selected-object" bridge="ui.type"/>
    </ui:control-array>
    <ui:control-array name="routes" object-tag="item" placement="left" object-count="8"
                      object-value-list="more.ins" object-value-offset="1">
      <ui:ui-param name="ui-param" bridge="more.route" element-count="0" is-replacing="true"/>
    </ui:control-array>
  </ui:window-drag>
)";

class BoundButtons : public ControlUserFixture
{
protected:
    BoundButtons() : ControlUserFixture(kWindow) {}

    bool isOn(const std::string& button) { return at<CView>(button).isStateActive("active"); }
    void click(const std::string& path)
    {
        user_->click(at<CView>(path));
        wait();
    }
    std::string attr(const std::string& path, const char* name)
    {
        return at<CObject>(path).getAttrString(name).toUtf8();
    }
};

TEST_F(BoundButtons, ASwitchIsOneStepAndShowsWhatTheHostDoes)
{
    const std::size_t before = steps();
    const bool wasOn = isOn("switch");
    click("switch");
    EXPECT_EQ(isOn("switch"), !wasOn);
    EXPECT_EQ(isOn("quiet"), !wasOn);
    EXPECT_EQ(host_->calls.size(), 2U);
    EXPECT_EQ(steps(), before + 1);
    undo();
    EXPECT_EQ(isOn("switch"), wasOn);
    host_->set("modDrumfell.sub-enable", wasOn ? 0.0 : 1.0);
    wait();
    EXPECT_EQ(isOn("switch"), !wasOn);
    click("quiet");
    EXPECT_EQ(isOn("switch"), wasOn);
    EXPECT_EQ(steps(), before + 1);
}

TEST_F(BoundButtons, AListOffersAllValuesOfAParameter)
{
    EXPECT_EQ(attr("type", "title"), "-24");
    CAttrMap choice;
    choice["text"] = CAttrValue("-12");
    choice["index"] = CAttrValue(1);
    choice["value"] = CAttrValue(1);
    EXPECT_OK(at<CView>("type").receiveEvent("popup-result", choice));
    wait();
    EXPECT_EQ(host_->get("modDrumfell.xover-type"), 1.0);
    EXPECT_EQ(attr("type", "title"), "-12");
}

TEST_F(BoundButtons, ARowOfButtonsChoosesAState)
{
    ASSERT_EQ(at<CControlArray>("types").getItemCount(), 3U);
    EXPECT_EQ(attr("types.item#0", "object-title"), "-6");
    EXPECT_TRUE(isOn("types.item#2.button"));
    click("types.item#0.button");
    EXPECT_EQ(host_->get("modDrumfell.xover-type"), 0.0);
    EXPECT_TRUE(isOn("types.item#0.button"));
    EXPECT_FALSE(isOn("types.item#2.button"));
}

TEST_F(BoundButtons, AnArrayRoutesChannels)
{
    EXPECT_EQ(at<CControlArray>("routes").getItemCount(), 8U);
    const std::string first = attr("routes.item#0", "object-value-title");
    const std::string second = attr("routes.item#1", "object-value-title");
    EXPECT_NE(first, second);
    CAttrMap choice;
    choice["text"] = CAttrValue(CString(second));
    choice["index"] = CAttrValue(2); // behind "---" and the first input
    EXPECT_OK(at<CView>("routes.item#0.button").receiveEvent("popup-result", choice));
    wait();
    EXPECT_EQ(host_->get("io-params.in-routing", 0, 0), 2.0);
    EXPECT_EQ(attr("routes.item#0", "object-value-title"), second);
    choice["index"] = CAttrValue(0);
    EXPECT_OK(at<CView>("routes.item#1.button").receiveEvent("popup-result", choice));
    wait();
    EXPECT_EQ(host_->get("io-params.in-routing", 0, 1), 0.0);
    EXPECT_EQ(attr("routes.item#1", "object-value-title"), "---");
    EXPECT_FALSE(at<CView>("routes.item#1.button").isStateActive("error"));
}

} // namespace
} // namespace qel::test
