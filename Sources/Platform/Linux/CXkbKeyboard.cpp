// Layouts, compose sequences, and the numbers of keys.
#include "CXkbKeyboard.h"

#include "Utf8.h"

#include <xkbcommon/xkbcommon-keysyms.h>

#include <array>
#include <clocale>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

namespace qel::platform {

namespace {

constexpr std::pair<xkb_keysym_t, std::uint32_t> kKeys[] = {
    {XKB_KEY_BackSpace, key::kBackspace},
    {XKB_KEY_Tab, key::kTab},
    {XKB_KEY_ISO_Left_Tab, key::kTab},
    {XKB_KEY_Return, key::kEnter},
    {XKB_KEY_KP_Enter, key::kEnter},
    {XKB_KEY_Escape, key::kEscape},
    {XKB_KEY_Page_Up, key::kPageUp},
    {XKB_KEY_KP_Page_Up, key::kPageUp},
    {XKB_KEY_Page_Down, key::kPageDown},
    {XKB_KEY_KP_Page_Down, key::kPageDown},
    {XKB_KEY_End, key::kEnd},
    {XKB_KEY_KP_End, key::kEnd},
    {XKB_KEY_Home, key::kHome},
    {XKB_KEY_KP_Home, key::kHome},
    {XKB_KEY_Left, key::kLeft},
    {XKB_KEY_KP_Left, key::kLeft},
    {XKB_KEY_Up, key::kUp},
    {XKB_KEY_KP_Up, key::kUp},
    {XKB_KEY_Right, key::kRight},
    {XKB_KEY_KP_Right, key::kRight},
    {XKB_KEY_Down, key::kDown},
    {XKB_KEY_KP_Down, key::kDown},
    {XKB_KEY_Insert, key::kInsert},
    {XKB_KEY_KP_Insert, key::kInsert},
    {XKB_KEY_Delete, key::kDelete},
    {XKB_KEY_KP_Delete, key::kDelete},
};

// 0 for a symbol that has no number on any layout.
std::uint32_t keyOfSymbol(xkb_keysym_t symbol)
{
    for (const auto& [ours, number] : kKeys) {
        if (ours == symbol) {
            return number;
        }
    }
    if (symbol >= XKB_KEY_a && symbol <= XKB_KEY_z) {
        return symbol - XKB_KEY_a + 'A';
    }
    if ((symbol >= XKB_KEY_A && symbol <= XKB_KEY_Z) || (symbol >= XKB_KEY_0 && symbol <= XKB_KEY_9)) {
        return symbol; // the symbols of Latin letters and digits are their characters
    }
    if (symbol >= XKB_KEY_KP_0 && symbol <= XKB_KEY_KP_9) {
        return symbol - XKB_KEY_KP_0 + '0';
    }
    if (symbol >= XKB_KEY_F1 && symbol <= XKB_KEY_F12) {
        return symbol - XKB_KEY_F1 + key::kF1;
    }
    return 0;
}

bool isControl(char32_t character)
{
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

} // namespace

void CXkbKeyboard::open()
{
    if (isOpen_ || !hasXkb() || !connection_.isAlive()) {
        return;
    }
    isOpen_ = true;
    const CBrokenPipeGuard guard;
    // The layouts come from the server; no file of a layout is needed.
    context_.reset(xkb_context_new(
        static_cast<xkb_context_flags>(XKB_CONTEXT_NO_DEFAULT_INCLUDES | XKB_CONTEXT_NO_ENVIRONMENT_NAMES)));
    if (!context_ || !xkb_x11_setup_xkb_extension(
                         connection_.out(), XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                         XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, &firstEvent_, nullptr)) {
        firstEvent_ = 0;
        return;
    }
    selectEvents();
    loadKeymap();
    loadCompose();
}

void CXkbKeyboard::selectEvents()
{
    constexpr std::uint16_t kEvents = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr std::uint16_t kAllParts = 0xFF;
    constexpr std::uint16_t kDevice = XCB_XKB_ID_USE_CORE_KBD;
    xcb_xkb_select_events(connection_.out(), kDevice, kEvents, 0, kEvents, kAllParts, kAllParts, nullptr);
    // A held key then sends presses alone, as on other systems.
    constexpr std::uint32_t kRepeatsArePresses = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    const auto cookie =
        xcb_xkb_per_client_flags(connection_.out(), kDevice, kRepeatsArePresses, kRepeatsArePresses, 0, 0, 0);
    connection_.whenAnswered(cookie, [](const void* /*reply*/) {});
}

void CXkbKeyboard::loadKeymap()
{
    xcb_connection_t* connection = connection_.out();
    const std::int32_t device = xkb_x11_get_core_keyboard_device_id(connection);
    if (device < 0) {
        return;
    }
    keymap_.reset(
        xkb_x11_keymap_new_from_device(context_.get(), connection, device, XKB_KEYMAP_COMPILE_NO_FLAGS));
    state_.reset(keymap_ ? xkb_x11_state_new_from_device(keymap_.get(), connection, device) : nullptr);
}

void CXkbKeyboard::loadCompose()
{
    const auto tableOf = [this](const char* locale) {
        return xkb_compose_table_new_from_locale(context_.get(), locale, XKB_COMPOSE_COMPILE_NO_FLAGS);
    };
    const char* locale = std::setlocale(LC_CTYPE, nullptr);
    const std::string_view name = locale ? locale : "C";
    xkb_compose_table* table = name == "C" || name == "POSIX" ? nullptr : tableOf(locale);
    table = table ? table : tableOf("en_US.UTF-8");
    if (table) {
        compose_.reset(xkb_compose_state_new(table, XKB_COMPOSE_STATE_NO_FLAGS));
        xkb_compose_table_unref(table);
    }
}

void CXkbKeyboard::resetCompose()
{
    if (compose_) {
        xkb_compose_state_reset(compose_.get());
    }
}

void CXkbKeyboard::handle(const xcb_generic_event_t& event)
{
    const int type = event.response_type & 0x7F;
    if (firstEvent_ && (type == XCB_MAPPING_NOTIFY || type == firstEvent_)) {
        const CBrokenPipeGuard guard;
        loadKeymap();
    }
}

KeyEvent CXkbKeyboard::translate(xcb_keycode_t code, std::uint16_t state)
{
    KeyEvent result;
    if (!state_) {
        return result;
    }
    // An event tells the modifiers and, in two bits, the layout it was typed in.
    const xkb_layout_index_t layout = (state >> 13) & 3u;
    xkb_state_update_mask(state_.get(), state & 0xFFu, 0, 0, 0, 0, layout);
    const auto isActive = [this](const char* modifier) {
        return xkb_state_mod_name_is_active(state_.get(), modifier, XKB_STATE_MODS_EFFECTIVE) > 0;
    };
    result.modifiers.isShift = isActive(XKB_MOD_NAME_SHIFT);
    result.modifiers.isCtrl = isActive(XKB_MOD_NAME_CTRL);
    result.modifiers.isAlt = isActive(XKB_MOD_NAME_ALT);
    result.key = keyOf(code);
    return result;
}

std::uint32_t CXkbKeyboard::keyOf(xcb_keycode_t code) const
{
    if (const std::uint32_t number = keyOfSymbol(xkb_state_key_get_one_sym(state_.get(), code))) {
        return number;
    }
    const xkb_layout_index_t layouts = xkb_keymap_num_layouts_for_key(keymap_.get(), code);
    for (xkb_layout_index_t layout = 0; layout < layouts; ++layout) {
        const xkb_keysym_t* symbols = nullptr;
        const int count = xkb_keymap_key_get_syms_by_level(keymap_.get(), code, layout, 0, &symbols);
        const std::uint32_t number = count == 1 ? keyOfSymbol(symbols[0]) : 0;
        if (number) {
            return number;
        }
    }
    return 0;
}

std::vector<KeyEvent> CXkbKeyboard::press(const xcb_key_press_event_t& event)
{
    KeyEvent result = translate(event.detail, event.state);
    if (!state_ || result.modifiers.isCtrl || result.modifiers.isAlt) {
        return {result};
    }
    const xkb_keysym_t symbol = xkb_state_key_get_one_sym(state_.get(), event.detail);
    const bool isPlain =
        !compose_ || xkb_compose_state_feed(compose_.get(), symbol) == XKB_COMPOSE_FEED_IGNORED;
    const auto status = isPlain ? XKB_COMPOSE_NOTHING : xkb_compose_state_get_status(compose_.get());
    if (status == XKB_COMPOSE_COMPOSING) {
        return {};
    }
    std::u32string text;
    if (status == XKB_COMPOSE_COMPOSED) {
        std::array<char, 64> buffer{};
        xkb_compose_state_get_utf8(compose_.get(), buffer.data(), buffer.size());
        text = fromUtf8(buffer.data());
    } else {
        text.push_back(static_cast<char32_t>(xkb_state_key_get_utf32(state_.get(), event.detail)));
    }
    std::erase_if(text, isControl);
    std::vector<KeyEvent> results{result};
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i > 0) {
            results.push_back({0, 0, result.modifiers});
        }
        results.back().character = text[i];
    }
    return results;
}

KeyEvent CXkbKeyboard::release(const xcb_key_release_event_t& event)
{
    return translate(event.detail, event.state);
}

} // namespace qel::platform
