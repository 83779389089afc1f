// An editor in a host's window, with the system's own pointer, keyboard and clipboard.
#pragma once

#include "HostRig.h"
#include "TemporaryHome.h"
#include "ViewPlace.h"

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <initializer_list>
#include <set>
#include <string>
#include <vector>

#include <windows.h>

namespace qel::test {

// In its window: "ui.main-window...", "win-settings..." and the like.
ViewPlace placeOf(const std::string& path);

// The visible ones of this thread.
std::vector<HWND> topWindows();

void setClipboard(const std::wstring& text);
std::wstring clipboard();

// What a user does in the system's file dialogs, which run a loop of their own: each act is called once with
// the dialog, or with the question above it, that is before the user then.
class DialogUser
{
public:
    using Act = std::function<void(HWND dialog)>;

    explicit DialogUser(std::initializer_list<Act> acts);
    DialogUser(const DialogUser&) = delete;
    DialogUser& operator=(const DialogUser&) = delete;
    ~DialogUser();

    bool isDone() const { return acts_.empty(); }

    static Act press(int button);
    static Act enter(const std::wstring& path);

private:
    static void CALLBACK tick(HWND window, UINT message, UINT_PTR timer, DWORD time);

    static inline DialogUser* current = nullptr;
    std::deque<Act> acts_;
    UINT_PTR timer_;
};

class WindowsEditor : public testing::Test
{
protected:
    WindowsEditor();
    ~WindowsEditor() override;

    bool open();
    void close() { host_.call(vst24::kEditClose); }
    ERect rect();
    HWND editor() const { return GetWindow(window_, GW_CHILD); }

    // As hosts do, until the condition holds; false when it never does.
    bool runUntil(const std::function<bool()>& condition, DWORD limitMs = 5000);
    void run(DWORD ms)
    {
        runUntil([] { return false; }, ms);
    }

    // Some of the editor's.
    std::vector<COLORREF> colours();

    // Our other windows: lists, which never take the focus, and dialogs.
    std::vector<HWND> popups() const { return others(true); }
    std::vector<HWND> dialogs() const { return others(false); }

    // --- the user
    void pointerTo(HWND window, int x, int y);
    void moveTo(HWND window, const ViewPlace& view)
    {
        pointerTo(window, view.x + view.width / 2, view.y + view.height / 2);
    }
    void button(DWORD flag);
    void click(HWND window, const ViewPlace& view);
    // A dialog of ours, once it is there to be used; null if it never comes.
    HWND openDialog(const ViewPlace& button);
    void key(WORD code, bool isDown);
    void type(WORD code, WORD held = 0);
    // As a list of symbols does.
    void insert(wchar_t character);

    // Of the settings, for all tests: the library asks once, for the first effect of the process.
    static inline const TemporaryHome home_;
    Host host_;
    HWND window_ = nullptr;
    int hostKeys_ = 0; // that the host's loop has seen

private:
    std::vector<HWND> others(bool areLists) const;
};

} // namespace qel::test
