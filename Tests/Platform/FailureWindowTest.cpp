#include "FailureWindow.h"

#include "CTestXClient.h"
#include "CTestXServer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <string>

namespace qel::platform {

TEST(FailureWindow, WithoutADisplayWritesTheLinesAndReturns)
{
    const char* display = std::getenv("DISPLAY");
    const std::string oldDisplay = display ? display : "";
    unsetenv("DISPLAY");
    testing::internal::CaptureStderr();
    showFailureWindow("title", "text", "line 1\nline 2");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "title\ntext\nline 1\nline 2\n");
    if (display) {
        setenv("DISPLAY", oldDisplay.c_str(), 1);
    }
}

TEST(FailureWindow, StaysUntilTheUserOrTheServerEndsIt)
{
    constexpr auto kDeadline = std::chrono::seconds(10);
    const auto endsWith = [&](const std::function<void(test::CTestXServer&, test::CTestXClient&)>& end) {
        test::CTestXServer server;
        test::CTestXClient client;
        auto shown = std::async(std::launch::async, [] { showFailureWindow("title", "text", "details"); });
        xcb_window_t window = 0;
        const auto deadline = std::chrono::steady_clock::now() + kDeadline;
        while (std::chrono::steady_clock::now() < deadline &&
               !(window && client.attributesOf(window)->map_state == XCB_MAP_STATE_VIEWABLE)) {
            window = client.childOf(client.root());
        }
        EXPECT_EQ(client.geometryOf(window)->width, 640);
        EXPECT_EQ(shown.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
        end(server, client);
        return shown.wait_for(kDeadline) == std::future_status::ready;
    };
    EXPECT_TRUE(endsWith([](test::CTestXServer&, test::CTestXClient& client) {
        client.movePointer(320, 372); // its button, at the bottom in the middle
        client.click(1);
    }));
    constexpr int kEscape = 9;
    EXPECT_TRUE(endsWith([](test::CTestXServer&, test::CTestXClient& client) {
        client.movePointer(320, 100);
        client.click(1);
        client.type(kEscape);
    }));
    EXPECT_TRUE(endsWith([](test::CTestXServer& server, test::CTestXClient&) { server.kill(); }));
}

} // namespace qel::platform
