// Cursors by their shapes.
#pragma once

#include "CSystemWindow.h"
#include "CXcbConnection.h"

#include <array>

namespace qel::platform {

// Makes each cursor when it is first asked for: from the user's theme, else from the server's cursor font.
class CXcbCursors
{
public:
    explicit CXcbCursors(CXcbConnection& connection) : connection_(connection) {}

    // Reads the theme's name; waits for the server. Before it, and without the library, themes do not count.
    void open();
    void close(); // before the connection is
    xcb_cursor_t get(CursorShape shape);

private:
    static constexpr std::size_t kShapeCount = 7;

    xcb_cursor_t load(CursorShape shape);
    xcb_cursor_t loadHidden();
    xcb_cursor_t loadFromFont(std::uint16_t glyph);

    CXcbConnection& connection_;
    xcb_cursor_context_t* theme_ = nullptr;
    std::array<xcb_cursor_t, kShapeCount> cursors_{};
};

} // namespace qel::platform
