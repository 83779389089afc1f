// An editor in a host's window on an X server of the tests' own.
#pragma once

#include "CTestXClient.h"
#include "CTestXServer.h"
#include "HostRig.h"
#include "TemporaryFolder.h"
#include "ViewPlace.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

namespace qel::test {

// Where a view lies in the window that the inspector shows with these arguments.
ViewPlace placeOf(const std::string& path, const std::string& arguments = {});

// One effect with a window for its editor.
class EditorHost
{
public:
    EditorHost(CTestXClient& client, int x, int y) : client_(client)
    {
        window_ = client.makeWindow(x, y, 700, 500);
        place_ = {x, y};
    }
    EditorHost(const EditorHost&) = delete;
    EditorHost& operator=(const EditorHost&) = delete;
    ~EditorHost()
    {
        host_.close();
        client_.destroyWindow(window_);
    }

    Host& host() { return host_; }
    ERect rect()
    {
        ERect* rect = nullptr;
        host_.call(vst24::kEditGetRect, 0, 0, &rect);
        return rect ? *rect : ERect();
    }
    bool open() { return open(window_); }
    bool open(xcb_window_t parent)
    {
        return host_.call(vst24::kEditOpen, 0, 0, reinterpret_cast<void*>(std::uintptr_t{parent})) != 0;
    }
    void close() { host_.call(vst24::kEditClose); }
    void idle()
    {
        host_.call(vst24::kEditIdle);
        if (neighbour) {
            neighbour->host_.call(vst24::kEditIdle);
        }
    }
    // As hosts do, some forty times a second, until the condition holds; false when it never does.
    bool idleUntil(const std::function<bool()>& condition, double limitSec = 5.0)
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(limitSec);
        while (std::chrono::steady_clock::now() < deadline) {
            idle();
            if (condition()) {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }
    void idleFor(double sec)
    {
        idleUntil([] { return false; }, sec);
    }

    xcb_window_t window() const { return window_; }
    // Our window in the host's, 0 while there is none.
    xcb_window_t editor() { return client_.childOf(window_); }
    std::uint32_t pixel(int x, int y) { return client_.pixelOf(editor(), x, y); }
    // Pixels of the editor.
    void movePointer(int x, int y) { client_.movePointer(place_.first + x, place_.second + y); }
    // To the middle of a view of the main window.
    void moveTo(const ViewPlace& view) { movePointer(view.x + view.width / 2, view.y + view.height / 2); }
    void click(const ViewPlace& view)
    {
        moveTo(view);
        idle();
        client_.click(1);
        idle();
    }
    // From the middle of a view upwards.
    void drag(const ViewPlace& view, int upPx)
    {
        moveTo(view);
        idleFor(0.05);
        client_.press(1);
        for (int i = 1; i <= 9; ++i) {
            movePointer(view.x + view.width / 2, view.y + view.height / 2 - upPx * i / 9);
            idleFor(0.02);
        }
        client_.release(1);
        idleFor(0.05);
    }
    // A view of another window of ours, a child of the screen.
    void clickIn(xcb_window_t window, const ViewPlace& view)
    {
        if (const auto place = client_.geometryOf(window)) {
            client_.movePointer(place->x + view.x + view.width / 2, place->y + view.y + view.height / 2);
            idleFor(0.03);
            client_.click(1);
            idle();
        }
    }

    // An editor that the host idles in turn.
    EditorHost* neighbour = nullptr;

private:
    CTestXClient& client_;
    Host host_;
    xcb_window_t window_ = 0;
    std::pair<int, int> place_;
};

class EditorTest : public testing::Test
{
protected:
    explicit EditorTest(const std::string& screen = "1024x768x24") : server(screen)
    {
        dataFolder = home().root().string();
    }
    // Of the settings, for all tests: the library asks once.
    static const TemporaryFolder& home()
    {
        static const TemporaryFolder folder;
        return folder;
    }

    // Our windows on the screen beside the host's, from the lowest to the topmost.
    std::vector<xcb_window_t> popups()
    {
        std::vector<xcb_window_t> shown = client.childrenOf(client.root());
        std::erase_if(shown, [&](xcb_window_t window) {
            const auto attributes = client.attributesOf(window);
            return client.isOwn(window) || !attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE;
        });
        return shown;
    }

    CTestXServer server;
    CTestXClient client;
};

} // namespace qel::test
