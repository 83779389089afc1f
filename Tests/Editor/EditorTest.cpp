// The editor in a host, as a user has it before them.
#include "CTestClipboard.h"
#include "EditorRig.h"

namespace qel {
namespace {

using test::EditorHost;
using test::placeOf;

constexpr const char* kBypass = "ui.main-window.window-title.bypass";
constexpr const char* kStatus = "ui.main-window.window-status.label";
constexpr const char* kSettings = "ui.main-window.c.buttons.settings";
constexpr const char* kKnob = "ui.main-window.c.out.knobs.outgain.knob-base";
constexpr const char* kList = "ui.main-window.c.upper.xover.row.param-value-selector";

constexpr const char* kSwitch = "ui.main-window.c.mix.row.sub";
constexpr const char* kFourTimes = "ui.main-window.window-title.quality-selector.item#3.button";
constexpr const char* kMeter = "ui.main-window.c.out.meter.bars.pit.level-meter";

constexpr const char* kName = "ui.main-window.window-title.instance-name";

// Codes of keys.
constexpr int kEscapeKey = 9;
constexpr int kEnterKey = 36;
constexpr int kCtrlKey = 37;
constexpr int kKeyA = 38;
constexpr int kKeyC = 54;
constexpr int kKeyV = 55;
constexpr int kSpaceKey = 65;
constexpr int kFreeKey = 248;

class Editor : public test::EditorTest
{
protected:
    void SetUp() override
    {
        editor = std::make_unique<EditorHost>(client, kHostX, kHostY);
        ASSERT_TRUE(editor->open());
        editor->idleFor(0.1);
    }
    bool hasPopup() { return !popups().empty(); }

    static constexpr int kHostX = 100;
    static constexpr int kHostY = 80;
    std::unique_ptr<EditorHost> editor;
};

TEST_F(Editor, FillsTheRectangleThatItTellsTheHost)
{
    EXPECT_NE(editor->host()->flags & vst24::kHasEditor, 0);
    const ERect rect = editor->rect();
    EXPECT_EQ(rect.right, 540);
    EXPECT_EQ(rect.bottom, 373);
    const auto place = client.geometryOf(editor->editor());
    ASSERT_TRUE(place);
    EXPECT_EQ(place->width, 540);
    EXPECT_EQ(place->height, 373);
    EXPECT_NE(editor->pixel(270, 5), 0U);
    editor->close();
    EXPECT_TRUE(editor->idleUntil([&] { return editor->editor() == 0; }));
}

TEST_F(Editor, ShowsHintsAndLightsUpUnderThePointer)
{
    const auto bypass = placeOf(kBypass);
    const auto statusBefore = client.pixelsOf(editor->editor(), placeOf(kStatus));
    const auto bypassBefore = client.pixelsOf(editor->editor(), bypass);
    editor->moveTo(bypass);
    EXPECT_TRUE(editor->idleUntil(
        [&] { return client.pixelsOf(editor->editor(), placeOf(kStatus)) != statusBefore; }));
    EXPECT_TRUE(editor->idleUntil([&] { return client.pixelsOf(editor->editor(), bypass) != bypassBefore; }));
    editor->movePointer(690, 450); // in the host's window
    EXPECT_TRUE(editor->idleUntil([&] {
        return client.pixelsOf(editor->editor(), placeOf(kStatus)) == statusBefore &&
               client.pixelsOf(editor->editor(), bypass) == bypassBefore;
    }));
}

TEST_F(Editor, TurnsKnobsByDragAndWheelAndTellsTheHost)
{
    constexpr int kOutGain = 23;        // its place among the host's parameters
    editor->host().set(kOutGain, 0.4f); // which waits, since nothing is played yet
    const auto values = editor->host().getAll();
    const auto knob = placeOf(kKnob);
    editor->drag(knob, 40);
    const auto dragged = editor->host().getAll();
    EXPECT_NE(dragged, values);
    EXPECT_GT(editor->host().automations, 0);
    editor->idleFor(0.2);
    EXPECT_EQ(editor->host().getAll(), dragged) << "it stays where the hand has left it";

    editor->moveTo(knob);
    client.click(5);
    EXPECT_TRUE(editor->idleUntil([&] { return editor->host().getAll() != dragged; }));
    // A host that keeps the wheel to itself passes its direction on.
    const auto wheeled = editor->host().getAll();
    EXPECT_EQ(editor->host().call(vst24::kVendorSpecific, 0x73744341, 0x57686565, nullptr, 1.0f), 1);
    EXPECT_TRUE(editor->idleUntil([&] { return editor->host().getAll() != wheeled; }));
}

TEST_F(Editor, SwitchesSelectsAndShowsTheLevelOfWhatPlays)
{
    constexpr int kSubEnable = 14; // places among the host's parameters
    constexpr int kOversampling = 1;
    const auto subSwitch = placeOf(kSwitch);
    const auto before = client.pixelsOf(editor->editor(), subSwitch);
    editor->click(subSwitch);
    EXPECT_TRUE(editor->idleUntil([&] { return editor->host().get(kSubEnable) == 1.0f; }));
    editor->movePointer(690, 450); // in the host's window
    editor->idleFor(0.3);
    EXPECT_NE(client.pixelsOf(editor->editor(), subSwitch), before) << "its lamp is lit";

    const float chosen = editor->host().get(kOversampling);
    editor->click(placeOf(kFourTimes));
    EXPECT_TRUE(editor->idleUntil([&] { return editor->host().get(kOversampling) != chosen; }));

    editor->host().start();
    auto meter = placeOf(kMeter);
    meter.height /= 2; // above -27 dB, where noise does not reach
    const test::Channels<float> silence(2, std::vector<float>(512));
    test::Channels<float> tone = silence;
    for (std::size_t i = 0; i < 512; ++i) {
        tone[0][i] = tone[1][i] = i % 96 < 48 ? 0.25f : -0.25f;
    }
    const auto playUntil = [&](const test::Channels<float>& sound, const std::function<bool()>& condition) {
        return editor->idleUntil(
            [&] {
                editor->host().run<float>(sound, {512});
                return condition();
            },
            10.0);
    };
    // Channels that carry a stream look other than those that do not.
    const auto unused = client.pixelsOf(editor->editor(), meter);
    const auto picture = [&] { return client.pixelsOf(editor->editor(), meter); };
    ASSERT_TRUE(playUntil(silence, [&] { return picture() != unused; }));
    playUntil(silence, [blocks = 0]() mutable { return ++blocks == 50; });
    const auto silent = picture();
    EXPECT_TRUE(playUntil(tone, [&] { return picture() != silent; }));
    EXPECT_TRUE(playUntil(silence, [&] { return picture() == silent; })) << "it falls when nothing plays";
}

TEST_F(Editor, OpensListsThatAPressElsewhereCloses)
{
    const auto list = placeOf(kList);
    editor->click(list);
    ASSERT_TRUE(editor->idleUntil([&] { return hasPopup(); }));
    const auto attributes = client.attributesOf(popups()[0]);
    EXPECT_TRUE(attributes->override_redirect);
    const auto place = client.geometryOf(popups()[0]);
    EXPECT_GE(place->y, kHostY + list.y + list.height - 2) << "under its button";
    editor->click(list);
    EXPECT_TRUE(editor->idleUntil([&] { return !hasPopup(); })) << "a second press closes it";
    editor->idleFor(0.2);
    EXPECT_FALSE(hasPopup()) << "and does not open it again";

    editor->click(list);
    ASSERT_TRUE(editor->idleUntil([&] { return hasPopup(); }));
    client.movePointer(kHostX + 680, kHostY + 480); // of the host's own window
    client.press(1);
    EXPECT_TRUE(editor->idleUntil([&] { return !hasPopup(); }));
    client.release(1);

    editor->click(list);
    ASSERT_TRUE(editor->idleUntil([&] { return hasPopup(); }));
    editor->close();
    EXPECT_FALSE(hasPopup()) << "the editor takes its lists with it";
}

// Hosts often only hide a window that the user closes.
TEST_F(Editor, TakesItsDialogsAlongWhereTheHostHidesOrLosesIt)
{
    const auto isOpen = [&] { return hasPopup(); };
    const auto isGone = [&] { return !hasPopup(); };
    editor->click(placeOf(kSettings));
    ASSERT_TRUE(editor->idleUntil(isOpen));
    const xcb_window_t dialog = popups()[0];
    xcb_unmap_window(client.get(), editor->window());
    client.sync();
    EXPECT_TRUE(editor->idleUntil(isGone));
    xcb_map_window(client.get(), editor->window());
    client.sync();
    ASSERT_TRUE(editor->idleUntil(isOpen));
    EXPECT_EQ(popups()[0], dialog);
    client.destroyWindow(editor->window());
    EXPECT_TRUE(editor->idleUntil(isGone));
}

// A host that hangs while a plug-in holds the pointer or the keyboard locks the whole desktop.
TEST_F(Editor, GrabsNothingWhileAListIsOpen)
{
    editor->click(placeOf(kList));
    ASSERT_TRUE(editor->idleUntil([&] { return hasPopup(); }));
    EXPECT_TRUE(client.canGrab());
}

// While a text is edited keys are ours, at any other time the host's: its space bar starts the transport,
// whatever was clicked here.
TEST_F(Editor, HasTheKeyboardOnlyWhileATextIsEdited)
{
    const xcb_window_t host = editor->window();
    const auto name = placeOf(kName);
    client.setFocus(host);
    editor->click(placeOf(kKnob));
    editor->idleFor(0.05);
    EXPECT_EQ(client.focus(), host);
    client.type(kSpaceKey);
    EXPECT_TRUE(client.next<xcb_key_press_event_t>(XCB_KEY_PRESS));

    const auto edit = [&] {
        editor->click(name);
        client.click(1);
        EXPECT_TRUE(editor->idleUntil([&] { return client.focus() != host; }));
    };
    const auto type = [&](int key) {
        client.type(key);
        editor->idleFor(0.02);
    };
    const auto typeWithCtrl = [&](int key) {
        client.pressKey(kCtrlKey);
        type(key);
        client.releaseKey(kCtrlKey);
        editor->idleFor(0.02);
    };
    const auto copied = [&] {
        edit();
        typeWithCtrl(kKeyA);
        typeWithCtrl(kKeyC);
        const std::string text = test::readClipboard(
            client, client.atom("UTF8_STRING"), [&](const auto& condition) { editor->idleUntil(condition); });
        type(kEscapeKey);
        return text;
    };
    client.mapKey(kFreeKey, 0x10003A9); // an Omega
    const auto before = client.pixelsOf(editor->editor(), name);
    edit();
    typeWithCtrl(kKeyA);
    type(kKeyA);
    type(kSpaceKey);
    type(kFreeKey);
    EXPECT_FALSE(client.next<xcb_key_press_event_t>(XCB_KEY_PRESS)) << "the host hears nothing of it";
    type(kEnterKey);
    EXPECT_TRUE(editor->idleUntil([&] { return client.focus() == host; })) << "it has the keyboard back";
    EXPECT_TRUE(editor->idleUntil([&] { return client.pixelsOf(editor->editor(), name) != before; }));
    EXPECT_EQ(copied(), "a \xCE\xA9");

    test::CTestXClient other;
    test::CTextOwner owner(other, "from elsewhere", other.atom("UTF8_STRING"), 1000);
    edit();
    typeWithCtrl(kKeyA);
    client.pressKey(kCtrlKey);
    client.type(kKeyV);
    client.releaseKey(kCtrlKey);
    editor->idleUntil(
        [&] {
            owner.run();
            return false;
        },
        0.3);
    type(kEnterKey);
    EXPECT_EQ(copied(), "from elsewhere");
    EXPECT_TRUE(editor->idleUntil([&] { return client.focus() == host; }));

    // The editor goes while it has the keyboard.
    edit();
    editor->close();
    EXPECT_EQ(client.focus(), host);
}

} // namespace
} // namespace qel
