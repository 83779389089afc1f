#include "FailureWindow.h"

#include "CTestXClient.h"
#include "CTestXServer.h"
#include "Linux/XcbText.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <string>
#include <vector>

namespace qel::platform {

namespace {

constexpr int kCharacterWidthPx = 10;

std::vector<std::string> wrapped(const std::string& text, int widthPx)
{
    std::vector<std::string> lines;
    for (const XcbLine& line : wrapXcbText([](xcb_char2b_t) { return kCharacterWidthPx; }, text, widthPx)) {
        std::string& bytes = lines.emplace_back();
        for (const xcb_char2b_t& character : line) {
            bytes += character.byte1 ? '#' : static_cast<char>(character.byte2);
        }
    }
    return lines;
}

} // namespace

TEST(FailureWindow, HookTakesItsPlace)
{
    std::string seen;
    const FailureWindowHook old =
        setFailureWindowHook([&](const std::string& title, const std::string& text,
                                 const std::string& details) { seen += title + "|" + text + "|" + details; });
    showFailureWindow("title", "text", "line 1\nline 2");
    setFailureWindowHook(old);
    EXPECT_EQ(seen, "title|text|line 1\nline 2");
}

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

TEST(FailureWindow, BreaksLongLinesAtBlanksOrAnywhere)
{
    using Lines = std::vector<std::string>;
    EXPECT_EQ(wrapped("one two three", 80), (Lines{"one two ", "three"}));
    EXPECT_EQ(wrapped("abcdefgh ij", 40), (Lines{"abcd", "efgh", " ij"}));
    EXPECT_EQ(wrapped("a\n\nb\n", 40), (Lines{"a", "", "b", ""}));
    EXPECT_EQ(wrapped("ab", 1), (Lines{"a", "b"})) << "even too narrow a window must make progress";
    EXPECT_EQ(wrapped("", 40), (Lines{""}));
    // Latin-1 stays, other planes and broken UTF-8 show as question marks.
    EXPECT_EQ(wrapped("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xC3", 900), (Lines{"\xE9#??"}));
}

} // namespace qel::platform
