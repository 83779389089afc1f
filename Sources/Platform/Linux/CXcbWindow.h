// One X11 window of ours.
#pragma once

#include "CSystemWindow.h"
#include "CSystemWindowListener.h"
#include "CXcbFocus.h"
#include "CXcbHints.h"
#include "CXcbPointer.h"
#include "CXcbSession.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace qel::platform {

// The window's requests, and what its events mean to the listener. A listener may destroy the window: after
// each call of it nothing of this object is touched.
class CXcbWindow : public CSystemWindow
{
public:
    CXcbWindow(std::shared_ptr<CXcbSession> session, CSystemWindowListener& listener);
    ~CXcbWindow() override;

    [[nodiscard]] int create(const WindowDescription& description);

    NativeWindow handle() const override { return isUsable() ? id_ : 0; }
    WindowKind kind() const override { return kind_; }
    void show() override;
    void hide() override;
    void raise() override;
    void setTitle(const std::string& title) override;
    void setCursor(CursorShape shape) override;
    void setPlace(const PixelRect& place) override;
    bool setParent(NativeWindow parent) override;
    PixelRect screenPlace() const override { return {screenX_, screenY_, width_, height_}; }
    void invalidate(const PixelRect& area) override;
    void present(const CSystemSurface& surface, const PixelRect& source, int x, int y) override;
    void takeFocus() override;
    void giveFocusBack() override;
    bool hasFocus() const override { return focus_.isFocused(); }

    // --- for the session
    xcb_window_t id() const { return id_; }
    xcb_window_t topLevel() const { return topLevel_; } // itself for a dialog
    bool isShown() const { return isShown_; }
    void handle(const xcb_generic_event_t& event);
    // Calls onPaint() for what is to be painted; true when something was presented.
    bool paint();
    void askScreenPosition();
    void reportActivation(bool isActive);
    void reportHostShown(bool isShown);
    void lose(); // the window is gone

    static xcb_window_t windowOf(const xcb_generic_event_t& event); // that reports it, or 0

private:
    bool isUsable() const { return id_ != 0 && session_->isUsable(); }
    bool isTopLevel() const { return kind_ == WindowKind::kPopup || kind_ == WindowKind::kDialog; }
    xcb_connection_t* out() const { return session_->connection().out(); }

    [[nodiscard]] int createNative(const WindowDescription& description, xcb_window_t parent);
    void handleConfigure(const xcb_configure_notify_event_t& event, std::uint32_t sequence);
    void handleKey(const xcb_key_press_event_t& event, bool isPress);
    void handleMessage(const xcb_client_message_event_t& event);
    void noteScreenPosition(int screenX, int screenY);
    void noteOrigin(const xcb_motion_notify_event_t& event);
    static bool isGone(const std::weak_ptr<bool>& life) { return life.expired(); }

    const std::shared_ptr<CXcbSession> session_;
    CSystemWindowListener& listener_;
    CXcbHints hints_;
    CXcbFocus focus_;
    CXcbPointer pointer_;
    std::shared_ptr<bool> life_ = std::make_shared<bool>(true); // ends with the object; answers look at it
    WindowKind kind_ = WindowKind::kChild;
    xcb_window_t id_ = 0;
    xcb_window_t topLevel_ = 0;
    xcb_gcontext_t gc_ = 0;
    int width_ = 1;
    int height_ = 1;
    int screenX_ = 0;
    int screenY_ = 0;
    bool isShown_ = false;
    bool isPresenting_ = false;
    bool hasPresented_ = false;
    std::uint32_t placeSequence_ = 0; // the last request of ours that set the size
    CursorShape cursor_ = CursorShape::kArrow;
    std::vector<PixelRect> damage_;
};

} // namespace qel::platform
