// Lists that follow parameters and the layout of the channels.
#include "CParamGroupSelector.h"
#include "CValueListAudio.h"
#include "InstanceFixture.h"

namespace qel::test {
namespace {

constexpr const char* kBridges = R"(
  <core:object name="s"><ui:param-group-selector name="group"/>
    <ui:param-bridge name="freq" interface-client="ui.client" param="plugin.modMain.modDrumfell.xover-freq"/>
    <ui:param-bridge name="gain" interface-client="ui.client" param="plugin.modMain.modDrumfell.lf-gain"/>
    <ui:param-bridge name="type" interface-client="ui.client"
      param="plugin.modMain.modDrumfell.dcfilter-params.type"/>
    <ui:param-bridge name="names" interface-client="ui.client" param="plugin.modMain.io-params.group-names"/>
    <ui:param-bridge name="route" interface-client="ui.client" param="plugin.modMain.io-params.in-routing"/>
  </core:object>)";

class ValueLists : public InstanceFixture
{
protected:
    // One list "l" with these attributes.
    void load(const std::string& attributes, const char* tag = "ui:value-list")
    {
        tree_ = std::make_unique<EditorTree>(*host_, std::string(kBridges) + "<" + tag + " name=\"l\" " +
                                                         attributes + "/>");
    }
    CValueList& list() { return tree_->at<CValueList>("l"); }
    std::string text()
    {
        tree_->settle();
        std::string all;
        for (const CDynamicListItem& item : list().getItems()) {
            all += (all.empty() ? "" : "|") + item.text.toUtf8();
        }
        return all;
    }
    std::string textOf(const std::string& attributes)
    {
        load(attributes);
        return text();
    }

    std::unique_ptr<EditorTree> tree_;
};

TEST_F(ValueLists, HoldTextsOfTheTree)
{
    load(R"(values="a,b,c" separator-char="," max-capacity="3" add-empty-value="none")",
         "ui:value-list-manual");
    EXPECT_EQ(text(), "none|a|b");
    EXPECT_EQ(list().getItems()[0].value, -1);
    EXPECT_EQ(list().getItems()[2].value, 1);
    EXPECT_EQ(list().getText(), "none, a, b");
    tree_->set("l", "is-line-break", "true");
    EXPECT_EQ(list().getText(), "none[BR]a[BR]b");
    EXPECT_OK(list().setValues({"x"}));
    EXPECT_EQ(text(), "none|x");
    std::vector<CDynamicListItem> items;
    EXPECT_FAILS(list().getItems("sub", items), "Invalid list identifier sub.");
    EXPECT_EQ(textOf(R"(values="p;q")"), "p|q") << "without a mode";
}

TEST_F(ValueLists, ShowWhatAParameterCanBe)
{
    EXPECT_EQ(textOf(R"(mode="audio-min-max" bridge="s.gain" value-count="3")"), "-24.0|0.0|24.0");
    EXPECT_EQ(textOf(R"(mode="audio-min-max" bridge="s.gain" value-count="3" format-id="knob-circle"
                        format="%1 %2")"),
              "-24 dB|0 dB|24 dB");
    EXPECT_EQ(textOf(R"(mode="audio-min-max" bridge="s.gain" value-count="2" min-value="-6" max-value="6")"),
              "-6.0|6.0");
    const std::string types =
        textOf(R"(mode="audio-enum-value" bridge="s.type" format-id="automation-string")");
    EXPECT_EQ(types.substr(0, 16), "-6|-12sft|-12stp") << types;
    EXPECT_EQ(textOf(R"(mode="audio-enum-value" bridge="s.route" is-hide-reserve="true")"), "");
    host_->set("modDrumfell.lf-gain", 2.0, 1);
    load(R"(mode="audio-param-values" bridge="s.gain" group-selector="s.group")");
    EXPECT_EQ(text(), "0.0");
    tree_->set("s.group", "group-index", "1");
    EXPECT_EQ(text(), "6.0");
    load(R"(mode="audio-param-values" bridge="s.names")");
    EXPECT_EQ(text(), "1|2|3|4|5|6|7|8");
    CAudioParamContext context;
    host_->param("io-params.group-names").setString(0, 1, "Kick", context);
    EXPECT_EQ(text(), "1|Kick|3|4|5|6|7|8");
}

TEST_F(ValueLists, FollowTheChannelsAndTheirRouting)
{
    const std::string client = R"(interface-client="ui.client" group-selector="s.group" )";
    EXPECT_EQ(textOf(client + R"(mode="audio-ins" add-empty-value="---")"), "---|L|R");
    EXPECT_EQ(textOf(client + R"(mode="audio-outs")"), "OUT1|OUT2");
    EXPECT_EQ(textOf(client + R"(mode="audio-channels" format="Ch %1")"),
              "Ch 1|Ch 2|Ch 3|Ch 4|Ch 5|Ch 6|Ch 7|Ch 8");
    EXPECT_EQ(textOf(client + R"(mode="audio-groups" max-capacity="2")"), "1|2");
    EXPECT_EQ(textOf(client + R"(mode="active-groups")"), "1");
    EXPECT_EQ(textOf(client + R"(mode="audio-routing-labels" routing-label-mode="outputs")"),
              "OUT1|OUT2|---|---|---|---|---|---");
    load(client + R"(mode="audio-routing-labels")");
    EXPECT_EQ(text(), "L|R");
    tree_->set("s.group", "group-index", "1");
    EXPECT_EQ(text(), "");
    // A host with more channels, and a route to one of them.
    CAudioHostSetup setup;
    setup.sampleRateHz = 48000.0;
    setup.inputCount = 4;
    setup.outputCount = 2;
    host_->suspend();
    host_->resume(setup);
    EXPECT_EQ(text(), "");
    host_->set("io-params.in-routing", 4.0, 0, 2);
    EXPECT_EQ(text(), "IN4");
    EXPECT_EQ(textOf(client + R"(mode="active-channels")"), "L|R|IN4");
    EXPECT_EQ(list().getItems()[2].value, 2);
    EXPECT_EQ(textOf(client + R"(mode="audio-curgroup")"), "1");
}

} // namespace
} // namespace qel::test
