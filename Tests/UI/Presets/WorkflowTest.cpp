// What a user does with presets and groups, in the windows as they are delivered.
#include "EditorRig.h"

namespace qel::test {
namespace {

class Workflow : public InstanceFixture
{
protected:
    static constexpr const char* kBanks = ".c.banks.lists.list";
    static constexpr const char* kPresets = ".c.presets.lists.list";

    Workflow() { host_.reset(); }

    static std::string program(EditorRig& editor, std::int32_t index)
    {
        return editor.host.getRegistry().getProgramName(index).toUtf8();
    }
};

TEST_F(Workflow, APresetIsLoadedTurnedUndoneComparedKeptAndFoundAgain)
{
    EditorRig editor;
    EditorRig neighbour; // a second instance with its own window, which is to notice nothing
    editor.clickMain("buttons.quick-preset-list");
    const std::string banks = editor.topWindow();
    editor.clickItem(banks + ".c.list", 0);
    editor.clickItem(editor.topWindow() + ".c.list", 2);
    EXPECT_NEAR(editor.host.get("modDrumfell.xover-freq"), 100.4, 0.1);
    EXPECT_EQ(editor.topWindow(), "ui.main-window") << "lists close with the choice";

    const double gain = editor.host.get("modDrumfell.lf-gain");
    editor.drag("ui.main-window.c.mix.lfgain.knob-base", 20.0);
    EXPECT_GT(editor.host.get("modDrumfell.lf-gain"), gain);
    editor.drag("ui.main-window.c.mix.subgain.knob-base", 20.0);
    editor.drag("ui.main-window.c.out.knobs.outgain.knob-base", 20.0);
    const double turned = editor.host.get("modDrumfell.lf-gain");
    const double sub = editor.host.get("modDrumfell.sub-gain");
    editor.clickMain("buttons.history.button-undo");
    editor.clickMain("buttons.history.button-undo");
    EXPECT_EQ(editor.host.get("modOutGain.gain"), 1.0);
    EXPECT_LT(editor.host.get("modDrumfell.sub-gain"), sub);
    EXPECT_EQ(editor.host.get("modDrumfell.lf-gain"), turned);
    EXPECT_EQ(editor.attr("ui.main-window.c.buttons.history.button-select", "title"), "LF gain (1) change");

    editor.clickMain("buttons.copy");
    editor.clickMain("buttons.ab");
    editor.clickMain("buttons.reset");
    EXPECT_EQ(editor.host.get("modDrumfell.lf-gain"), 1.0);
    editor.clickMain("buttons.ab");
    EXPECT_EQ(editor.host.get("modDrumfell.lf-gain"), turned);

    editor.clickMain("buttons.preset-manager");
    const std::string manager = editor.topWindow();
    const std::int32_t count = editor.host.getRegistry().getProgramCount();
    editor.click(manager + ".c.presets.buttons.add");
    ASSERT_EQ(editor.host.getRegistry().getProgramCount(), count + 1);
    editor.clickItem(manager + kPresets, 11); // marked already, at the bottom of what is shown
    editor.type(U"Chorus");
    EXPECT_EQ(program(editor, count), "Chorus");

    // The session is saved, and opened again.
    CByteBuffer chunk;
    ASSERT_OK(editor.host.saveChunk(chunk, false, true));
    EditorRig reopened;
    ASSERT_OK(reopened.host.loadChunk(chunk.bytes(), false, true));
    EXPECT_EQ(program(reopened, count), "Chorus");
    reopened.wait();
    EXPECT_NEAR(reopened.host.get("modDrumfell.lf-gain"), turned, 1e-12);
    EXPECT_EQ(neighbour.host.getRegistry().getProgramCount(), count);
    EXPECT_EQ(neighbour.host.get("modDrumfell.xover-freq"), 100.0);
}

TEST_F(Workflow, ABankGoesThroughAFileToAnotherInstanceAndIsDeletedOnlyWhenConfirmed)
{
    EditorRig editor;
    editor.clickMain("buttons.preset-manager");
    const std::string manager = editor.topWindow();
    editor.clickItem(manager + kBanks, 0);
    EXPECT_TRUE(editor.at<CView>(manager + ".c.presets.buttons.add").actsDisabled());
    editor.click(manager + ".c.banks.buttons.save");
    const std::string folder = home_.root().string() + "/";
    const std::string dialog = editor.topWindow();
    ASSERT_NE(dialog, manager);
    editor.click(dialog + ".c.field.path");
    editor.user().key(platform::key::kHome);
    editor.user().setModifiers({.isShift = true});
    editor.user().key(platform::key::kEnd);
    editor.user().setModifiers({});
    const std::string file = folder + "Drumfell Factory ROM.cbf";
    editor.type(std::u32string(file.begin(), file.end()));
    editor.click(dialog + ".c.buttons.confirm");
    EXPECT_EQ(editor.topWindow(), manager);
    EXPECT_TRUE(std::filesystem::exists(file));

    EditorRig other;
    other.clickMain("buttons.preset-manager");
    const std::string otherManager = other.topWindow();
    EXPECT_OK(sendEvent(other.at<CObject>(otherManager), "perform-bank-load",
                        {{"filename", CAttrValue(CString(file))}}));
    other.wait();
    editor.wait();
    EXPECT_EQ(other.at<CTextView>(otherManager + kBanks).getItemCount(), 3);
    EXPECT_EQ(editor.at<CTextView>(manager + kBanks).getItemCount(), 3) << "at once in all windows";
    EXPECT_EQ(other.at<CTextView>(otherManager + kBanks).getParagraphText(2), "Factory ROM 2");

    for (const bool isConfirmed : {false, true}) {
        other.click(otherManager + ".c.banks.buttons.delete");
        const std::string question = other.topWindow();
        ASSERT_NE(question, otherManager);
        other.click(question + (isConfirmed ? ".c.buttons.confirm" : ".c.buttons.close"));
        EXPECT_EQ(other.at<CTextView>(otherManager + kBanks).getItemCount(), isConfirmed ? 2 : 3);
    }

    EXPECT_OK(sendEvent(other.at<CObject>(otherManager), "perform-bank-load",
                        {{"filename", CAttrValue("/none.cbf")}}));
    other.wait();
    EXPECT_EQ(other.attr(other.topWindow() + ".c.message", "title"), "The bank could not be read.");
}

// Inputs 3 and 4 become a second group with a name and a sound of its own.
TEST_F(Workflow, InputsAreRoutedToAGroupThatIsNamedSoloedAndCopiedTo)
{
    EditorRig editor;
    CAudioHostSetup setup;
    setup.sampleRateHz = 48000.0;
    setup.inputCount = 4;
    setup.outputCount = 4;
    editor.host.suspend();
    editor.host.resume(setup);
    editor.wait();
    const auto pick = [&](const std::string& button, int index) {
        editor.click(button);
        editor.clickItem(editor.topWindow() + ".c.list", index);
    };
    editor.clickMain("buttons.channel-routing");
    const std::string routing = editor.topWindow();
    for (const int channel : {2, 3}) {
        const std::string item = ".array.item#" + std::to_string(channel) + ".button";
        pick(routing + ".c.in-routing" + item, channel + 1);
        pick(routing + ".c.out-routing" + item, channel + 1);
        EXPECT_EQ(editor.host.get("io-params.in-routing", 0, channel), channel + 1.0);
        EXPECT_EQ(editor.host.get("io-params.out-routing", 0, channel), channel + 1.0);
    }
    EXPECT_EQ(editor.attr(routing + ".c.in-routing.array.item#3.button", "title"), "IN4");
    editor.click(routing + ".c.buttons.group-names");
    const std::string names = editor.topWindow();
    editor.click(names + ".c.names.array.item#1.name");
    editor.type(U"Toms");
    editor.click(names + ".window-title.close");
    editor.click(routing + ".window-title.close");
    ASSERT_EQ(editor.topWindow(), "ui.main-window");

    editor.drag("ui.main-window.c.mix.lfgain.knob-base", 20.0);
    const double gain = editor.host.get("modDrumfell.lf-gain", 0);
    pick("ui.main-window.c.bottom-frame.copy", 1);
    EXPECT_EQ(editor.host.get("modDrumfell.lf-gain", 1), gain);
    EXPECT_EQ(editor.attr("ui.main-window.c.buttons.history.button-select", "title"), "Group (Toms) copy");
    editor.click("ui.main-window.c.bottom-frame.group-selector.button#1");
    EXPECT_EQ(editor.attr("ui.main-window.c.bottom-frame.group-label", "title"), "IN3, IN4");
    editor.clickMain("bottom-frame.solo");
    EXPECT_EQ(editor.host.get("io-params.channel-group-solo", 0, 1), 1.0);
    EXPECT_EQ(editor.host.get("io-params.channel-group-solo", 0, 0), 0.0);
    editor.drag("ui.main-window.c.mix.lfgain.knob-base", -20.0);
    EXPECT_EQ(editor.host.get("modDrumfell.lf-gain", 0), gain);
    EXPECT_LT(editor.host.get("modDrumfell.lf-gain", 1), gain);
    editor.clickMain("bottom-frame.reset");
    EXPECT_EQ(editor.host.get("modDrumfell.lf-gain", 1), 1.0);
    EXPECT_EQ(editor.host.get("modDrumfell.lf-gain", 0), gain);
}

} // namespace
} // namespace qel::test
