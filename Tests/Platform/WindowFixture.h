// A display of ours on an X server of the tests, a host around it, and a user.
#pragma once

#include "CSystemDisplay.h"
#include "CTestXClient.h"
#include "CTestXServer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace qel::platform {

// Writes down what a window reports, and paints from a surface if it has one.
class CRecordingListener : public CSystemWindowListener
{
public:
    void onPaint(const PixelRect& update) override
    {
        log.push_back("paint");
        if (window && surface) {
            window->present(*surface, update, update.x, update.y);
        }
    }
    void onResize(int width, int height) override { note("resize", width, height); }
    void onMove(int screenX, int screenY) override { note("move", screenX, screenY); }
    void onPointerMove(const PointerEvent& event) override
    {
        last = event;
        note("pointer", event.x, event.y);
    }
    void onPointerLeave() override { log.push_back("leave"); }
    void onButtonPress(const ButtonEvent& event) override
    {
        last = event;
        note(event.isDoubleClick ? "double" : "press", static_cast<int>(event.button), event.isLeftDown);
        if (whenPressed) {
            whenPressed();
        }
    }
    void onButtonRelease(const ButtonEvent& event) override
    {
        note("release", static_cast<int>(event.button), event.isLeftDown);
    }
    void onCaptureLost() override { log.push_back("capture lost"); }
    void onWheel(const WheelEvent& event) override { note("wheel", static_cast<int>(event.delta), 0); }
    void onKeyPress(const KeyEvent& event) override { keys.push_back(event); }
    void onFocus(bool isFocused) override { log.push_back(isFocused ? "focus" : "blur"); }
    void onActivation(bool isActive) override { log.push_back(isActive ? "active" : "inactive"); }
    void onCloseRequest() override { log.push_back("close"); }
    void onDestroyed() override { log.push_back("destroyed"); }

    void note(const std::string& what, int a, int b)
    {
        log.push_back(what + " " + std::to_string(a) + " " + std::to_string(b));
    }
    bool has(const std::string& entry) const { return count(entry) > 0; }
    int count(const std::string& entry) const
    {
        return static_cast<int>(std::count(log.begin(), log.end(), entry));
    }

    std::vector<std::string> log;
    std::vector<KeyEvent> keys;
    PointerEvent last;
    CSystemWindow* window = nullptr;
    CSystemSurface* surface = nullptr;
    std::function<void()> whenPressed;
};

class WindowFixture : public testing::Test
{
protected:
    static constexpr int kHostX = 100;
    static constexpr int kHostY = 80;
    static constexpr int kWidth = 200;
    static constexpr int kHeight = 150;

    void SetUp() override
    {
        host = client.makeWindow(kHostX, kHostY, 300, 200);
        ASSERT_EQ(openSystemDisplay(
                      "Tests", [this] { ++losses; }, display),
                  0);
    }

    std::unique_ptr<CSystemWindow> makeWindow(const WindowDescription& description,
                                              CRecordingListener& listener)
    {
        std::unique_ptr<CSystemWindow> made;
        EXPECT_EQ(display->createWindow(description, listener, made), 0);
        listener.window = made.get();
        return made;
    }
    std::unique_ptr<CSystemWindow> makeChild(CRecordingListener& listener)
    {
        return makeWindow({WindowKind::kChild, host, {0, 0, kWidth, kHeight}, "", false, false}, listener);
    }

    // Runs the editor's idle until the condition holds; false when it never does.
    bool idleUntil(const std::function<bool()>& condition)
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (std::chrono::steady_clock::now() < deadline) {
            if (display) {
                display->processEvents();
            }
            if (display) {
                display->flush();
            }
            if (condition()) {
                return true;
            }
            std::this_thread::yield();
        }
        return false;
    }
    // Until all that others have done has arrived: the server answers each of our frames in order.
    void idle()
    {
        client.sync();
        PointerState pointer;
        EXPECT_TRUE(idleUntil([&] { return display->queryPointer(pointer); }));
        EXPECT_TRUE(idleUntil([&] { return display->queryPointer(pointer); }));
    }

    test::CTestXServer server;
    test::CTestXClient client;
    xcb_window_t host = 0;
    std::unique_ptr<CSystemDisplay> display;
    int losses = 0;
};

} // namespace qel::platform
