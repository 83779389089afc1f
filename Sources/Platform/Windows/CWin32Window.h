// One window of ours over USER32.
#pragma once

#include "CSystemWindow.h"
#include "CSystemWindowListener.h"
#include "CWin32KeyHook.h"
#include "CWin32Session.h"
#include "WindowsApi.h"

#include <memory>

namespace qel::platform {

// The window's calls, and what its messages mean to the listener. A listener may destroy the window: after
// each call of it nothing of this object is touched.
class CWin32Window : public CSystemWindow
{
public:
    CWin32Window(std::shared_ptr<CWin32Session> session, CSystemWindowListener& listener);
    ~CWin32Window() override;

    [[nodiscard]] int create(const WindowDescription& description);

    NativeWindow handle() const override { return reinterpret_cast<NativeWindow>(window_); }
    WindowKind kind() const override { return kind_; }
    void show() override;
    void hide() override;
    void raise() override;
    void setTitle(const std::string& title) override;
    void setCursor(CursorShape shape) override;
    void setPlace(const PixelRect& place) override;
    bool setParent(NativeWindow parent) override;
    PixelRect screenPlace() const override;
    void invalidate(const PixelRect& area) override;
    void present(const CSystemSurface& surface, const PixelRect& source, int x, int y) override;
    void takeFocus() override;
    void giveFocusBack() override;
    bool hasFocus() const override { return window_ && GetFocus() == window_; }

    // --- for the display
    HWND window() const { return window_; }
    void close(); // destroys the window without a word to the listener
    // Moves of the host's window, and whether the user works in it, send no message to a child.
    void watchHost(bool isActive);

    // Of the registered classes.
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    // What the hook has kept from the host: a key, or a character that has none.
    void handleKey(UINT message, WPARAM wParam, LPARAM lParam);
    void handleText(WPARAM unit);

private:
    bool isTopLevel() const { return kind_ == WindowKind::kPopup || kind_ == WindowKind::kDialog; }
    LRESULT handle(UINT message, WPARAM wParam, LPARAM lParam);
    void handlePaint();
    void handleSize(int width, int height);
    void handleMove();
    void handleButton(MouseButton button, bool isPress, bool isDouble, LPARAM lParam);
    void handlePointer(LPARAM lParam);
    void handleWheel(WPARAM wParam, LPARAM lParam);
    void handleFocus(bool isFocused);
    void handleDestroyed();
    void fillPointer(POINT point, PointerEvent& event) const;

    const std::shared_ptr<CWin32Session> session_;
    CSystemWindowListener& listener_;
    std::shared_ptr<bool> life_ = std::make_shared<bool>(true); // ends with the object
    WindowKind kind_ = WindowKind::kChild;
    HWND window_ = nullptr;
    HWND previousFocus_ = nullptr;
    HDC paintContext_ = nullptr; // while onPaint() runs
    HCURSOR cursor_ = nullptr;
    CWin32KeyHook keyHook_;
    int width_ = 1;
    int height_ = 1;
    POINT screenOrigin_{};
    unsigned heldButtons_ = 0;
    int wheelRest_ = 0; // of a notch
    bool isTrackingLeave_ = false;
    bool isFocusTaken_ = false;
    bool isHostActive_ = true;
    bool isHostShown_ = true;
};

} // namespace qel::platform
