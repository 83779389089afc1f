// Another X client: the host around our windows, the user's hands, and a program to exchange texts with.
#pragma once

#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace qel::test {

struct XFree
{
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using XPtr = std::unique_ptr<T, XFree>;

class CTestXClient
{
public:
    CTestXClient() : connection_(xcb_connect(nullptr, nullptr))
    {
        screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    }
    CTestXClient(const CTestXClient&) = delete;
    CTestXClient& operator=(const CTestXClient&) = delete;
    ~CTestXClient() { xcb_disconnect(connection_); }

    xcb_connection_t* get() const { return connection_; }
    xcb_window_t root() const { return screen_->root; }
    bool isOwn(xcb_window_t window) const
    {
        const xcb_setup_t* const setup = xcb_get_setup(connection_);
        return (window & ~setup->resource_id_mask) == setup->resource_id_base;
    }

    // Shown, and asking for keys and changes of properties.
    xcb_window_t makeWindow(int x, int y, int width, int height, xcb_window_t parent = 0)
    {
        const xcb_window_t window = xcb_generate_id(connection_);
        const std::uint32_t mask = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, parent ? parent : root(),
                          static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                          static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height), 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, screen_->root_visual, XCB_CW_EVENT_MASK, &mask);
        xcb_map_window(connection_, window);
        sync();
        return window;
    }
    void moveWindow(xcb_window_t window, int x, int y)
    {
        const std::uint32_t values[] = {static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)};
        xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, values);
        sync();
    }
    void resizeWindow(xcb_window_t window, int width, int height)
    {
        const std::uint32_t values[] = {static_cast<std::uint32_t>(width),
                                        static_cast<std::uint32_t>(height)};
        xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values);
        sync();
    }
    void destroyWindow(xcb_window_t window)
    {
        xcb_destroy_window(connection_, window);
        sync();
    }

    void raiseWindow(xcb_window_t window)
    {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
        sync();
    }

    // Does nobody else hold the pointer or the keyboard?
    bool canGrab()
    {
        const XPtr<xcb_grab_pointer_reply_t> pointer(xcb_grab_pointer_reply(
            connection_,
            xcb_grab_pointer(connection_, 0, root(), 0, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC, XCB_NONE,
                             XCB_NONE, XCB_CURRENT_TIME),
            nullptr));
        const XPtr<xcb_grab_keyboard_reply_t> keyboard(
            xcb_grab_keyboard_reply(connection_,
                                    xcb_grab_keyboard(connection_, 0, root(), XCB_CURRENT_TIME,
                                                      XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                    nullptr));
        xcb_ungrab_pointer(connection_, XCB_CURRENT_TIME);
        xcb_ungrab_keyboard(connection_, XCB_CURRENT_TIME);
        return pointer && keyboard && pointer->status == XCB_GRAB_STATUS_SUCCESS &&
               keyboard->status == XCB_GRAB_STATUS_SUCCESS;
    }

    // From the lowest to the topmost.
    std::vector<xcb_window_t> childrenOf(xcb_window_t window)
    {
        const XPtr<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(connection_, xcb_query_tree(connection_, window), nullptr));
        if (!tree) {
            return {};
        }
        const xcb_window_t* const first = xcb_query_tree_children(tree.get());
        return {first, first + xcb_query_tree_children_length(tree.get())};
    }
    // The lowest, 0 if there is none.
    xcb_window_t childOf(xcb_window_t window)
    {
        const auto children = childrenOf(window);
        return children.empty() ? 0 : children[0];
    }
    XPtr<xcb_get_window_attributes_reply_t> attributesOf(xcb_window_t window)
    {
        return XPtr<xcb_get_window_attributes_reply_t>(xcb_get_window_attributes_reply(
            connection_, xcb_get_window_attributes(connection_, window), nullptr));
    }
    XPtr<xcb_get_geometry_reply_t> geometryOf(xcb_window_t window)
    {
        return XPtr<xcb_get_geometry_reply_t>(
            xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, window), nullptr));
    }
    // 0x00RRGGBB
    std::uint32_t pixelOf(xcb_window_t window, int x, int y)
    {
        const XPtr<xcb_get_image_reply_t> image(xcb_get_image_reply(
            connection_,
            xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, window, static_cast<std::int16_t>(x),
                          static_cast<std::int16_t>(y), 1, 1, ~0u),
            nullptr));
        return image ? *reinterpret_cast<std::uint32_t*>(xcb_get_image_data(image.get())) & 0xFFFFFF : ~0u;
    }
    // All pixels of a place, which has x, y, width and height.
    template <typename Place>
    std::vector<std::uint8_t> pixelsOf(xcb_window_t window, const Place& place)
    {
        const XPtr<xcb_get_image_reply_t> image(xcb_get_image_reply(
            connection_,
            xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, window, static_cast<std::int16_t>(place.x),
                          static_cast<std::int16_t>(place.y), static_cast<std::uint16_t>(place.width),
                          static_cast<std::uint16_t>(place.height), ~0u),
            nullptr));
        if (!image) {
            return {};
        }
        const std::uint8_t* const data = xcb_get_image_data(image.get());
        return {data, data + xcb_get_image_data_length(image.get())};
    }
    xcb_atom_t atom(const std::string& name)
    {
        const auto cookie =
            xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
        const XPtr<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection_, cookie, nullptr));
        return reply ? reply->atom : 0;
    }
    // Items of 32 bits.
    std::vector<std::uint32_t> wordsOf(xcb_window_t window, const std::string& property)
    {
        const auto cookie =
            xcb_get_property(connection_, 0, window, atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, 1024);
        const XPtr<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_, cookie, nullptr));
        if (!reply || reply->format != 32) {
            return {};
        }
        const auto* words = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
        return {words, words + xcb_get_property_value_length(reply.get()) / 4};
    }
    xcb_window_t focus()
    {
        const XPtr<xcb_get_input_focus_reply_t> reply(
            xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
        return reply ? reply->focus : 0;
    }
    void setFocus(xcb_window_t window)
    {
        xcb_set_input_focus(connection_, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
        sync();
    }

    // --- the user's hands
    void movePointer(int x, int y) { fake(XCB_MOTION_NOTIFY, 0, x, y); }
    void press(int button) { fake(XCB_BUTTON_PRESS, button, 0, 0); }
    void release(int button) { fake(XCB_BUTTON_RELEASE, button, 0, 0); }
    void click(int button)
    {
        press(button);
        release(button);
    }
    void pressKey(int code) { fake(XCB_KEY_PRESS, code, 0, 0); }
    void releaseKey(int code) { fake(XCB_KEY_RELEASE, code, 0, 0); }
    static constexpr int kShiftKey = 50;
    void type(int code)
    {
        pressKey(code);
        releaseKey(code);
    }
    // Characters of ASCII, on whatever keys they are.
    void typeText(const std::string& text)
    {
        const xcb_setup_t* const setup = xcb_get_setup(connection_);
        const std::uint8_t first = setup->min_keycode;
        const auto count = static_cast<std::uint8_t>(setup->max_keycode - first + 1);
        const XPtr<xcb_get_keyboard_mapping_reply_t> keys(xcb_get_keyboard_mapping_reply(
            connection_, xcb_get_keyboard_mapping(connection_, first, count), nullptr));
        const xcb_keysym_t* const symbols = xcb_get_keyboard_mapping_keysyms(keys.get());
        const int width = keys->keysyms_per_keycode;
        for (const char character : text) {
            const auto symbol = static_cast<xcb_keysym_t>(character);
            for (int key = 0; key < count; ++key) {
                const xcb_keysym_t* const levels = symbols + key * width;
                if (levels[0] == symbol || levels[1] == symbol) {
                    const bool isShifted = levels[0] != symbol;
                    isShifted ? pressKey(kShiftKey) : void();
                    type(first + key);
                    isShifted ? releaseKey(kShiftKey) : void();
                    break;
                }
            }
        }
    }
    // Puts a symbol on a key that has none.
    void mapKey(int code, std::uint32_t symbol)
    {
        xcb_change_keyboard_mapping(connection_, 1, static_cast<std::uint8_t>(code), 1, &symbol);
        sync();
    }

    void sync() { focus(); }
    // The next event of the kind that has come, others are dropped; null when there is none.
    template <typename Event>
    XPtr<Event> next(int type)
    {
        sync();
        while (xcb_generic_event_t* event = xcb_poll_for_event(connection_)) {
            if ((event->response_type & 0x7F) == type) {
                return XPtr<Event>(reinterpret_cast<Event*>(event));
            }
            std::free(event);
        }
        return nullptr;
    }

private:
    void fake(int type, int detail, int x, int y)
    {
        xcb_test_fake_input(connection_, static_cast<std::uint8_t>(type), static_cast<std::uint8_t>(detail),
                            0, root(), static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
        sync();
    }

    xcb_connection_t* const connection_;
    xcb_screen_t* screen_ = nullptr;
};

} // namespace qel::test
