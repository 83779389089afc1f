// The editor in a host's window, with the system's own pointer.
#include "HostRig.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include <windows.h>

namespace qel::test {
namespace {

constexpr DWORD kPatienceMs = 5000;

std::vector<HWND> topWindows()
{
    std::vector<HWND> windows;
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND window, LPARAM list) {
            if (IsWindowVisible(window)) {
                reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&windows));
    return windows;
}

class WindowsEditor : public testing::Test
{
protected:
    WindowsEditor()
    {
        host_.call(vst24::kOpen);
        ERect* rect = nullptr;
        host_.call(vst24::kEditGetRect, 0, 0, &rect);
        rect_ = rect ? *rect : ERect();
        window_ = CreateWindowExW(0, L"STATIC", L"host", WS_POPUP | WS_CLIPCHILDREN | WS_VISIBLE, 40, 30,
                                  rect_.right, rect_.bottom, nullptr, nullptr, nullptr, nullptr);
    }
    ~WindowsEditor() override
    {
        host_.close();
        DestroyWindow(window_);
    }

    bool open() { return host_.call(vst24::kEditOpen, 0, 0, window_) != 0; }
    void close() { host_.call(vst24::kEditClose); }
    HWND editor() const { return GetWindow(window_, GW_CHILD); }

    // As hosts do, until the condition holds; false when it never does.
    bool runUntil(const std::function<bool()>& condition, DWORD limitMs = kPatienceMs)
    {
        const DWORD start = GetTickCount();
        do {
            for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) {
                TranslateMessage(&message);
                DispatchMessageW(&message);
            }
            host_.call(vst24::kEditIdle);
            if (condition()) {
                return true;
            }
            Sleep(5);
        } while (GetTickCount() - start < limitMs);
        return false;
    }
    void run(DWORD ms)
    {
        runUntil([] { return false; }, ms);
    }
    std::set<COLORREF> colours()
    {
        const HDC context = GetDC(editor());
        std::set<COLORREF> found;
        for (int y = 4; y < rect_.bottom; y += 16) {
            for (int x = 4; x < rect_.right; x += 16) {
                found.insert(GetPixel(context, x, y));
            }
        }
        ReleaseDC(editor(), context);
        return found;
    }

    void pointerTo(int x, int y)
    {
        POINT point{x, y};
        ClientToScreen(window_, &point);
        SetCursorPos(point.x, point.y);
        run(15);
    }
    void button(DWORD flag)
    {
        INPUT input{};
        input.type = INPUT_MOUSE;
        input.mi.dwFlags = flag;
        SendInput(1, &input, sizeof input);
        run(15);
    }
    void click(int x, int y)
    {
        pointerTo(x, y);
        button(MOUSEEVENTF_LEFTDOWN);
        button(MOUSEEVENTF_LEFTUP);
    }
    // What the parameters are after a drag upwards.
    std::vector<float> drag(int x, int y)
    {
        pointerTo(x, y);
        button(MOUSEEVENTF_LEFTDOWN);
        pointerTo(x, y - 8);
        pointerTo(x, y - 30);
        button(MOUSEEVENTF_LEFTUP);
        return host_.getAll();
    }
    // Visits points of the window until the action says that it was the right one.
    bool search(const std::function<bool(int x, int y)>& action)
    {
        for (int y = 34; y < rect_.bottom; y += 26) {
            for (int x = 10; x < rect_.right; x += 26) {
                if (action(x, y)) {
                    return true;
                }
            }
        }
        return false;
    }

    Host host_;
    ERect rect_{};
    HWND window_ = nullptr;
};

TEST_F(WindowsEditor, FillsTheHostsWindowAndPaints)
{
    ASSERT_TRUE(open());
    ASSERT_NE(editor(), nullptr);
    RECT place{};
    GetClientRect(editor(), &place);
    EXPECT_EQ(place.right, rect_.right);
    EXPECT_EQ(place.bottom, rect_.bottom);
    EXPECT_TRUE(runUntil([&] { return colours().size() > 8; })) << colours().size() << " colours";
    close();
    EXPECT_EQ(editor(), nullptr);
}

TEST_F(WindowsEditor, TurnsAKnobByThePointer)
{
    ASSERT_TRUE(open());
    run(300);
    const std::vector<float> before = host_.getAll();
    EXPECT_TRUE(search([&](int x, int y) { return drag(x, y) != before; }));
    EXPECT_GT(host_.automations, 0);
}

TEST_F(WindowsEditor, ClosesAPopUpByAPressElsewhere)
{
    ASSERT_TRUE(open());
    run(300);
    const auto popups = [&] {
        return std::ranges::count_if(topWindows(), [](HWND window) {
            return (GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_NOACTIVATE) != 0;
        });
    };
    const auto closeDialogs = [&] {
        for (HWND window : topWindows()) {
            if (window != window_ && !(GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_NOACTIVATE)) {
                SendMessageW(window, WM_CLOSE, 0, 0);
            }
        }
    };
    const auto before = popups();
    POINT opened{};
    ASSERT_TRUE(search([&](int x, int y) {
        click(x, y);
        closeDialogs();
        opened = {x, y};
        return popups() > before;
    }));
    run(300);
    const int bottom = rect_.bottom - 3; // where no pop-up reaches
    click(opened.x < rect_.right / 2 ? rect_.right - 3 : 2, opened.y < rect_.bottom / 2 ? bottom : 2);
    EXPECT_TRUE(runUntil([&] { return popups() == before; })) << "opened at " << opened.x << ", " << opened.y;
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
