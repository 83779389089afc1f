// Controls bound to a running instance.
#include "CAudioExtParam.h"
#include "CParamBridgeAudio.h"
#include "CParamGroupController.h"
#include "CParamGroupSelector.h"
#include "CUIParam.h"
#include "CUIParamUpdateHandler.h"
#include "CView.h"
#include "InstanceFixture.h"

namespace qel::test {
namespace {

// Writes down what it shows.
class TestControl : public CObject, public CUIParamUpdateHandler
{
public:
    CError onParamAdded(CUIParam&) override { return note("added"); }
    CError onParamRemoved(CUIParam&) override { return note("removed"); }
    CError onParamUpdate(CUIParam& param) override { return note(param.getText(0).toUtf8()); }
    CError onParamInfo(CUIParam&) override { return note("info"); }

    CError note(const std::string& text)
    {
        lines.push_back(text);
        return {};
    }
    std::vector<std::string> take() { return std::exchange(lines, {}); }
    std::vector<std::string> lines;
};

constexpr CCreatorRow kRows[] = {
    {"test:control", &newObject<TestControl>, &TestControl::buildClassInfo},
    {nullptr, nullptr, nullptr},
};

using Lines = std::vector<std::string>;

constexpr const char* kTree = R"(
  <core:object name="shared"><ui:param-group-selector name="group"/>
    <ui:param-bridge name="gain" interface-client="ui.client" param="plugin.modMain.modDrumfell.lf-gain"/>
    <ui:param-bridge name="out" interface-client="ui.client" param="plugin.modMain.modOutGain.gain"/>
    <ui:param-bridge name="route" interface-client="ui.client" param="plugin.modMain.io-params.in-routing"/>
    <ui:param-bridge name="solo" interface-client="ui.client" param="plugin.modMain.io-params.channel-group-solo"/>
    <ui:param-bridge name="names" interface-client="ui.client" param="plugin.modMain.io-params.group-names"/>
    <core:object name="setting" level="0.5" flag="false" mode="b">
      <core:shared-attribute name="level" attribute="level" data-name="t-level" def-value="0.25"/>
      <core:shared-attribute name="flag" attribute="flag" data-name="t-flag" def-value="false"/>
      <core:shared-attribute name="mode" attribute="mode" data-name="t-mode" def-value="b"/>
    </core:object>
    <ui:param-group-controller name="groups" interface-client="ui.client" group-selector="shared.group" title="Group">
      <core:object name="p" param="plugin.modMain.modDrumfell.lf-gain"/>
      <core:object name="p" bridge="shared.out"/>
      <core:object name="p" bridge="shared.route"/>
      <core:object name="p" param="plugin.modMain.modDrumfell.dcfilter-params.name"/>
      <core:object name="p" param="plugin.modMain.modDrumfell.dcfilter-params.freq"/>
    </ui:param-group-controller>
  </core:object>
  <test:control name="knob"><ui:ui-param name="p" bridge="shared.gain" group-selector="shared.group"/></test:control>
  <test:control name="readout"><ui:ui-param name="p" bridge="shared.gain"/></test:control>
  <test:control name="out"><ui:ui-param name="p" bridge="shared.out"/></test:control>
  <test:control name="second"><ui:ui-param name="p" bridge="shared.route" element="1"/></test:control>
  <test:control name="all"><ui:ui-param name="p" bridge="shared.route" element-offset="1" element-count="0"
    is-replacing="true"/></test:control>
  <test:control name="solo"><ui:ui-param name="p" bridge="shared.solo"
    element="{*/shared.group group-index}"/></test:control>
  <test:control name="name"><ui:ui-param name="p" bridge="shared.names" element="2"/></test:control>
  <test:control name="level"><ui:ui-param name="p" shared-attribute="shared.setting.level"/></test:control>
  <test:control name="flag"><ui:ui-param name="p" shared-attribute="shared.setting.flag"/></test:control>
  <test:control name="mode"><ui:ui-param name="p" shared-attribute="shared.setting.mode"
    shared-attribute-value="a"/></test:control>
)";

class ParamBinding : public InstanceFixture
{
protected:
    ParamBinding() : InstanceFixture(kRows), tree_(*host_, kTree) { takeAll(); }

    CUIParam& param(const std::string& control) { return tree_.at<CUIParam>((control + ".p").c_str()); }
    Lines shown(const char* control)
    {
        tree_.settle();
        return tree_.at<TestControl>(control).take();
    }
    void takeAll()
    {
        for (const char* control :
             {"knob", "readout", "out", "second", "all", "solo", "name", "level", "flag", "mode"}) {
            first_[control] = shown(control);
        }
        host_->calls.clear();
    }
    std::vector<CString> history() { return tree_.client().getHistory().steps; }
    void undo()
    {
        const record::CHistoryState& now = tree_.client().getHistory();
        EXPECT_OK(tree_.client().send(record::CMoveHistory{now.position - 1}));
        tree_.settle();
    }

    EditorTree tree_;
    std::map<std::string, Lines> first_;
};

TEST_F(ParamBinding, ControlsHaveTheirValuesAsSoonAsTheyStand)
{
    EXPECT_EQ(first_["knob"], (Lines{"added", "info", "0.0"}));
    EXPECT_EQ(first_["second"], (Lines{"added", "info", "Reserve"}));
    EXPECT_EQ(param("second").getValue(0), 2.0);
    EXPECT_EQ(param("all").getElementCount(), 7);
    EXPECT_EQ(first_["name"].back(), "3");
    EXPECT_EQ(param("knob").getUnit(0), "dB");
    EXPECT_NEAR(param("knob").getDefaultNorm(0), param("knob").getNorm(0), 1e-12);
}

TEST_F(ParamBinding, AControlShowsWhatCameBackAndOnlyItsOwnElement)
{
    CUIParam& knob = param("knob");
    EXPECT_OK(knob.setText(0, "+6.5 dB"));
    EXPECT_EQ(knob.getText(0), "0.0") << "not before the audio side has it";
    EXPECT_EQ(shown("knob"), Lines{"6.5"});
    EXPECT_EQ(shown("readout"), Lines{"6.5"});
    EXPECT_EQ(shown("second"), Lines{});
    EXPECT_FAILS(knob.setText(0, "loud"), "'loud' is no value of");
    EXPECT_OK(knob.setNorm(0, 7.0));
    EXPECT_OK(param("second").setValue(0, 5.0));
    EXPECT_OK(param("name").setText(0, "Toms"));
    tree_.settle();
    EXPECT_EQ(knob.getNorm(0), 1.0);
    EXPECT_EQ(host_->get("io-params.in-routing", 0, 1), 5.0);
    EXPECT_EQ(host_->get("io-params.in-routing", 0, 0), 1.0);
    EXPECT_EQ(shown("name"), Lines{"Toms"});
    EXPECT_EQ(history().back(), "Group names change");
}

TEST_F(ParamBinding, AGestureIsOneStepAndOnePairOfCallsForTheHost)
{
    CUIParam& knob = param("knob");
    CUIParam& readout = param("readout");
    EXPECT_OK(knob.beginEdit());
    EXPECT_OK(readout.beginEdit());
    for (const double norm : {0.6, 0.7, 0.8}) {
        EXPECT_OK(knob.setNorm(0, norm));
        tree_.settle();
    }
    EXPECT_OK(readout.endEdit());
    EXPECT_OK(knob.endEdit());
    EXPECT_EQ(host_->calls, (Lines{"begin 5", "end 5"}));
    EXPECT_NEAR(knob.getNorm(0), 0.8, 1e-12);
    EXPECT_EQ(history(), (std::vector<CString>{"Undo history start", "LF gain (1) change"}));
    // The same knob goes on with its step, another one in between ends it.
    const auto drag = [&](CUIParam& dragged, double norm) {
        EXPECT_OK(dragged.beginEdit());
        EXPECT_OK(dragged.setNorm(0, norm));
        EXPECT_OK(dragged.endEdit());
        tree_.settle();
    };
    drag(knob, 0.7);
    EXPECT_EQ(history().size(), 2U);
    drag(param("out"), 0.6);
    drag(knob, 0.8);
    EXPECT_EQ(history().size(), 4U);
    host_->calls.clear();
    // Clicks are steps of their own.
    EXPECT_OK(knob.setNorm(0, 0.1));
    EXPECT_OK(knob.setNorm(0, 0.2));
    EXPECT_OK(knob.resetToDefault(0));
    tree_.settle();
    EXPECT_EQ(host_->calls.size(), 6U);
    EXPECT_EQ(history().size(), 7U);
    EXPECT_EQ(history().back(), "LF gain (1) reset");
    undo();
    EXPECT_NEAR(knob.getNorm(0), 0.2, 1e-12);
    knob.setUndoDisabled(true);
    EXPECT_OK(knob.setNorm(0, 0.3));
    tree_.settle();
    EXPECT_EQ(history().size(), 7U);
}

TEST_F(ParamBinding, AutomationMovesTheControlButNotUnderTheHand)
{
    CUIParam& knob = param("knob");
    CAudioExtParam& automated =
        *host_->getExtParams().get(host_->getExtParams().find(host_->param("modDrumfell.lf-gain"), 0, 0));
    const auto automate = [&](double norm) {
        automated.postNormalized(norm);
        EXPECT_OK(tree_.client().send(record::CGetViz{}));
        tree_.settle();
    };
    automate(0.25);
    EXPECT_NEAR(knob.getNorm(0), 0.25, 1e-9);
    EXPECT_OK(knob.beginEdit());
    automate(0.3);
    EXPECT_NEAR(knob.getNorm(0), 0.25, 1e-9);
    EXPECT_OK(knob.setNorm(0, 0.9));
    automate(0.35);
    EXPECT_NEAR(knob.getNorm(0), 0.9, 1e-9) << "what the hand wrote came back in between";
    EXPECT_NEAR(param("readout").getNorm(0), 0.9, 1e-9);
    EXPECT_OK(knob.resetToDefault(0));
    EXPECT_OK(knob.endEdit());
    EXPECT_NEAR(knob.getNorm(0), 0.5, 1e-9);
    automate(0.4);
    EXPECT_NEAR(knob.getNorm(0), 0.4, 1e-9);
}

TEST_F(ParamBinding, AnotherGroupShowsItsValuesAtOnceAndTakesNothingFromAnOldGesture)
{
    CUIParam& knob = param("knob");
    EXPECT_OK(knob.setText(0, "3"));
    EXPECT_EQ(shown("knob"), Lines{"3.0"});
    EXPECT_OK(knob.beginEdit());
    tree_.set("shared.group", "group-index", "4");
    EXPECT_EQ(tree_.at<TestControl>("knob").take(), Lines{"0.0"}) << "never written";
    EXPECT_OK(knob.setNorm(0, 0.9));
    EXPECT_OK(knob.endEdit());
    tree_.settle();
    EXPECT_EQ(host_->get("modDrumfell.lf-gain", 4), 1.0);
    EXPECT_OK(knob.setNorm(0, 0.9));
    EXPECT_EQ(shown("knob").size(), 1U);
    EXPECT_EQ(history().back(), "LF gain (5) change");
    tree_.set("shared.group", "group-index", "0");
    EXPECT_EQ(tree_.at<TestControl>("knob").take(), Lines{"3.0"});
    EXPECT_EQ(shown("readout"), Lines{"3.0"}) << "a control without a selector stays with its group";
}

TEST_F(ParamBinding, AnElementMayFollowTheSelectedGroup)
{
    CUIParam& solo = param("solo");
    tree_.set("shared.group", "group-index", "2");
    EXPECT_OK(solo.setValue(0, 1.0));
    tree_.settle();
    EXPECT_TRUE(solo.isActive());
    EXPECT_EQ(host_->get("io-params.channel-group-solo", 0, 2), 1.0);
    EXPECT_EQ(host_->get("io-params.channel-group-solo", 0, 0), 0.0);
    tree_.set("shared.group", "group-index", "1");
    EXPECT_FALSE(solo.isActive());
    EXPECT_EQ(host_->get("io-params.channel-group-solo", 0, 2), 1.0);
}

TEST_F(ParamBinding, AReplacingWindowWritesAllOfIt)
{
    host_->set("io-params.in-routing", 7.0, 0, 7);
    tree_.settle();
    CUIParam& all = param("all");
    EXPECT_EQ(all.getValue(6), 7.0);
    EXPECT_OK(all.setValue(0, 9.0));
    tree_.settle();
    EXPECT_EQ(host_->get("io-params.in-routing", 0, 1), 9.0);
    EXPECT_EQ(host_->get("io-params.in-routing", 0, 7), 7.0);
    EXPECT_EQ(host_->get("io-params.in-routing", 0, 0), 1.0);
    EXPECT_EQ(host_->param("io-params.in-routing").getCurrent().getCount(0), 8);
    tree_.set("all.p", "element-offset", "6");
    EXPECT_EQ(tree_.at<TestControl>("all").take().front(), "Reserve");
    EXPECT_EQ(all.getElementCount(), 2);
}

TEST_F(ParamBinding, CopyAndResetOfAGroupAreOneStepEach)
{
    EXPECT_OK(param("knob").setText(0, "3"));
    EXPECT_OK(param("out").setText(0, "-2"));
    host_->set("modDrumfell.dcfilter-params.freq", 20.0);
    CAudioParam& filterName = host_->param("modDrumfell.dcfilter-params.name");
    const CString nameBefore = filterName.getString(2, 0);
    CAudioParamContext context(CAudioParamOrigin::kActivation);
    filterName.setString(0, 0, "Gentle", context);
    tree_.settle();
    CParamGroupController& groups = tree_.at<CParamGroupController>("shared.groups");
    EXPECT_OK(groups.notifyTo("shared.groups", "copy-group", {{"index", CAttrValue(2)}}, false));
    tree_.settle();
    EXPECT_EQ(host_->get("modDrumfell.lf-gain", 2), host_->get("modDrumfell.lf-gain", 0));
    EXPECT_EQ(host_->get("modOutGain.gain", 2), host_->get("modOutGain.gain", 0));
    EXPECT_EQ(host_->get("modDrumfell.dcfilter-params.freq", 2), 20.0);
    EXPECT_EQ(filterName.getString(2, 0), "Gentle");
    EXPECT_EQ(host_->param("io-params.in-routing").getCurrent().getGroupCount(), 1);
    EXPECT_EQ(history().size(), 4U);
    EXPECT_EQ(history().back(), "Group (3) copy");
    EXPECT_OK(groups.notifyTo("shared.groups", "reset-group", {}, false));
    tree_.settle();
    EXPECT_EQ(history().back(), "Group (1) reset");
    EXPECT_EQ(host_->get("modDrumfell.lf-gain", 0), 1.0);
    EXPECT_NE(host_->get("modDrumfell.lf-gain", 2), 1.0);
    undo();
    undo();
    EXPECT_EQ(host_->get("modDrumfell.lf-gain", 2), 1.0);
    EXPECT_EQ(filterName.getString(2, 0), nameBefore);
    EXPECT_OK(tree_.client().send(record::CMoveHistory{3}));
    tree_.settle();
    EXPECT_EQ(filterName.getString(2, 0), "Gentle");
    undo();
    EXPECT_EQ(shown("knob").back(), "3.0");
    EXPECT_OK(groups.copyGroup(0, 8));
    EXPECT_OK(groups.copyGroup(0, 0));
    tree_.settle();
    EXPECT_EQ(tree_.client().getHistory().position, 2);
}

TEST_F(ParamBinding, ASettingTakesThePlaceOfAParameter)
{
    EXPECT_EQ(first_["level"].back(), "0.25");
    EXPECT_EQ(param("level").getNorm(0), 0.25);
    EXPECT_OK(param("level").setNorm(0, 0.7));
    EXPECT_EQ(tree_.at<TestControl>("level").take(), Lines{"0.7000"});
    EXPECT_OK(param("level").resetToDefault(0));
    EXPECT_EQ(param("level").getNorm(0), 0.25);
    EXPECT_OK(param("flag").setNorm(0, 1.0));
    EXPECT_EQ(tree_.at<TestControl>("flag").take(), Lines{"true"});
    EXPECT_TRUE(param("flag").isActive());
    EXPECT_FALSE(param("mode").isActive());
    EXPECT_OK(param("mode").setNorm(0, 1.0));
    EXPECT_TRUE(param("mode").isActive());
    EXPECT_OK(param("mode").setNorm(0, 0.0));
    EXPECT_TRUE(param("mode").isActive()) << "until another one is chosen";
    // Another instance in the process shares it.
    EditorTree other(*host_, kTree);
    EXPECT_TRUE(other.at<CUIParam>("mode.p").isActive());
    EXPECT_OK(other.at<CUIParam>("level.p").setNorm(0, 1.0));
    tree_.settle();
    EXPECT_EQ(param("level").getNorm(0), 1.0);
}

TEST_F(ParamBinding, StateSwitchesWatchAParameterOfTheirGroupAndWhatAControlIsBoundTo)
{
    host_->set("io-params.in-routing", 6.0, 0, 3);
    const std::string attrs = R"( target="w" active-attrs="hint=on" inactive-attrs="hint=off")";
    const auto hintOf = [&](const std::string& watched, auto&& change) {
        EditorTree tree(*host_, std::string(kTree) +
                                    R"(<ui:view name="w" is-root-view="true" width="9" height="9">
            <ui:view-state-switch name="s")" +
                                    attrs + watched + "/></ui:view>");
        CView& view = tree.at<CView>("w");
        EXPECT_OK(view.announceContentReady());
        const std::string before = view.getHint().toUtf8();
        change(tree);
        tree.settle();
        return before + " " + view.getHint().toUtf8();
    };
    const auto nothing = [](EditorTree&) {};
    EXPECT_EQ(hintOf(R"( bridge="shared.route" element="3" value="6")", nothing), "on on");
    EXPECT_EQ(hintOf(R"( bridge="shared.gain" group-selector="shared.group" value="2")",
                     [&](EditorTree& tree) {
                         host_->set("modDrumfell.lf-gain", 2.0, 1);
                         tree.settle();
                         tree.set("shared.group", "group-index", "1");
                     }),
              "off on");
    EXPECT_EQ(hintOf(R"( ui-param="second.p" value="2")",
                     [&](EditorTree& tree) {
                         EXPECT_OK(tree.at<CUIParam>("second.p").setValue(0, 4.0));
                         tree.settle();
                         CObject::releaseObject(&tree.at<CObject>("second"));
                     }),
              "on off");
    EXPECT_EQ(hintOf(R"( ui-param="mode.p" value="1")",
                     [](EditorTree& tree) { tree.set("shared.setting", "mode", "a"); }),
              "off on");
}

} // namespace
} // namespace qel::test
