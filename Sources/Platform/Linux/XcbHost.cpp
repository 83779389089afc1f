// Questions about windows of others.
#include "XcbHost.h"

#include <limits>

namespace qel::platform {

xcb_window_t findXcbTopLevel(const CXcbConnection& connection, xcb_window_t window)
{
    const CBrokenPipeGuard guard;
    constexpr int kMaxDepth =
        64; // of any sane host; a window manager that reparents meanwhile cannot hold us
    xcb_window_t outermost = 0;
    for (int depth = 0; depth < kMaxDepth && window && window != connection.root(); ++depth) {
        const auto treeCookie = xcb_query_tree(connection.get(), window);
        const auto stateCookie = xcb_get_property(connection.get(), 0, window, connection.atoms().wmState,
                                                  XCB_GET_PROPERTY_TYPE_ANY, 0, 0);
        const auto tree = connection.wait<xcb_query_tree_reply_t>(treeCookie);
        const auto state = connection.wait<xcb_get_property_reply_t>(stateCookie);
        if (!tree) {
            return outermost;
        }
        outermost = window;
        if (state && state->type != XCB_ATOM_NONE) {
            return window;
        }
        window = tree->parent;
    }
    return outermost;
}

bool isXcbWindow(const CXcbConnection& connection, NativeWindow window)
{
    if (!connection.isAlive() || window == 0 || window > std::numeric_limits<xcb_window_t>::max()) {
        return false;
    }
    const CBrokenPipeGuard guard;
    const auto cookie = xcb_get_window_attributes(connection.get(), static_cast<xcb_window_t>(window));
    return connection.wait<xcb_get_window_attributes_reply_t>(cookie) != nullptr;
}

} // namespace qel::platform
