// Names and glyphs of cursors.
#include "CXcbCursors.h"

#include <iterator>
#include <utility>

namespace qel::platform {

namespace {

struct ShapeSource
{
    const char* names[3]; // in themes, the first that is there
    std::uint16_t glyph;  // in the server's cursor font
};

// By CursorShape.
constexpr ShapeSource kSources[] = {
    {{"left_ptr", "default", nullptr}, 68},
    {{"xterm", "text", nullptr}, 152},
    {{"hand2", "pointer", "hand1"}, 60},
    {{"sb_h_double_arrow", "ew-resize", "size_hor"}, 108},
    {{"sb_v_double_arrow", "ns-resize", "size_ver"}, 116},
    {{"bottom_right_corner", "nwse-resize", "size_fdiag"}, 14},
};

} // namespace

void CXcbCursors::open()
{
    if (hasXcbCursor() && xcb_cursor_context_new(connection_.out(), &connection_.screen(), &theme_) < 0) {
        theme_ = nullptr;
    }
}

void CXcbCursors::close()
{
    if (theme_) {
        xcb_cursor_context_free(std::exchange(theme_, nullptr));
    }
}

xcb_cursor_t CXcbCursors::get(CursorShape shape)
{
    xcb_cursor_t& cursor = cursors_[static_cast<std::size_t>(shape)];
    if (!cursor) {
        cursor = load(shape);
    }
    return cursor;
}

xcb_cursor_t CXcbCursors::load(CursorShape shape)
{
    if (shape == CursorShape::kHidden) {
        return loadHidden();
    }
    const ShapeSource& source = kSources[static_cast<std::size_t>(shape)];
    for (const char* name : source.names) {
        const xcb_cursor_t cursor = theme_ && name ? xcb_cursor_load_cursor(theme_, name) : 0;
        if (cursor) {
            return cursor;
        }
    }
    return loadFromFont(source.glyph);
}

xcb_cursor_t CXcbCursors::loadHidden()
{
    xcb_connection_t* out = connection_.out();
    const xcb_pixmap_t blank = xcb_generate_id(out);
    xcb_create_pixmap(out, 1, blank, connection_.root(), 1, 1);
    const xcb_gcontext_t gc = xcb_generate_id(out);
    xcb_create_gc(out, gc, blank, 0, nullptr);
    constexpr std::uint8_t kNoPixel[4] = {};
    xcb_put_image(out, XCB_IMAGE_FORMAT_XY_PIXMAP, blank, gc, 1, 1, 0, 0, 0, 1, sizeof(kNoPixel), kNoPixel);
    const xcb_cursor_t cursor = xcb_generate_id(out);
    xcb_create_cursor(out, cursor, blank, blank, 0, 0, 0, 0, 0, 0, 0, 0);
    xcb_free_gc(out, gc);
    xcb_free_pixmap(out, blank);
    return cursor;
}

// In that font each shape is followed by its mask.
xcb_cursor_t CXcbCursors::loadFromFont(std::uint16_t glyph)
{
    xcb_connection_t* out = connection_.out();
    const xcb_font_t font = xcb_generate_id(out);
    constexpr char kFontName[] = "cursor";
    xcb_open_font(out, font, std::size(kFontName) - 1, kFontName);
    const xcb_cursor_t cursor = xcb_generate_id(out);
    constexpr std::uint16_t kFull = 0xFFFF;
    xcb_create_glyph_cursor(out, cursor, font, font, glyph, static_cast<std::uint16_t>(glyph + 1), 0, 0, 0,
                            kFull, kFull, kFull);
    xcb_close_font(out, font);
    return cursor;
}

} // namespace qel::platform
