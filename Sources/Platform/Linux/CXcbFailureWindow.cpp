// Drawing and events of the failure window.
#include "CXcbFailureWindow.h"

#include "XcbPixels.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>
#include <vector>

namespace qel::platform {

namespace {

constexpr int kInitialWidthPx = 640;
constexpr int kInitialHeightPx = 400;
constexpr int kMarginPx = 14;
constexpr int kButtonWidthPx = 96;
constexpr int kButtonHeightPx = 28;

constexpr std::uint32_t kTextColour = 0x202020;
constexpr std::uint32_t kBackgroundColour = 0xECECEC;

// The last one is built into every X server.
constexpr std::array kFontNames = {
    "-*-verdana-medium-r-normal-*-12-*-*-*-*-*-iso10646-1",
    "-misc-fixed-medium-r-semicondensed-*-13-*-*-*-*-*-iso10646-1",
    "fixed",
};

} // namespace

CXcbFailureWindow::CXcbFailureWindow(std::string text, std::string details)
    : text_(std::move(text)), details_(std::move(details)), font_(connection_), keyboard_(connection_),
      width_(kInitialWidthPx), height_(kInitialHeightPx)
{}

bool CXcbFailureWindow::open(const std::string& title)
{
    const CBrokenPipeGuard guard;
    if (connection_.open() ||
        !std::ranges::any_of(kFontNames, [this](const char* name) { return font_.open(name); })) {
        return false;
    }
    createWindow();
    setHints(title);
    keyboard_.open();
    xcb_map_window(connection_.out(), window_);
    connection_.flush();
    isOpen_ = connection_.isAlive();
    return isOpen_;
}

void CXcbFailureWindow::createWindow()
{
    xcb_connection_t* out = connection_.out();
    const XcbPixelFormat& format = connection_.format();
    window_ = xcb_generate_id(out);
    const std::uint32_t values[] = {xcbPixel(format, kBackgroundColour), 0,
                                    XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                                        XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_BUTTON_PRESS,
                                    format.colormap};
    constexpr std::uint32_t kValues =
        XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP;
    xcb_create_window(out, format.depth, window_, connection_.root(), 0, 0, kInitialWidthPx, kInitialHeightPx,
                      0, XCB_WINDOW_CLASS_INPUT_OUTPUT, format.visual, kValues, values);
    gc_ = xcb_generate_id(out);
    const std::uint32_t colours[] = {xcbPixel(format, kTextColour), xcbPixel(format, kBackgroundColour),
                                     font_.id()};
    xcb_create_gc(out, gc_, window_, XCB_GC_FOREGROUND | XCB_GC_BACKGROUND | XCB_GC_FONT, colours);
}

void CXcbFailureWindow::setHints(const std::string& title)
{
    const XcbAtoms& atoms = connection_.atoms();
    const auto setAtom = [&](xcb_atom_t property, xcb_atom_t value) {
        xcb_change_property(connection_.out(), XCB_PROP_MODE_REPLACE, window_, property, XCB_ATOM_ATOM, 32, 1,
                            &value);
    };
    for (const xcb_atom_t property : {xcb_atom_t{XCB_ATOM_WM_NAME}, atoms.netWmName}) {
        xcb_change_property(connection_.out(), XCB_PROP_MODE_REPLACE, window_, property, atoms.utf8String, 8,
                            static_cast<std::uint32_t>(title.size()), title.data());
    }
    setAtom(atoms.netWmState, atoms.netWmStateAbove);
    setAtom(atoms.wmProtocols, atoms.wmDeleteWindow);
}

void CXcbFailureWindow::run()
{
    const CBrokenPipeGuard guard;
    while (isOpen_ && connection_.isAlive()) {
        while (const XcbPtr<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
            handle(*event);
        }
        connection_.flush();
        pollfd descriptor{xcb_get_file_descriptor(connection_.get()), POLLIN, 0};
        if (isOpen_ && poll(&descriptor, 1, -1) < 0 && errno != EINTR) {
            return;
        }
    }
}

void CXcbFailureWindow::handle(const xcb_generic_event_t& event)
{
    switch (event.response_type & 0x7F) {
    case XCB_EXPOSE:
        if (reinterpret_cast<const xcb_expose_event_t&>(event).count == 0) {
            draw();
        }
        break;
    case XCB_CONFIGURE_NOTIFY: {
        const auto& configure = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
        width_ = configure.width;
        height_ = configure.height;
        break;
    }
    case XCB_KEY_PRESS:
        for (const KeyEvent& key : keyboard_.press(reinterpret_cast<const xcb_key_press_event_t&>(event))) {
            isOpen_ = isOpen_ && key.key != key::kEscape && key.key != key::kEnter;
        }
        break;
    case XCB_BUTTON_PRESS: {
        const auto& press = reinterpret_cast<const xcb_button_press_event_t&>(event);
        isOpen_ = isOpen_ && !isOnButton(press.event_x, press.event_y);
        break;
    }
    case XCB_CLIENT_MESSAGE: {
        const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
        isOpen_ = isOpen_ && message.data.data32[0] != connection_.atoms().wmDeleteWindow;
        break;
    }
    case XCB_DESTROY_NOTIFY:
        isOpen_ = false;
        break;
    default:
        keyboard_.handle(event);
        break;
    }
}

int CXcbFailureWindow::buttonLeft() const
{
    return (width_ - kButtonWidthPx) / 2;
}

int CXcbFailureWindow::buttonTop() const
{
    return height_ - kMarginPx - kButtonHeightPx;
}

bool CXcbFailureWindow::isOnButton(int x, int y) const
{
    return PixelRect{buttonLeft(), buttonTop(), kButtonWidthPx, kButtonHeightPx}.contains(x, y);
}

void CXcbFailureWindow::draw()
{
    xcb_clear_area(connection_.out(), 0, window_, 0, 0, 0, 0);
    const int innerWidth = width_ - 2 * kMarginPx;
    const int boxBottom = buttonTop() - kMarginPx;
    const int boxTop = drawLines(text_, kMarginPx, kMarginPx, innerWidth, boxBottom) + kMarginPx;
    if (boxTop < boxBottom && innerWidth > 2 * kMarginPx) {
        drawFrame(kMarginPx, boxTop, innerWidth, boxBottom - boxTop);
        drawLines(details_, 2 * kMarginPx, boxTop + kMarginPx / 2, innerWidth - 2 * kMarginPx,
                  boxBottom - kMarginPx / 2);
    }
    drawFrame(buttonLeft(), buttonTop(), kButtonWidthPx, kButtonHeightPx);
    const XcbLine label = xcbText("Close");
    drawLine(label, buttonLeft() + (kButtonWidthPx - font_.widthOf(label)) / 2,
             buttonTop() + (kButtonHeightPx + font_.ascent() - font_.descent()) / 2);
}

// Draws as many lines as end above `bottom`, the last of them "..." when there are more. Returns where they
// end.
int CXcbFailureWindow::drawLines(const std::string& text, int left, int top, int width, int bottom)
{
    const int lineHeight = font_.ascent() + font_.descent() + 2;
    const auto widthOf = [this](xcb_char2b_t character) { return font_.widthOf(character); };
    std::vector<XcbLine> lines = wrapXcbText(widthOf, text, width);
    const auto room = static_cast<std::size_t>(std::max(0, (bottom - top) / lineHeight));
    if (lines.size() > room) {
        lines.resize(room);
        if (!lines.empty()) {
            lines.back() = xcbText("...");
        }
    }
    int y = top;
    for (const XcbLine& line : lines) {
        drawLine(line, left, y + font_.ascent());
        y += lineHeight;
    }
    return y;
}

void CXcbFailureWindow::drawLine(const XcbLine& line, int left, int baseline)
{
    constexpr std::size_t kMaxCharacters = 255; // of a request
    xcb_image_text_16(connection_.out(), static_cast<std::uint8_t>(std::min(line.size(), kMaxCharacters)),
                      window_, gc_, static_cast<std::int16_t>(left), static_cast<std::int16_t>(baseline),
                      line.data());
}

void CXcbFailureWindow::drawFrame(int left, int top, int width, int height)
{
    const xcb_rectangle_t rectangle{static_cast<std::int16_t>(left), static_cast<std::int16_t>(top),
                                    static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height)};
    xcb_poly_rectangle(connection_.out(), window_, gc_, 1, &rectangle);
}

} // namespace qel::platform
