// The window that tells why the plug-in could not start, as its user has it.
#include "FailureWindow.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <string>
#include <utility>

#include <windows.h>

namespace qel::platform {
namespace {

constexpr const wchar_t* kClass = L"ErrorWindowClass";

HWND shownWindow()
{
    for (int i = 0; i < 1000; ++i) {
        const HWND window = FindWindowW(kClass, nullptr);
        if (window && IsWindowVisible(window)) {
            return window;
        }
        Sleep(10);
    }
    return nullptr;
}

std::wstring textOf(HWND window)
{
    wchar_t text[64] = L"";
    GetWindowTextW(window, text, 64);
    return text;
}

TEST(FailureWindow, StaysUntilItsUserClosesIt)
{
    for (const auto& [message, key] : {std::pair(WM_CLOSE, 0), std::pair(WM_KEYDOWN, VK_ESCAPE)}) {
        const auto shown = std::async(std::launch::async,
                                      [] { showFailureWindow("T\xC3\xADtle", "text", "line 1\nline 2"); });
        const HWND window = shownWindow();
        ASSERT_NE(window, nullptr);
        EXPECT_EQ(textOf(window), L"T\u00EDtle");
        EXPECT_EQ(textOf(FindWindowExW(window, nullptr, L"STATIC", nullptr)), L"text");
        EXPECT_EQ(textOf(FindWindowExW(window, nullptr, L"EDIT", nullptr)), L"line 1\r\nline 2");
        EXPECT_EQ(shown.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
        PostMessageW(window, message, static_cast<WPARAM>(key), 0);
        EXPECT_EQ(shown.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    }
    WNDCLASSEXW description{};
    description.cbSize = sizeof description;
    EXPECT_FALSE(GetClassInfoExW(GetModuleHandleW(nullptr), kClass, &description)) << "it has gone with it";
}

} // namespace
} // namespace qel::platform
