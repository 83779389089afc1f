#include "WindowFixture.h"

#include <algorithm>
#include <cerrno>

namespace qel::platform {

namespace {

using Log = std::vector<std::string>;

constexpr int kLeft = 1;
constexpr int kRight = 3;

xcb_window_t idOf(const CSystemWindow& window)
{
    return static_cast<xcb_window_t>(window.handle());
}

void fill(CSystemSurface& surface, std::uint32_t (*colour)(int x, int y))
{
    auto* pixels = reinterpret_cast<std::uint32_t*>(surface.pixels());
    for (int y = 0; y < surface.height(); ++y) {
        for (int x = 0; x < surface.width(); ++x) {
            *pixels++ = colour(x, y);
        }
    }
}

std::uint32_t gradient(int x, int y)
{
    return 0xFF000000u | static_cast<std::uint32_t>(x) << 16 | static_cast<std::uint32_t>(y) << 8 | 0x55;
}

} // namespace

TEST_F(WindowFixture, ChildShowsWhatIsPresented)
{
    CRecordingListener listener;
    const auto child = makeChild(listener);
    const xcb_window_t id = client.childOf(host);
    ASSERT_EQ(id, child->handle());
    EXPECT_EQ(client.attributesOf(id)->map_state, XCB_MAP_STATE_VIEWABLE);
    EXPECT_EQ(client.geometryOf(id)->width, kWidth);
    EXPECT_EQ(client.wordsOf(id, "_XEMBED_INFO"), (std::vector<std::uint32_t>{0, 1}));
    EXPECT_EQ(child->screenPlace(), (PixelRect{kHostX, kHostY, kWidth, kHeight}));

    std::unique_ptr<CSystemSurface> surface;
    SurfaceStep failed{};
    ASSERT_EQ(display->createSurface(kWidth, kHeight, surface, failed), 0);
    listener.surface = surface.get();
    fill(*surface, gradient);
    ASSERT_TRUE(idleUntil([&] { return listener.has("paint") && !display->isFrameUnderWay(); }))
        << "the server asks for the first picture";
    EXPECT_EQ(client.pixelOf(id, 0, 0), 0x000055u);
    EXPECT_EQ(client.pixelOf(id, 199, 149), 0xC79555u);

    // A part alone, from another place of the surface, cut off at the edges of both.
    fill(*surface, [](int, int) { return 0x00FF0000u; });
    listener.surface = nullptr;
    listener.log.clear();
    child->invalidate({10, 10, 5, 5});
    child->invalidate({-10, -10, 5, 5});
    ASSERT_TRUE(idleUntil([&] { return listener.has("paint"); }));
    EXPECT_EQ(listener.count("paint"), 1);
    EXPECT_EQ(client.pixelOf(id, 10, 10), 0x0A0A55u) << "nothing was presented";
    listener.surface = surface.get();
    child->invalidate({190, 140, 1000, 1000});
    ASSERT_TRUE(idleUntil([&] { return listener.count("paint") == 2 && !display->isFrameUnderWay(); }));
    EXPECT_EQ(client.pixelOf(id, 199, 149), 0xFF0000u);
    EXPECT_EQ(client.pixelOf(id, 189, 149), 0xBD9555u);
}

// Such a server takes no pixels of ours as they are, so they go converted through the connection, in strips.
TEST(SystemWindow, PicturesReachAServerOfAnotherDepth)
{
    const test::CTestXServer server("640x480x16");
    test::CTestXClient client;
    std::unique_ptr<CSystemDisplay> display;
    ASSERT_EQ(openSystemDisplay("Tests", {}, display), 0);
    CRecordingListener listener;
    std::unique_ptr<CSystemWindow> window;
    const xcb_window_t host = client.makeWindow(0, 0, 600, 400);
    ASSERT_EQ(display->createWindow({WindowKind::kChild, host, {0, 0, 600, 400}, "", false, false}, listener,
                                    window),
              0);
    std::unique_ptr<CSystemSurface> surface;
    SurfaceStep failed{};
    ASSERT_EQ(display->createSurface(600, 400, surface, failed), 0);
    fill(*surface, [](int x, int y) { return x == 599 && y == 399 ? 0x00FF8408u : 0x000000FFu; });
    listener.window = window.get();
    listener.surface = surface.get();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while ((!listener.has("paint") || display->isFrameUnderWay()) &&
           std::chrono::steady_clock::now() < deadline) {
        display->processEvents();
        display->flush();
    }
    EXPECT_EQ(client.pixelOf(idOf(*window), 0, 0) & 0xFFFF, 0x001Fu);
    EXPECT_EQ(client.pixelOf(idOf(*window), 599, 399) & 0xFFFF, 0xFC21u) << "5, 6 and 5 bits";
}

TEST_F(WindowFixture, PointerButtonsAndWheel)
{
    CRecordingListener listener;
    const auto child = makeChild(listener);
    idle();
    listener.log.clear();
    client.movePointer(kHostX + 20, kHostY + 30);
    idle();
    EXPECT_TRUE(listener.has("pointer 20 30"));
    EXPECT_EQ(listener.last.screenX, kHostX + 20);
    EXPECT_EQ(display->windowAt(kHostX + 20, kHostY + 30), child.get());
    EXPECT_EQ(display->windowAt(kHostX - 1, kHostY), nullptr);

    listener.log.clear();
    for (int i = 0; i < 3; ++i) {
        client.click(kLeft);
    }
    client.click(kRight);
    client.click(4);
    client.click(5);
    idle();
    EXPECT_EQ(listener.log, (Log{"press 0 1", "release 0 0", "double 0 1", "release 0 0", "press 0 1",
                                 "release 0 0", "press 1 0", "release 1 0", "wheel 1 0", "wheel -1 0"}));

    // A drag goes on outside of the window; the leaving comes with its end.
    listener.log.clear();
    client.press(kLeft);
    client.movePointer(10, 10);
    idle();
    EXPECT_TRUE(listener.has("pointer -90 -70"));
    EXPECT_FALSE(listener.has("leave"));
    client.release(kLeft);
    idle();
    EXPECT_EQ((Log{listener.log.end() - 2, listener.log.end()}), (Log{"release 0 0", "leave"}));
    PointerState pointer;
    client.press(kRight);
    idle();
    ASSERT_TRUE(idleUntil([&] { return display->queryPointer(pointer); }));
    EXPECT_TRUE(pointer.isRightDown && !pointer.isLeftDown) << "a press anywhere can be asked for";
    EXPECT_EQ(pointer.screenX, 10);
    client.release(kRight);
}

TEST_F(WindowFixture, KeysComeWhileTheFocusIsTakenAndGoBackToTheHost)
{
    constexpr int kA = 38; // codes of the server's keyboard
    constexpr int kE = 26;
    constexpr int kShift = 50;
    constexpr int kCtrl = 37;
    constexpr int kLeftArrow = 113;
    constexpr int kFree = 240;
    client.mapKey(kFree, 0xE9);           // eacute
    client.mapKey(kFree + 1, 0x01002126); // the ohm sign, by its Unicode number
    client.mapKey(kFree + 2, 0xFE51);     // dead_acute
    client.setFocus(host);
    CRecordingListener listener;
    const auto child = makeChild(listener);
    client.movePointer(kHostX + 20, kHostY + 30);
    client.click(kLeft);
    idle();
    client.type(kA);
    idle();
    EXPECT_TRUE(listener.keys.empty()) << "hovering and clicking leave the keyboard alone";
    EXPECT_TRUE(client.next<xcb_key_press_event_t>(XCB_KEY_PRESS));

    child->takeFocus();
    ASSERT_TRUE(idleUntil([&] { return child->hasFocus(); }));
    EXPECT_EQ(client.focus(), child->handle());
    client.type(kA);
    client.pressKey(kShift);
    client.type(kA);
    client.releaseKey(kShift);
    client.type(kFree);
    client.type(kFree + 1);
    client.type(kFree + 2);
    client.type(kE);
    client.pressKey(kCtrl);
    client.type(kA);
    client.releaseKey(kCtrl);
    client.type(kLeftArrow);
    idle();
    std::u32string text;
    for (const KeyEvent& key : listener.keys) {
        text += key.character ? std::u32string(1, key.character) : std::u32string();
    }
    EXPECT_EQ(text, U"aA\u00E9\u2126\u00E9");
    EXPECT_FALSE(client.next<xcb_key_press_event_t>(XCB_KEY_PRESS)) << "the host gets none of them";
    ASSERT_GE(listener.keys.size(), 3u);
    EXPECT_EQ(listener.keys.front().key, std::uint32_t{'A'});
    const KeyEvent& ctrlA = listener.keys[listener.keys.size() - 2];
    EXPECT_TRUE(ctrlA.key == 'A' && ctrlA.modifiers.isCtrl && ctrlA.character == 0);
    EXPECT_EQ(listener.keys.back().key, key::kLeft);

    // The layout changes while the text is open.
    client.mapKey(kFree, 0xDF); // ssharp
    client.type(kFree);
    idle();
    EXPECT_EQ(listener.keys.back().character, U'\u00DF');

    listener.keys.clear();
    child->giveFocusBack();
    ASSERT_TRUE(idleUntil([&] { return !child->hasFocus(); }));
    EXPECT_EQ(client.focus(), host);
    client.type(kA);
    idle();
    EXPECT_TRUE(listener.keys.empty());
    EXPECT_TRUE(client.next<xcb_key_press_event_t>(XCB_KEY_PRESS));

    // Taken away by another, it is not given back.
    child->takeFocus();
    ASSERT_TRUE(idleUntil([&] { return child->hasFocus(); }));
    const xcb_window_t other = client.makeWindow(600, 80, 50, 50);
    client.setFocus(other);
    ASSERT_TRUE(idleUntil([&] { return !child->hasFocus(); }));
    child->giveFocusBack();
    idle();
    EXPECT_EQ(client.focus(), other);
    EXPECT_FALSE(display->isActive());
    EXPECT_TRUE(listener.has("inactive"));
}

TEST_F(WindowFixture, HostMovesResizesAndReparents)
{
    CRecordingListener listener;
    const auto child = makeChild(listener);
    idle();
    listener.log.clear();
    child->setPlace({0, 0, 220, 160});
    idle();
    client.resizeWindow(idOf(*child), 180, 120);
    ASSERT_TRUE(idleUntil([&] { return listener.has("resize 180 120"); }));
    EXPECT_FALSE(listener.has("resize 220 160")) << "our own doing";
    client.moveWindow(host, 300, 200);
    ASSERT_TRUE(idleUntil([&] { return listener.has("move 300 200"); }));
    const xcb_window_t other = client.makeWindow(50, 60, 400, 300);
    xcb_reparent_window(client.get(), idOf(*child), other, 7, 8);
    client.sync();
    ASSERT_TRUE(idleUntil([&] { return listener.has("move 57 68"); }));
    EXPECT_EQ(child->screenPlace(), (PixelRect{57, 68, 180, 120}));
}

TEST_F(WindowFixture, ListsAndDialogsTellTheWindowManagerWhatTheyAre)
{
    CRecordingListener listener;
    const xcb_window_t panel = client.makeWindow(10, 20, 280, 180, host);
    const auto child =
        makeWindow({WindowKind::kChild, panel, {0, 0, kWidth, kHeight}, "", false, false}, listener);
    EXPECT_EQ(child->screenPlace().x, kHostX + 10);

    CRecordingListener listListener;
    const auto list = makeWindow({WindowKind::kPopup, child->handle(), {150, 130, 80, 120}, "", false, false},
                                 listListener);
    CRecordingListener dialogListener;
    const auto dialog = makeWindow(
        {WindowKind::kDialog, child->handle(), {400, 300, 160, 100}, "S\xC3\xA4ttigung", false, false},
        dialogListener);
    list->show();
    dialog->show();
    idle();
    EXPECT_TRUE(client.attributesOf(idOf(*list))->override_redirect);
    EXPECT_FALSE(client.attributesOf(idOf(*dialog))->override_redirect);
    EXPECT_EQ(client.geometryOf(idOf(*list))->y, 130);
    const auto words = [&](const CSystemWindow& window, const char* property) {
        return client.wordsOf(idOf(window), property);
    };
    for (const CSystemWindow* window : {list.get(), dialog.get()}) {
        EXPECT_EQ(words(*window, "WM_TRANSIENT_FOR"), (std::vector<std::uint32_t>{host}))
            << "not the panel in it";
    }
    EXPECT_EQ(words(*list, "_NET_WM_WINDOW_TYPE").front(), client.atom("_NET_WM_WINDOW_TYPE_DROPDOWN_MENU"));
    EXPECT_EQ(words(*dialog, "_NET_WM_WINDOW_TYPE").front(), client.atom("_NET_WM_WINDOW_TYPE_DIALOG"));
    EXPECT_EQ(words(*dialog, "_MOTIF_WM_HINTS"), (std::vector<std::uint32_t>{2, 0, 0, 0, 0}));
    EXPECT_EQ(display->windowAt(160, 140), list.get()) << "the list lies over the child";
    EXPECT_EQ(display->windowAt(410, 310), dialog.get());
    list->hide();
    EXPECT_EQ(display->windowAt(160, 140), child.get());
    EXPECT_EQ(display->workArea(list->screenPlace()), (PixelRect{0, 0, 1024, 768}));

    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = idOf(*dialog);
    message.type = client.atom("WM_PROTOCOLS");
    message.data.data32[0] = client.atom("WM_DELETE_WINDOW");
    xcb_send_event(client.get(), 0, message.window, 0, reinterpret_cast<const char*>(&message));
    client.sync();
    idle();
    EXPECT_TRUE(dialogListener.has("close"));
}

TEST_F(WindowFixture, SurvivesRudeHosts)
{
    // A parent that is none.
    CRecordingListener listener;
    std::unique_ptr<CSystemWindow> made;
    for (const NativeWindow parent : {NativeWindow{0}, NativeWindow{0x12345678}, ~NativeWindow{0}}) {
        EXPECT_FALSE(display->isWindow(parent));
        EXPECT_EQ(display->createWindow({WindowKind::kChild, parent, {0, 0, 10, 10}, "", false, false},
                                        listener, made),
                  EINVAL);
    }
    // The parent goes first, with a button held and the focus taken.
    auto child = makeChild(listener);
    idle();
    client.movePointer(kHostX + 20, kHostY + 30);
    client.press(kLeft);
    child->takeFocus();
    idle();
    client.destroyWindow(host);
    ASSERT_TRUE(idleUntil([&] { return listener.has("destroyed"); }));
    client.release(kLeft);
    EXPECT_EQ(child->handle(), 0u);
    child->setPlace({1, 2, 3, 4});
    child->invalidate({0, 0, 3, 4});
    child->giveFocusBack();
    child.reset();
    idle();

    // The editor is closed from within an event, and the window after its display.
    host = client.makeWindow(kHostX, kHostY, 300, 200);
    CRecordingListener closing;
    child = makeChild(closing);
    closing.whenPressed = [&] { display.reset(); };
    client.press(kLeft);
    EXPECT_TRUE(idleUntil([&] { return !display; }));
    child->show();
    child.reset();
    EXPECT_EQ(closing.log.back(), "press 0 1");
    client.release(kLeft);
}

TEST_F(WindowFixture, SurvivesTheServersDeath)
{
    CRecordingListener listener;
    const auto child = makeChild(listener);
    std::unique_ptr<CSystemSurface> surface;
    SurfaceStep failed{};
    ASSERT_EQ(display->createSurface(kWidth, kHeight, surface, failed), 0);
    listener.surface = surface.get();
    idle();
    server.kill();
    child->setTitle(std::string(100000, 'x')); // more than fits into the library's buffer: written at once
    ASSERT_TRUE(idleUntil([&] { return losses > 0; }));
    EXPECT_TRUE(listener.has("destroyed"));
    surface->pixels()[0] = 1;
    child->show();
    child->takeFocus();
    child->invalidate({0, 0, 10, 10});
    display->clipboard().setText("text");
    display->movePointer(1, 1);
    PointerState pointer;
    EXPECT_FALSE(display->queryPointer(pointer));
    EXPECT_FALSE(display->isConnected());
    std::unique_ptr<CSystemWindow> made;
    EXPECT_NE(
        display->createWindow({WindowKind::kChild, host, {0, 0, 10, 10}, "", false, false}, listener, made),
        0);
    display->processEvents();
    display->flush();
    EXPECT_EQ(losses, 1);
}

} // namespace qel::platform
