// From key codes of the X server to characters.
#pragma once

#include "CXcbConnection.h"
#include "SystemEvents.h"

#include <memory>
#include <vector>

namespace qel::platform {

// The user's keyboard: its layouts as the server has them, and the compose sequences of the user's language
// (those of English in UTF-8 where the process has none, so that dead keys work in hosts that never set a
// locale).
class CXkbKeyboard
{
public:
    explicit CXkbKeyboard(CXcbConnection& connection) : connection_(connection) {}

    // Reads the layouts at the first call; waits for the server, some milliseconds. Without the libraries
    // keys have neither numbers nor characters.
    void open();
    // Starts afresh with no key of a compose sequence typed.
    void resetCompose();
    // Reads the layouts anew when `event` says that they have changed.
    void handle(const xcb_generic_event_t& event);

    // None while a compose sequence is incomplete, several when it makes several characters.
    std::vector<KeyEvent> press(const xcb_key_press_event_t& event);
    KeyEvent release(const xcb_key_release_event_t& event);

private:
    template <auto& Unref>
    struct Release
    {
        void operator()(auto* object) const { Unref(object); }
    };
    template <typename T, auto& Unref>
    using Ref = std::unique_ptr<T, Release<Unref>>;

    void loadKeymap();
    void loadCompose();
    void selectEvents();
    KeyEvent translate(xcb_keycode_t code, std::uint16_t state);
    std::uint32_t keyOf(xcb_keycode_t code) const;

    CXcbConnection& connection_;
    bool isOpen_ = false;
    std::uint8_t firstEvent_ = 0; // of the server's keyboard extension; 0 for none
    Ref<xkb_context, xkb_context_unref> context_;
    Ref<xkb_keymap, xkb_keymap_unref> keymap_;
    Ref<xkb_state, xkb_state_unref> state_;
    Ref<xkb_compose_state, xkb_compose_state_unref> compose_;
};

} // namespace qel::platform
