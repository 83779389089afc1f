// Values that are read and typed, in front of a running instance.
#include "CReadOut.h"
#include "ControlUserFixture.h"
#include "LiteralText.h"

namespace qel::test {
namespace {

constexpr const char* kReadOuts = R"(
  <template name="ui:label" content-tag="ui:textview"/>
  <template name="ui:editbox-popup" content-tag="ui:frame">
    <ui:editbox name="box" placement="full" width="full" height="full" font-name="shared::font.micro"/>
  </template>
  <define name="value" tag="ui:readout" placement="left" width="60" height="20" group-selector="ui.group"
          font-name="shared::font.micro" needs-ui-param-controller="true" is-editbox-on-dblclick="true"
          is-select-all-on-focus="true"/>
  <ui:window-drag name="win" is-root-view="true" width="400" height="100">
    <ui:window-renderer name="window-renderer" is-main-window="true"/>
    <value name="gain" bridge="ui.gain"/>
    <value name="freq" bridge="ui.freq" default-value="90 Hz"/>
    <value name="dry" bridge="ui.dry"/>
    <value name="name" bridge="ui.name"/>
  </ui:window-drag>
)";

class ReadOut : public ControlUserFixture
{
protected:
    ReadOut() : ControlUserFixture(kReadOuts) {}

    std::string shown(const std::string& name) { return plainText(at<CReadOut>(name).getTitle()).toUtf8(); }
    bool isEditing(const std::string& name) { return at<CReadOut>(name).isEditing(); }
    void open(const std::string& name)
    {
        user_->doubleClick(at<CView>(name));
        wait();
        ASSERT_TRUE(isEditing(name));
    }
    void type(const std::string& name, const std::u32string& text)
    {
        open(name);
        user_->type(text);
        user_->key(platform::key::kEnter);
        wait();
        EXPECT_FALSE(isEditing(name));
    }
};

TEST_F(ReadOut, TakesWhatAProducerTypes)
{
    struct Case
    {
        const char* name;
        const char32_t* typed;
        const char* shown;
    };
    const Case cases[] = {
        {"freq", U"1.2k", "1.20 kHz"},     {"freq", U"150 Hz", "150 Hz"},     {"gain", U"+3 dB", "3.0 dB"},
        {"gain", U"-4.5", "-4.5 dB"},      {"dry", U"50 %", "50.0 %"},        {"gain", U"999", "24.0 dB"},
        {"gain", U"loud", "24.0 dB"},      {"freq", U"", "90.0 Hz"},          {"gain", U"", "0.0 dB"},
        {"name", U"Kick [x]", "Kick [x]"}, {"name", U"", "Unnamed instance"},
    };
    for (const Case& one : cases) {
        open(one.name);
        if (*one.typed == 0) {
            user_->key(platform::key::kDelete);
        }
        user_->type(one.typed);
        user_->key(platform::key::kEnter);
        wait();
        EXPECT_EQ(shown(one.name), one.shown);
    }
}

TEST_F(ReadOut, EachTextIsOneStepAndAnUnchangedOneIsNone)
{
    host_->set("modDrumfell.lf-gain", 1.23456);
    wait();
    const std::size_t before = steps();
    type("gain", U"");
    open("gain");
    user_->key(platform::key::kEnter);
    wait();
    EXPECT_NEAR(host_->get("modDrumfell.lf-gain"), 1.23456, 1e-12) << "the text is coarser than the value";
    EXPECT_EQ(steps(), before);
    type("gain", U"6");
    EXPECT_EQ(steps(), before + 1);
    undo();
    EXPECT_EQ(shown("gain"), "1.8 dB");
}

TEST_F(ReadOut, StepsUnderTheEditBoxAndEscapeBringsAllBack)
{
    open("gain");
    user_->key(platform::key::kUp);
    wait();
    EXPECT_NEAR(param("gain").getNorm(0), 0.5316, 1e-4);
    user_->wheel(1.0);
    wait();
    EXPECT_NEAR(param("gain").getNorm(0), 0.5632, 1e-4);
    user_->key(platform::key::kDown);
    wait();
    user_->type(U"12");
    user_->key(platform::key::kEscape);
    wait();
    EXPECT_EQ(param("gain").getNorm(0), 0.5);
    EXPECT_EQ(shown("gain"), "0.0 dB");

    open("gain");
    user_->key(platform::key::kUp);
    wait();
    user_->key(platform::key::kEnter);
    wait();
    EXPECT_NEAR(param("gain").getNorm(0), 0.5316, 1e-4);
}

TEST_F(ReadOut, IsDraggedButNotByATremblingHand)
{
    pointAt("gain", 30.0, 10.0);
    user_->press();
    user_->moveBy(0.0, -2.0);
    user_->release();
    wait();
    EXPECT_EQ(param("gain").getNorm(0), 0.5);
    EXPECT_TRUE(host_->calls.empty());
    pointAt("gain", 30.0, 10.0);
    dragUp(20.0);
    EXPECT_NEAR(param("gain").getNorm(0), 0.5647, 1e-4);
    EXPECT_EQ(host_->calls.size(), 2U);
    hold(true, false);
    pointAt("gain", 30.0, 10.0);
    user_->press();
    user_->release();
    wait();
    EXPECT_EQ(param("gain").getNorm(0), 0.5);
}

} // namespace
} // namespace qel::test
