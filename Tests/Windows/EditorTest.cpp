// The editor in a host, as a user has it before them.
#include "EditorRig.h"

#include "EffectLibrary.h"

#include <fstream>
#include <iterator>
#include <thread>

namespace qel::test {
namespace {

constexpr const char* kKnob = "ui.main-window.c.out.knobs.outgain.knob-base";
constexpr const char* kList = "ui.main-window.c.upper.xover.row.param-value-selector";
constexpr const char* kName = "ui.main-window.window-title.instance-name";
constexpr const char* kSettings = "ui.main-window.c.buttons.settings";
constexpr const char* kPresets = "ui.main-window.c.buttons.preset-manager";

ViewPlace scaled(const ViewPlace& place, double scale)
{
    const auto side = [&](int px) { return static_cast<int>(px * scale); };
    return {side(place.x), side(place.y), side(place.width), side(place.height)};
}

std::string contentOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(WindowsEditor, FillsTheHostsWindowAndPaints)
{
    ASSERT_TRUE(open());
    ASSERT_NE(editor(), nullptr);
    RECT place{};
    GetClientRect(editor(), &place);
    EXPECT_EQ(place.right, rect().right);
    EXPECT_EQ(place.bottom, rect().bottom);
    EXPECT_TRUE(runUntil([&] {
        const auto seen = colours();
        return std::set(seen.begin(), seen.end()).size() > 8;
    }));
    close();
    EXPECT_EQ(editor(), nullptr);
}

TEST_F(WindowsEditor, TurnsAKnobByThePointerAndLeavesTheKeyboardToTheHost)
{
    ASSERT_TRUE(open());
    run(100);
    const std::vector<float> before = host_.getAll();
    moveTo(window_, placeOf(kKnob));
    button(MOUSEEVENTF_LEFTDOWN);
    pointerTo(window_, placeOf(kKnob).x + 20, placeOf(kKnob).y - 20);
    button(MOUSEEVENTF_LEFTUP);
    EXPECT_TRUE(runUntil([&] { return host_.getAll() != before; }));
    EXPECT_GT(host_.automations, 0);
    EXPECT_EQ(GetFocus(), window_);
    type(VK_SPACE);
    EXPECT_GT(hostKeys_, 0) << "its space bar starts the transport";
}

TEST_F(WindowsEditor, OpensListsThatAPressElsewhereCloses)
{
    ASSERT_TRUE(open());
    run(100);
    const auto isOpen = [&] { return !popups().empty(); };
    const auto isClosed = [&] { return popups().empty(); };
    click(window_, placeOf(kList));
    ASSERT_TRUE(runUntil(isOpen));
    click(window_, {rect().right - 4, rect().bottom - 4, 2, 2});
    EXPECT_TRUE(runUntil(isClosed));
    click(window_, placeOf(kList));
    ASSERT_TRUE(runUntil(isOpen));
    click(nullptr, {900, 700, 2, 2}); // of the screen
    EXPECT_TRUE(runUntil(isClosed));
}

// Hosts look for shortcuts in their loop.
TEST_F(WindowsEditor, HasTheKeyboardWhileATextIsEdited)
{
    ASSERT_TRUE(open());
    run(100);
    const auto edit = [&] {
        click(window_, placeOf(kName));
        click(window_, placeOf(kName));
        EXPECT_TRUE(runUntil([&] { return GetFocus() != window_; }));
        type('A', VK_CONTROL);
    };
    const auto copied = [&] {
        edit();
        type('C', VK_CONTROL);
        type(VK_ESCAPE);
        return clipboard();
    };
    edit();
    type('B');
    type('A', VK_SHIFT);
    type(VK_SPACE);
    insert(L'\u03A9');
    type(VK_LEFT);
    type(VK_BACK);
    type(VK_HOME);
    type('X');
    type(VK_END);
    type('Y');
    type(VK_RETURN);
    EXPECT_EQ(GetFocus(), window_) << "it has the keyboard back";
    EXPECT_EQ(copied(), L"xbA\u03A9y");

    // Another program still looks at what has come into the clipboard.
    setClipboard(L"from\r\nelse\u20AC");
    edit();
    std::thread watcher([] {
        OpenClipboard(nullptr);
        Sleep(60);
        CloseClipboard();
    });
    Sleep(10);
    type('V', VK_CONTROL);
    watcher.join();
    type(VK_RETURN);
    EXPECT_EQ(copied(), L"from else\u20AC");
    EXPECT_EQ(hostKeys_, 0);

    edit();
    close();
    EXPECT_EQ(GetFocus(), window_);
}

// The layout has dead keys. Windows itself puts the two together; wine leaves that to input methods, which
// send the character.
TEST_F(WindowsEditor, TakesNoCharacterFromADeadKeyItself)
{
    ASSERT_TRUE(open());
    run(100);
    click(window_, placeOf(kName));
    click(window_, placeOf(kName));
    ASSERT_TRUE(runUntil([&] { return GetFocus() != window_; }));
    type('A', VK_CONTROL);
    type(VK_OEM_7);
    type('E');
    PostMessageW(GetFocus(), WM_DEADCHAR, L'\u00B4', 0);
    PostMessageW(GetFocus(), WM_CHAR, L'\u00E1', 0);
    run(20);
    type('A', VK_CONTROL);
    type('C', VK_CONTROL);
    const std::wstring text = clipboard();
    EXPECT_TRUE(text == L"\u00E9\u00E1" || text == L"e\u00E1") << std::filesystem::path(text).string();
    EXPECT_EQ(hostKeys_, 0);
}

TEST_F(WindowsEditor, FollowsItsSettings)
{
    const auto dialog = [](const std::string& path) { return placeOf("win-settings." + path); };
    ASSERT_TRUE(open());
    run(500);
    const auto colour = [&] { return colours()[0]; };
    const COLORREF before = colour();
    HWND settings = openDialog(placeOf(kSettings));
    ASSERT_NE(settings, nullptr);
    click(settings, dialog("c.settings.colors.palette-selector.button#1"));
    EXPECT_TRUE(runUntil([&] { return colour() != before; }));
    click(settings, dialog("c.settings.colors.palette-selector.button"));
    EXPECT_TRUE(runUntil([&] { return colour() == before; }));
    click(settings, dialog("c.settings.scale.ui-scale-selector.button#2"));
    close();
    EXPECT_TRUE(dialogs().empty());
    ASSERT_TRUE(open());
    run(100);
    RECT place{};
    GetClientRect(editor(), &place);
    EXPECT_EQ(place.right, 675);
    SetWindowPos(window_, nullptr, 0, 0, rect().right, rect().bottom, SWP_NOMOVE | SWP_NOZORDER);
    settings = openDialog(scaled(placeOf(kSettings), 1.25));
    ASSERT_NE(settings, nullptr);
    click(settings, scaled(dialog("c.settings.scale.ui-scale-selector.button#1"), 1.25));
    close();
    EXPECT_EQ(rect().right, 540);
}

// Hosts often only hide a window that the user closes.
TEST_F(WindowsEditor, TakesItsDialogsAlongWhereTheHostHidesOrLosesIt)
{
    ASSERT_TRUE(open());
    run(100);
    const HWND dialog = openDialog(placeOf(kSettings));
    ASSERT_NE(dialog, nullptr);
    ShowWindow(window_, SW_HIDE);
    EXPECT_TRUE(runUntil([&] { return dialogs().empty(); }));
    ShowWindow(window_, SW_SHOW);
    ASSERT_TRUE(runUntil([&] { return !dialogs().empty(); }));
    EXPECT_EQ(dialogs()[0], dialog);
    DestroyWindow(window_);
    EXPECT_TRUE(runUntil([&] { return dialogs().empty(); }));
}

TEST_F(WindowsEditor, SavesAndLoadsBanksByTheSystemsDialogs)
{
    const auto button = [](const char* name) {
        return placeOf(std::string("win-preset-manager.c.banks.buttons.") + name);
    };
    const std::filesystem::path folder = home_.root() / L"gr\u00F6\u00DFe \u03A9";
    const std::filesystem::path file = folder / "bank.cbf";
    const std::filesystem::path stored = home_.storeFolder() / "AppDataLocal_shared-banks";
    // Written by the build's own system.
    const std::filesystem::path factory =
        EffectLibrary::path().parent_path() / "resources" / "FactoryROM.cbf";
    // For that system to read.
    const std::filesystem::path written = EffectLibrary::path().parent_path() / "written";
    std::filesystem::remove_all(written);
    std::filesystem::create_directory(written);
    std::filesystem::create_directory(folder);
    ASSERT_TRUE(open());
    run(100);
    const HWND presets = openDialog(placeOf(kPresets));
    ASSERT_NE(presets, nullptr);
    const auto press = [&](const char* name, std::initializer_list<DialogUser::Act> acts) {
        const DialogUser user(acts);
        click(presets, button(name));
        EXPECT_TRUE(runUntil([&] { return user.isDone(); }));
        run(300);
        EXPECT_EQ(dialogs().size(), 1U) << "nothing is complained of";
    };
    press("save", {DialogUser::press(IDCANCEL)});
    press("save", {DialogUser::enter(folder / "bank")});
    EXPECT_TRUE(contentOf(file).starts_with("abnk"));
    std::filesystem::copy_file(file, written / "bank.cbf");
    std::ofstream(file) << "precious";
    press("save", {DialogUser::enter(file), DialogUser::press(IDNO), DialogUser::press(IDCANCEL)});
    EXPECT_EQ(contentOf(file), "precious");
    press("load", {DialogUser::press(IDCANCEL)});
    EXPECT_FALSE(std::filesystem::exists(stored));
    press("load", {DialogUser::enter(factory)});
    EXPECT_GT(contentOf(stored).size(), 100U);
    std::filesystem::copy_file(stored, written / "banks");
}

// The loop of a dialog serves the host, too.
TEST_F(WindowsEditor, IsClosedAndEndedWhileADialogWaits)
{
    for (const bool isEnd : {false, true}) {
        ASSERT_TRUE(open());
        run(100);
        const HWND presets = openDialog(placeOf(kPresets));
        ASSERT_NE(presets, nullptr);
        const DialogUser user({[&](HWND) { isEnd ? host_.close() : close(); }});
        click(presets, placeOf("win-preset-manager.c.banks.buttons.save"));
        EXPECT_TRUE(runUntil([&] { return user.isDone() && dialogs().empty(); }));
        EXPECT_EQ(editor(), nullptr);
    }
}

TEST_F(WindowsEditor, OpensAHundredTimesWithoutKeepingAnything)
{
    const auto count = [](DWORD kind) { return GetGuiResources(GetCurrentProcess(), kind); };
    const auto use = [&] {
        ASSERT_TRUE(open());
        run(30);
        close();
        run(5);
    };
    use();
    use();
    const DWORD drawing = count(GR_GDIOBJECTS);
    const DWORD windows = count(GR_USEROBJECTS);
    for (int round = 0; round < 100; ++round) {
        use();
    }
    EXPECT_EQ(count(GR_GDIOBJECTS), drawing);
    EXPECT_EQ(count(GR_USEROBJECTS), windows);
}

} // namespace
} // namespace qel::test
