// What hosts and desktops do to an open editor.
#include "EditorRig.h"

#include <filesystem>
#include <malloc.h>

namespace qel {
namespace {

using test::EditorHost;
using test::placeOf;

constexpr const char* kKnob = "ui.main-window.c.out.knobs.outgain.knob-base";

class RudeEditor : public test::EditorTest
{
protected:
    static std::ptrdiff_t openFiles()
    {
        const std::filesystem::directory_iterator files("/proc/self/fd");
        return std::distance(begin(files), end(files));
    }
    // The effect still does what it is for.
    static void expectSound(EditorHost& editor)
    {
        editor.host().start();
        const auto output = editor.host().run(test::drums<float>(2000), {512});
        EXPECT_NE(output[0][1999], 0.0f);
    }
};

TEST_F(RudeEditor, IsClosedUnopenedAndOpenedTwice)
{
    EditorHost editor(client, 0, 0);
    editor.close();
    editor.idle();
    ASSERT_TRUE(editor.open());
    editor.idleFor(0.05);
    ASSERT_TRUE(editor.open()) << "in the same window";
    editor.idleFor(0.05);
    EXPECT_EQ(client.childrenOf(editor.window()).size(), 1U) << "there is one editor at a time";
    editor.close();
    editor.close();
    editor.idle();
    EXPECT_TRUE(editor.idleUntil([&] { return editor.editor() == 0; }));
}

TEST_F(RudeEditor, IsToldOfParentsThatAreNone)
{
    EditorHost editor(client, 0, 0);
    EXPECT_FALSE(editor.open(0x12345678));
    const xcb_window_t gone = client.makeWindow(0, 0, 10, 10);
    client.destroyWindow(gone);
    EXPECT_FALSE(editor.open(gone));
    editor.idle();

    // No server at all: nobody waits, and no window of ours tells of it.
    server.kill();
    EXPECT_FALSE(editor.open());
    editor.idle();
}

TEST_F(RudeEditor, LosesItsParentFirst)
{
    EditorHost editor(client, 0, 0);
    const xcb_window_t parent = client.makeWindow(50, 50, 700, 500);
    ASSERT_TRUE(editor.open(parent));
    editor.idleFor(0.1);
    client.destroyWindow(parent);
    editor.idleFor(0.1);
    editor.close();
    expectSound(editor);
    ASSERT_TRUE(editor.open()) << "again, in another window";
    editor.idleFor(0.1);
    client.destroyWindow(editor.window());
}

TEST_F(RudeEditor, IsReparentedHiddenAndEndedWhileOpen)
{
    EditorHost editor(client, 0, 0);
    ASSERT_TRUE(editor.open());
    editor.idleFor(0.1);
    const xcb_window_t other = client.makeWindow(300, 300, 700, 400);
    xcb_reparent_window(client.get(), editor.editor(), other, 0, 0);
    xcb_unmap_window(client.get(), editor.window());
    client.sync();
    editor.idleFor(0.1);
    ASSERT_NE(client.childOf(other), 0U);
    EXPECT_NE(client.pixelOf(client.childOf(other), 270, 10), 0U) << "it draws on where it is";
    editor.host().close(); // with the editor open
    EXPECT_EQ(client.childOf(other), 0U);
}

TEST_F(RudeEditor, IsNeverIdled)
{
    EditorHost editor(client, 0, 0);
    ASSERT_TRUE(editor.open());
    for (int i = 0; i < 2000; ++i) {
        xcb_test_fake_input(client.get(), XCB_MOTION_NOTIFY, 0, 0, client.root(),
                            static_cast<std::int16_t>(i % 500), static_cast<std::int16_t>(i % 300), 0);
    }
    client.sync();
    expectSound(editor);
    editor.close();
    EXPECT_TRUE(editor.idleUntil([&] { return editor.editor() == 0; }));
}

// The host's automation callback runs its event loop, or closes the editor under the user's hands.
TEST_F(RudeEditor, IsIdledAndClosedFromWithinItsOwnCalls)
{
    EditorHost editor(client, 0, 0);
    ASSERT_TRUE(editor.open());
    editor.idleFor(0.1);
    const auto drag = [&] {
        editor.drag(placeOf(kKnob), 36);
        editor.idleFor(0.5); // sooner, the next press would be a double click
    };
    int depth = 0;
    editor.host().whenAutomated = [&] {
        if (depth++ < 3) {
            editor.idle();
        }
        --depth;
    };
    drag();
    const int automations = editor.host().automations;
    EXPECT_GT(automations, 1);
    editor.host().whenAutomated = [&] { editor.close(); };
    drag();
    EXPECT_GT(editor.host().automations, automations);
    EXPECT_TRUE(editor.idleUntil([&] { return editor.editor() == 0; }));
    editor.host().whenAutomated = {};
    ASSERT_TRUE(editor.open());
    drag();
}

TEST_F(RudeEditor, OutlivesTheServer)
{
    EditorHost editor(client, 0, 0);
    ASSERT_TRUE(editor.open());
    editor.idleFor(0.1);
    server.kill();
    for (int i = 0; i < 20; ++i) {
        editor.idle();
    }
    expectSound(editor);
    editor.close();
    const test::CTestXServer another;
    test::CTestXClient otherClient;
    EditorHost next(otherClient, 0, 0);
    ASSERT_TRUE(next.open());
    next.idleFor(0.1);
    EXPECT_NE(next.editor(), 0U);
}

TEST_F(RudeEditor, IsOpenTwentyTimesAtOnce)
{
    std::vector<std::unique_ptr<EditorHost>> editors;
    for (int i = 0; i < 20; ++i) {
        editors.push_back(std::make_unique<EditorHost>(client, 20 * i, 10 * i));
        ASSERT_TRUE(editors.back()->open()) << i;
    }
    for (int round = 0; round < 20; ++round) {
        for (const auto& editor : editors) {
            editor->idle();
        }
    }
    for (const auto& editor : editors) {
        client.raiseWindow(editor->window());
        EXPECT_TRUE(editor->idleUntil([&] { return editor->pixel(270, 10) != 0; }));
    }
}

// Hosts run each editor where they like.
TEST_F(RudeEditor, IsOpenInSeveralThreads)
{
    const auto use = [] {
        test::CTestXClient own;
        EditorHost editor(own, 0, 0);
        for (int i = 0; i < 5; ++i) {
            EXPECT_TRUE(editor.open());
            editor.idleFor(0.05);
            EXPECT_NE(editor.editor(), 0U);
            editor.close();
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back(use);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_F(RudeEditor, LeavesNothingBehindAfterAHundredOpenings)
{
    EditorHost editor(client, 0, 0);
    const auto openSome = [&](int count) {
        for (int i = 0; i < count; ++i) {
            ASSERT_TRUE(editor.open());
            editor.idle();
            editor.close();
        }
    };
    openSome(10);
    const auto files = openFiles();
    const auto bytes = static_cast<std::ptrdiff_t>(mallinfo2().uordblks);
    openSome(100);
    EXPECT_EQ(openFiles(), files);
    EXPECT_LT(static_cast<std::ptrdiff_t>(mallinfo2().uordblks) - bytes, 64 * 1024) << "bytes on the heap";
}

} // namespace
} // namespace qel
