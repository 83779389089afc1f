// What a user does with presets, groups and settings, from the first click to the next start of the host.
#include "EditorRig.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <span>

namespace qel {
namespace {

const std::string kMain = "ui.main-window.c.";
const std::string kManager = "--window ui:win-preset-manager";
const std::string kManagerPath = "win-preset-manager.c.";
const std::string kPresetLines = kManagerPath + "presets.lists.list";
const std::string kSaveBank = kManager + " --click " + kManagerPath + "banks.buttons.save";
const std::string kRouting = "--window ui:win-channel-routing";
const std::string kRoutingPath = "win-channel-routing.c.";
const std::string kNames = "--window ui:win-group-name-setup";
const std::string kSettings = "--window ui:win-settings";
const std::string kList = "--click " + kMain + "buttons.quick-preset-list";

constexpr int kLinePx = 19;     // of a list
constexpr int kFactoryBank = 0; // lines of the list of banks
constexpr int kLoadedBank = 2;
constexpr int kPreset = 1; // of the factory, and its crossover
constexpr const char* kPresetFreq = "109";

// A host with two instances, both of them open beside each other, for a user who has just begun.
class Workflow : public test::EditorTest
{
protected:
    Workflow() : EditorTest("1480x900x24")
    {
        test::dataFolder = folder_.root().string();
        // No dialogs for files but ours.
        setenv("PATH", "", 1);
        setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
        start();
    }
    ~Workflow() override
    {
        end();
        setenv("PATH", path_.c_str(), 1);
    }

    void start()
    {
        for (int i = 0; i < 2; ++i) {
            hosts_[i] = std::make_unique<test::EditorHost>(client, 20 + 720 * i, 20);
            hosts_[i]->host().start();
        }
        hosts_[0]->neighbour = hosts_[1].get();
        hosts_[1]->neighbour = hosts_[0].get();
        workIn(0);
        openEditors();
    }
    void openEditors()
    {
        for (auto& host : hosts_) {
            ASSERT_TRUE(host->open());
        }
        idle();
    }
    void closeEditors()
    {
        for (auto& host : hosts_) {
            host->close();
        }
    }
    void end()
    {
        for (auto& host : hosts_) {
            host.reset();
        }
        test::unloadLibrary();
    }
    // The host ends with its session saved, and opens it again.
    void restart()
    {
        const test::Bytes sessions[] = {host(0).chunk(false), host(1).chunk(false)};
        end();
        start();
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(host(i).load(sessions[i], false), 1);
        }
        idle(60);
    }

    test::Host& host(int index) { return hosts_[index]->host(); }
    void workIn(int index) { editor = hosts_[index].get(); }
    // Until what was asked for has come about, however slow the machine.
    void idle(int turns = 15)
    {
        editor->idleUntil([&] { return --turns == 0; }, 30.0);
    }

    test::ViewPlace at(const std::string& path, const std::string& window = {}) const
    {
        return test::placeOf(path, window + scale_);
    }

    // --- the main window
    void click(const std::string& path)
    {
        editor->click(at(kMain + path));
        idle();
    }
    void drag(const std::string& knob, int upPx) { editor->drag(at(kMain + knob + ".knob-base"), upPx); }
    // What opens something.
    void open(const std::string& path)
    {
        const std::size_t before = popups().size();
        editor->click(at(kMain + path));
        EXPECT_TRUE(editor->idleUntil([&] { return popups().size() > before; })) << path;
        idle();
    }

    // --- the window that was opened last, and how to come to it
    void click(const std::string& window, const std::string& path)
    {
        editor->clickIn(popups().back(), at(path, window));
        idle();
    }
    void clickLine(const std::string& window, const std::string& list, int line)
    {
        test::ViewPlace place = at(list, window);
        place.y += kLinePx * line;
        place.width = place.height = kLinePx; // lists may be as narrow as their texts
        editor->clickIn(popups().back(), place);
        idle();
    }
    void clickListed(int line) { clickLine(kList, "window-app-popup-list.c.list", line); }
    void clickBank(int line) { clickLine(kManager, kManagerPath + "banks.lists.list", line); }
    void closeDialog(const std::string& window, const std::string& root)
    {
        const std::size_t before = popups().size();
        click(window, root + ".window-title.close");
        EXPECT_EQ(popups().size(), before - 1) << root;
    }
    // Instead of what is there, once the keyboard is ours.
    void type(const std::string& text)
    {
        EXPECT_TRUE(editor->idleUntil(
            [&] { return client.focus() > XCB_INPUT_FOCUS_POINTER_ROOT && !client.isOwn(client.focus()); }));
        constexpr int kCtrlKey = 37;
        client.pressKey(kCtrlKey);
        client.typeText("a");
        client.releaseKey(kCtrlKey);
        client.typeText(text);
        idle(5);
        constexpr int kEnterKey = 36;
        client.type(kEnterKey);
        idle();
    }
    void answerPath(const std::string& path)
    {
        click(kSaveBank, "win-file-path.c.field.path");
        type(path);
        click(kSaveBank, "win-file-path.c.buttons.confirm");
    }

    // --- what came of it
    std::string display(int parameter) { return editor->host().text(vst24::kGetParamDisplay, 8, parameter); }
    float value(int parameter) { return editor->host().get(parameter); }
    std::vector<std::string> programs()
    {
        std::vector<std::string> names;
        for (int i = 0; editor->host().call(vst24::kGetProgramNameIndexed, i, -1, names_); ++i) {
            names.emplace_back(names_);
        }
        return names;
    }
    std::vector<std::uint8_t> picture(const std::string& path)
    {
        client.movePointer(1470, 890);
        idle(60);
        return client.pixelsOf(editor->editor(), at(path));
    }
    // How loud each output is while the same sound comes in at all four inputs.
    std::vector<float> levels()
    {
        const test::Channels<float> sound(4, test::drums<float>(24000)[0]);
        std::vector<float> peaks;
        for (const auto& channel : editor->host().run<float>(sound, {512})) {
            const std::span<const float> settled(channel.begin() + 12000, channel.end());
            peaks.push_back(std::abs(std::ranges::max(settled, {}, [](float x) { return std::abs(x); })));
        }
        return peaks;
    }

    const test::TemporaryFolder folder_;
    test::EditorHost* editor = nullptr; // of the instance that the user works in
    std::string scale_;                 // as an argument

private:
    const std::string path_ = std::getenv("PATH");
    std::unique_ptr<test::EditorHost> hosts_[2];
    char names_[64] = {};
};

// Places among the host's parameters.
constexpr int kFreq = 2;
constexpr int kLFGain = 5;
constexpr int kMixGain = 18;
constexpr int kOutGain = 23;

TEST_F(Workflow, APresetIsLoadedTurnedUndoneComparedKeptAndFoundAfterARestart)
{
    open("buttons.quick-preset-list");
    clickListed(kFactoryBank);
    clickListed(kPreset);
    EXPECT_TRUE(popups().empty()) << "lists close with the choice";
    EXPECT_EQ(display(kFreq), kPresetFreq);

    const float loaded[] = {value(kLFGain), value(kMixGain), value(kOutGain)};
    drag("mix.lfgain", 20);
    drag("mix.mixgain", 20);
    drag("out.knobs.outgain", 20);
    const float turned = value(kLFGain);
    EXPECT_GT(turned, loaded[0]);
    EXPECT_GT(value(kOutGain), loaded[2]);
    click("buttons.history.button-undo");
    click("buttons.history.button-undo");
    EXPECT_EQ(value(kOutGain), loaded[2]);
    EXPECT_EQ(value(kMixGain), loaded[1]);
    EXPECT_EQ(value(kLFGain), turned);

    click("buttons.copy");
    click("buttons.ab");
    click("buttons.reset");
    EXPECT_NE(value(kLFGain), turned);
    click("buttons.ab");
    EXPECT_EQ(value(kLFGain), turned);

    open("buttons.preset-manager");
    const std::size_t count = programs().size();
    click(kManager, kManagerPath + "presets.buttons.add");
    ASSERT_EQ(programs().size(), count + 1);
    clickLine(kManager, kPresetLines, 11); // marked already, at the bottom of what is shown
    type("Chorus");
    EXPECT_EQ(programs().back(), "Chorus");
    closeDialog(kManager, "win-preset-manager");

    const auto knobs = picture(kMain + "mix");
    const auto names = programs();
    restart();
    EXPECT_EQ(programs(), names);
    EXPECT_EQ(display(kFreq), kPresetFreq);
    EXPECT_EQ(value(kLFGain), turned);
    EXPECT_EQ(picture(kMain + "mix"), knobs);
    workIn(1);
    EXPECT_EQ(programs().size(), count) << "the other instance has noticed nothing";
    EXPECT_EQ(display(kFreq), "100");
}

// Inputs 3 and 4 become a second group with a name and a sound of its own.
TEST_F(Workflow, InputsAreRoutedToAGroupThatIsNamedSoloedAndCopiedTo)
{
    EXPECT_EQ(levels()[2], 0.0f);
    open("buttons.channel-routing");
    for (const int channel : {2, 3}) {
        for (const char* side : {"in", "out"}) {
            click(kRouting,
                  kRoutingPath + side + "-routing.array.item#" + std::to_string(channel) + ".button");
            clickListed(channel + 1);
        }
    }
    click(kRouting, kRoutingPath + "buttons.group-names");
    const std::string name = "win-group-name-setup.c.names.array.item#1.name";
    const auto shownName = [&] { return client.pixelsOf(popups().back(), at(name, kNames)); };
    const auto unnamed = shownName();
    click(kNames, name);
    type("Toms");
    const auto named = shownName();
    EXPECT_NE(named, unnamed);
    closeDialog(kNames, "win-group-name-setup");
    closeDialog(kRouting, "win-channel-routing");
    EXPECT_GT(levels()[2], 0.0f);

    drag("mix.lfgain", 20);
    EXPECT_GT(levels()[0], levels()[2]) << "a group's knob turns that group alone";
    open("bottom-frame.copy");
    clickListed(1);
    EXPECT_NEAR(levels()[0], levels()[2], 1e-4f);
    click("bottom-frame.group-selector.button#1");
    click("bottom-frame.solo");
    EXPECT_LT(levels()[0], 1e-6f);
    EXPECT_GT(levels()[2], 0.1f);

    const auto group = picture(kMain + "mix");
    restart();
    EXPECT_GT(levels()[0], 0.1f) << "a solo ends with the session";
    EXPECT_GT(levels()[2], 0.1f);
    click("bottom-frame.group-selector.button#1");
    EXPECT_EQ(picture(kMain + "mix"), group);
    open("buttons.channel-routing");
    click(kRouting, kRoutingPath + "buttons.group-names");
    EXPECT_EQ(shownName(), named);
    workIn(1);
    EXPECT_GT(levels()[0], 0.0f);
    EXPECT_EQ(levels()[2], 0.0f);
}

TEST_F(Workflow, AValueIsTypedAndTheHostHasItsKeysBack)
{
    client.setFocus(editor->window());
    editor->click(at(kMain + "upper.xover.freq.knob-base"));
    client.click(1);
    type("80");
    EXPECT_EQ(display(kFreq), "80.0");
    EXPECT_EQ(client.focus(), editor->window());
    workIn(1);
    EXPECT_EQ(display(kFreq), "100");
}

TEST_F(Workflow, ABankGoesThroughAFileToAnotherInstance)
{
    const std::string file = folder_.path("Kicks and toms.cbf");
    open("buttons.preset-manager");
    clickBank(kFactoryBank);
    click(kManager, kManagerPath + "banks.buttons.save");
    answerPath(file);
    EXPECT_TRUE(std::filesystem::exists(file));
    closeDialog(kManager, "win-preset-manager");

    workIn(1);
    open("buttons.preset-manager");
    click(kManager, kManagerPath + "banks.buttons.load");
    answerPath(file);
    clickBank(kLoadedBank);
    clickLine(kManager, kPresetLines, kPreset);
    click(kManager, kManagerPath + "presets.buttons.activate");
    EXPECT_EQ(display(kFreq), kPresetFreq);
    workIn(0);
    EXPECT_EQ(display(kFreq), "100");
}

TEST_F(Workflow, ColoursFollowAtOnceAndTheSizeWithTheNextWindow)
{
    const std::string settings = "win-settings.c.settings.";
    const auto widthOf = [&](int index) {
        workIn(index);
        return client.geometryOf(editor->editor())->width;
    };
    int width = 540;
    const struct
    {
        const char* scale;
        const char* button;
        int width;
        int height;
    } scales[] = {{"0.8", "button", 432, 298}, {"1.25", "button#2", 675, 466}, {"1.0", "button#1", 540, 373}};
    for (const auto& each : scales) {
        open("buttons.settings");
        EXPECT_FALSE(client.attributesOf(popups()[0])->override_redirect) << "dialogs are managed";
        click(kSettings, settings + "scale.ui-scale-selector." + each.button);
        closeDialog(kSettings, "win-settings");
        EXPECT_EQ(widthOf(0), width) << "what is open stays as it is";
        closeEditors();
        EXPECT_EQ(editor->rect().bottom, each.height);
        openEditors();
        width = each.width;
        EXPECT_EQ(widthOf(1), width);
        EXPECT_EQ(widthOf(0), width);
        scale_ = std::string(" --scale ") + each.scale;
    }

    const test::ViewPlace edge{2, 60, 10, 250}; // which the dialog does not cover
    const auto colours = [&](int index) {
        workIn(index);
        return client.pixelsOf(editor->editor(), edge);
    };
    const auto before = colours(0);
    open("buttons.settings");
    click(kSettings, settings + "colors.palette-selector.button#1");
    const auto chosen = colours(0);
    EXPECT_NE(chosen, before);
    EXPECT_EQ(colours(1), chosen) << "in all windows";
    restart();
    EXPECT_EQ(colours(0), chosen);
}

} // namespace
} // namespace qel
