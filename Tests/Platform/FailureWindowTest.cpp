#include "CFailureWindow.h"

#include <gtest/gtest.h> // before Xlib, whose macros take names it uses

#include "Linux/CX11Text.h"

#include <cstdlib>
#include <string>
#include <vector>

namespace qel::platform {

namespace {

constexpr int kCharacterWidthPx = 10;

std::vector<std::string> wrapped(const std::string& text, int widthPx)
{
    X11Library x11;
    x11.XTextWidth16 = [](XFontStruct*, const XChar2b*, int count) { return count * kCharacterWidthPx; };
    std::vector<std::string> lines;
    for (const X11Line& line : wrapX11Text(x11, nullptr, text, widthPx)) {
        std::string& bytes = lines.emplace_back();
        for (const XChar2b& character : line) {
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
