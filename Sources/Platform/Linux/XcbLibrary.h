// The X client libraries, found at run time.
#pragma once

#include <xcb/randr.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>
#include <xcb/xcb_cursor.h>
#include <xcb/xcbext.h>
#define explicit explicit_ // a field of a record, in a header that was made for C alone
#include <xcb/xkb.h>
#undef explicit
#include <xkbcommon/xkbcommon-compose.h>
#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

#include <type_traits>

// A library linked against these would not even load on a server without X. So this namespace has a pointer
// under each function's own name, which hides the real one: calls read as they always do and go to the
// library that loadXcb() found, and one missing from the lists below does not link. What is loaded stays
// loaded.

// clang-format off
#define QEL_XCB_FUNCTIONS(use) \
    use(xcb_change_property) use(xcb_change_window_attributes) use(xcb_clear_area) use(xcb_close_font) \
    use(xcb_configure_window) use(xcb_connect) use(xcb_connection_has_error) use(xcb_convert_selection) \
    use(xcb_create_colormap) use(xcb_create_cursor) use(xcb_create_gc) use(xcb_create_glyph_cursor) \
    use(xcb_create_pixmap) use(xcb_create_window) use(xcb_create_window_checked) use(xcb_delete_property) \
    use(xcb_depth_next) use(xcb_depth_visuals_iterator) use(xcb_destroy_window) use(xcb_disconnect) use(xcb_flush) \
    use(xcb_free_cursor) use(xcb_free_gc) use(xcb_free_pixmap) use(xcb_generate_id) \
    use(xcb_get_extension_data) use(xcb_get_file_descriptor) use(xcb_get_input_focus) \
    use(xcb_get_maximum_request_length) use(xcb_get_property) use(xcb_get_property_value) \
    use(xcb_get_property_value_length) use(xcb_get_setup) use(xcb_get_window_attributes) \
    use(xcb_image_text_16) use(xcb_intern_atom) use(xcb_map_window) use(xcb_open_font) \
    use(xcb_poll_for_event) use(xcb_poll_for_reply) use(xcb_poly_rectangle) use(xcb_put_image) \
    use(xcb_query_font) use(xcb_query_font_char_infos) use(xcb_query_font_char_infos_length) \
    use(xcb_query_pointer) use(xcb_query_tree) use(xcb_reparent_window_checked) use(xcb_request_check) \
    use(xcb_screen_allowed_depths_iterator) use(xcb_screen_next) use(xcb_send_event) \
    use(xcb_set_input_focus) use(xcb_set_selection_owner) use(xcb_setup_pixmap_formats) \
    use(xcb_setup_pixmap_formats_length) use(xcb_setup_roots_iterator) use(xcb_translate_coordinates) \
    use(xcb_unmap_window) use(xcb_visualtype_next) use(xcb_wait_for_reply) use(xcb_warp_pointer)
#define QEL_XCB_SHM_FUNCTIONS(use) \
    use(xcb_shm_id) use(xcb_shm_attach_fd_checked) use(xcb_shm_detach) use(xcb_shm_put_image) \
    use(xcb_shm_query_version)
#define QEL_XCB_RANDR_FUNCTIONS(use) \
    use(xcb_randr_id) use(xcb_randr_get_monitors) use(xcb_randr_get_monitors_monitors_iterator) \
    use(xcb_randr_monitor_info_next) use(xcb_randr_query_version)
#define QEL_XCB_CURSOR_FUNCTIONS(use) \
    use(xcb_cursor_context_new) use(xcb_cursor_context_free) use(xcb_cursor_load_cursor)
#define QEL_XCB_XKB_FUNCTIONS(use) use(xcb_xkb_per_client_flags) use(xcb_xkb_select_events)
#define QEL_XKB_FUNCTIONS(use) \
    use(xkb_compose_state_feed) use(xkb_compose_state_get_status) use(xkb_compose_state_get_utf8) \
    use(xkb_compose_state_new) use(xkb_compose_state_reset) use(xkb_compose_state_unref) \
    use(xkb_compose_table_new_from_locale) use(xkb_compose_table_unref) use(xkb_context_new) \
    use(xkb_context_unref) use(xkb_keymap_key_get_syms_by_level) use(xkb_keymap_num_layouts_for_key) \
    use(xkb_keymap_unref) use(xkb_state_key_get_one_sym) use(xkb_state_key_get_utf32) \
    use(xkb_state_mod_name_is_active) use(xkb_state_unref) use(xkb_state_update_mask)
#define QEL_XKB_X11_FUNCTIONS(use) \
    use(xkb_x11_get_core_keyboard_device_id) use(xkb_x11_keymap_new_from_device) \
    use(xkb_x11_setup_xkb_extension) use(xkb_x11_state_new_from_device)
// clang-format on

namespace qel::platform {

#define QEL_DECLARE_POINTER(name) extern std::add_pointer_t<decltype(::name)> name;
QEL_XCB_FUNCTIONS(QEL_DECLARE_POINTER)
QEL_XCB_SHM_FUNCTIONS(QEL_DECLARE_POINTER)
QEL_XCB_RANDR_FUNCTIONS(QEL_DECLARE_POINTER)
QEL_XCB_CURSOR_FUNCTIONS(QEL_DECLARE_POINTER)
QEL_XCB_XKB_FUNCTIONS(QEL_DECLARE_POINTER)
QEL_XKB_FUNCTIONS(QEL_DECLARE_POINTER)
QEL_XKB_X11_FUNCTIONS(QEL_DECLARE_POINTER)
#undef QEL_DECLARE_POINTER

// False when libxcb is missing. Any thread; the first call loads.
bool loadXcb();

// The others may be missing on their own; without them pictures go through the connection, the screen counts
// as one monitor, cursors are the server's plain ones, and no text can be typed. Valid after loadXcb().
bool hasXcbShm();
bool hasXcbRandr();
bool hasXcbCursor();
bool hasXkb();

} // namespace qel::platform
